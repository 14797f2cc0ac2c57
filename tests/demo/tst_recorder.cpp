// The drawn recordings: whole frames, four different views, each of them moving.
#include <QProcess>
#include <QtTest>

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
constexpr int kFrameBytes = kWidth * kHeight * 3 / 2;
constexpr int kFps = 25;

// The luma of one quarter of a frame below the time codes, which differ in any case.
QByteArray picture(const QByteArray& frames, int frame, int quarter)
{
    constexpr int kTimeCodeHeight = 50;
    QByteArray rows;
    for (int y = kTimeCodeHeight; y < kHeight / 2; ++y) {
        const int row = quarter / 2 * kHeight / 2 + y;
        rows +=
            frames.mid(frame * kFrameBytes + row * kWidth + quarter % 2 * kWidth / 2, kWidth / 2);
    }
    return rows;
}

} // namespace

class TestRecorder : public QObject
{
    Q_OBJECT

private slots:
    void drawsFourMovingViews_data();
    void drawsFourMovingViews();
};

void TestRecorder::drawsFourMovingViews_data()
{
    QTest::addColumn<QString>("scene");
    for (const char* scene : {"motorway", "town", "night", "country", "evening"})
        QTest::newRow(scene) << scene;
}

void TestRecorder::drawsFourMovingViews()
{
    QFETCH(QString, scene);
    QProcess recorder;
    recorder.start(QStringLiteral(RECORDER), {scene, "1"});
    QVERIFY(recorder.waitForFinished(60000));
    QCOMPARE(recorder.exitCode(), 0);
    const QByteArray frames = recorder.readAllStandardOutput();
    QCOMPARE(frames.size(), kFps * kFrameBytes);
    for (int quarter = 0; quarter < 4; ++quarter) {
        const QByteArray first = picture(frames, 0, quarter);
        QVERIFY2(first != picture(frames, 1, quarter), qPrintable(QString::number(quarter)));
        for (int other = 0; other < quarter; ++other)
            QVERIFY(first != picture(frames, 0, other));
    }
}

QTEST_GUILESS_MAIN(TestRecorder)
#include "tst_recorder.moc"
