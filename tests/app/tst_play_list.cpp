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
        QCOMPARE(state(), QString("1 0 ''"));
        QVERIFY(!files->next());

        files->addFile(QString());
        QVERIFY(files->isEmpty());
        files->addFile("A");
        files->addFile("B");
        QCOMPARE(state(), QString("0 0 ''"));

        QVERIFY(files->next());
        QCOMPARE(state(), QString("0 0 'A'"));
        QVERIFY(files->next());
        QCOMPARE(state(), QString("0 0 'B'"));
        QVERIFY(files->next());
        QCOMPARE(state(), QString("0 1 ''"));
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
