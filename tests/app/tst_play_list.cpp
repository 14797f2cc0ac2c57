// The play list's cursor on its whole way, and the life of the one instance.
#include "app/common/CPlayerDatas.h"

#include <QtTest>

namespace {

QString state()
{
    const CPlayerDatas* files = CPlayerDatas::getInstance();
    return QString("%1 %2 '%3'")
        .arg(files->isEmpty())
        .arg(files->isEnd())
        .arg(files->currentFile());
}

} // namespace

class tst_play_list : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { CPlayerDatas::releaseInstance(); }

    void walksFromBeforeTheFirstToBehindTheLast()
    {
        CPlayerDatas* files = CPlayerDatas::getInstance();
        QVERIFY(!files->next());
        files->addFile(QString());
        QCOMPARE(state(), QString("1 0 ''"));
        files->addFile("A");
        files->addFile("B");
        for (const char* expected : {"0 0 'A'", "0 0 'B'", "0 1 ''"}) {
            QVERIFY(files->next());
            QCOMPARE(state(), QString(expected));
        }
        QVERIFY(!files->next());
        files->clearFiles();
        QCOMPARE(state(), QString("1 0 ''"));
    }

    void releasingMakesRoomForAnEmptyOne()
    {
        CPlayerDatas::releaseInstance();
        CPlayerDatas::getInstance()->addFile("A");
        QVERIFY(!CPlayerDatas::getInstance()->isEmpty());
        CPlayerDatas::releaseInstance();
        QVERIFY(CPlayerDatas::getInstance()->isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_play_list)
#include "tst_play_list.moc"
