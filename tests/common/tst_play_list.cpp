// The play list's cursor on its whole way, and the life of the one instance.
#include "common/CPlayerDatas.h"

#include <QtTest>

class tst_play_list : public QObject
{
    Q_OBJECT

private slots:
    void walksFromBeforeTheFirstToBehindTheLast()
    {
        CPlayerDatas* files = CPlayerDatas::getInstance();
        files->addFile(QString());
        QVERIFY(!files->next() && files->isEmpty());
        files->addFile("A");
        files->addFile("B");
        QStringList walk;
        while (files->next())
            walk << (files->isEnd() ? "end" : files->currentFile());
        QCOMPARE(walk.join(", "), QString("A, B, end"));
        files->clearFiles();
        QVERIFY(files->isEmpty());
        files->addFile("C");
        QVERIFY(files->next() && files->currentFile() == "C");
        CPlayerDatas::releaseInstance(); // the next one is empty
        QVERIFY(CPlayerDatas::getInstance()->isEmpty());
        CPlayerDatas::releaseInstance();
    }
};

QTEST_GUILESS_MAIN(tst_play_list)
#include "tst_play_list.moc"
