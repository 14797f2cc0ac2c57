// The way of decoded frames through a real playbin: into a few frames of physical memory and out
// of them again, whatever happens to the stream meanwhile.
#include "tests/platform/Playback.h"

#include "platform/host/FramePool.h"
#include "platform/host/PhysBlock.h"

#include <QSet>

namespace {

constexpr qint64 kAtOnceMs = 2000; // generous: sanitizers, and other work on the machine
constexpr int kTimeoutMs = 15000;

// Shows frames until the end of the stream.
QVector<ShownFrame> showAll(Playback& playback)
{
    QVector<ShownFrame> frames;
    QElapsedTimer timer;
    timer.start();
    while (!playback.isEnded() && timer.elapsed() < kTimeoutMs) {
        if (playback.kept() > 0)
            frames.append(playback.showFirst());
        else
            QTest::qWait(1);
    }
    return frames;
}

} // namespace

class tst_video_path : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    // Every frame of a test comes back, or it is a leak.
    void cleanup() { QTRY_COMPARE(hostCounters().framesOut.load(), 0); }

    void goesDownWhileAllFramesAreOut_data()
    {
        QTest::addColumn<QByteArray>("clip");
        QTest::addColumn<bool>("paused");
        QTest::newRow("playing") << QByteArray("long.mp4") << false;
        QTest::newRow("paused") << QByteArray("long.mp4") << true;
        QTest::newRow("playing, with sound") << QByteArray("talking.mp4") << false;
        QTest::newRow("paused, with sound") << QByteArray("talking.mp4") << true;
    }
    void goesDownWhileAllFramesAreOut()
    {
        QFETCH(QByteArray, clip);
        QFETCH(bool, paused);
        Playback playback(clip);
        for (int round = 0; round < 3; ++round) {
            playback.setState(GST_STATE_PLAYING);
            QTRY_COMPARE_WITH_TIMEOUT(playback.kept(), FramePool::kFrames, kTimeoutMs);
            if (paused)
                playback.setState(GST_STATE_PAUSED);
            QVERIFY(playback.setState(GST_STATE_NULL) < kAtOnceMs);
            playback.dropAll();
        }
    }

    void seeksWhileAllFramesAreOut_data()
    {
        QTest::addColumn<bool>("paused");
        QTest::newRow("playing") << false;
        QTest::newRow("paused") << true;
    }
    void seeksWhileAllFramesAreOut()
    {
        QFETCH(bool, paused);
        Playback playback("long.mp4");
        playback.setState(GST_STATE_PLAYING);
        for (const GstClockTime target : {34, 68, 34, 0}) {
            QTRY_COMPARE_WITH_TIMEOUT(playback.kept(), FramePool::kFrames, kTimeoutMs);
            if (paused)
                playback.setState(GST_STATE_PAUSED);
            QVERIFY(playback.seek(target * GST_SECOND) < kAtOnceMs);
            playback.drop(FramePool::kFrames); // what was out before
            playback.setState(GST_STATE_PLAYING);
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            QCOMPARE(playback.showFirst().time, qint64(target * GST_SECOND));
        }
    }

    void endsOnceTheLastFrameWasShown()
    {
        Playback playback("odd.avi");
        playback.setState(GST_STATE_PLAYING);
        for (int frame = 0; frame < 10; ++frame) {
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            QTest::qWait(20);
            QVERIFY2(!playback.isEnded(), qPrintable(QString::number(frame)));
            playback.showFirst();
        }
        QTRY_VERIFY_WITH_TIMEOUT(playback.isEnded(), kTimeoutMs);
        QCOMPARE(playback.kept(), 0);
    }
    void givesUpOnALastFrameThatNobodyShows()
    {
        Playback playback("tiny.avi");
        playback.setState(GST_STATE_PLAYING);
        QElapsedTimer timer;
        timer.start();
        while (!playback.isEnded() && timer.elapsed() < kTimeoutMs) {
            playback.dropAll();
            QTest::qWait(1);
        }
        QVERIFY(playback.isEnded());
    }
    void letsGoOfTheEnd_data()
    {
        QTest::addColumn<bool>("seeks");
        QTest::newRow("by going down") << false;
        QTest::newRow("by a seek") << true;
    }
    void letsGoOfTheEnd()
    {
        QFETCH(bool, seeks);
        Playback playback("silent.mp4");
        playback.setState(GST_STATE_PLAYING);
        for (int frame = 0; frame < 54; ++frame) {
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            playback.showFirst();
        }
        QTRY_COMPARE_WITH_TIMEOUT(playback.kept(), 6, kTimeoutMs); // only the end is missing
        if (!seeks) {
            QVERIFY(playback.setState(GST_STATE_NULL) < kAtOnceMs);
            return;
        }
        QVERIFY(playback.seek(0) < kAtOnceMs);
        playback.drop(6);
        QCOMPARE(showAll(playback).size(), 60);
        QVERIFY(playback.isEnded());
    }

    void carriesWholeClips_data()
    {
        QTest::addColumn<QByteArray>("clip");
        QTest::addColumn<int>("frames");
        QTest::addColumn<QSize>("size");
        QTest::newRow("with sound") << QByteArray("talking.mp4") << 75 << QSize(320, 240);
        QTest::newRow("without sound") << QByteArray("silent.mp4") << 60 << QSize(320, 240);
        QTest::newRow("equal times") << QByteArray("bframes.avi") << 50 << QSize(320, 240);
        QTest::newRow("odd sizes") << QByteArray("odd.avi") << 10 << QSize(54, 42);
        QTest::newRow("one pixel") << QByteArray("tiny.avi") << 10 << QSize(2, 2);
    }
    void carriesWholeClips()
    {
        QFETCH(QByteArray, clip);
        QFETCH(int, frames);
        QFETCH(QSize, size);
        Playback playback(clip);
        playback.setState(GST_STATE_PLAYING);
        const QVector<ShownFrame> shown = showAll(playback);
        QVERIFY(playback.isEnded());
        QCOMPARE(shown.size(), frames);
        QSet<qint64> times;
        for (const ShownFrame& frame : shown) {
            QVERIFY(frame.isPhysical);
            QCOMPARE(QSize(frame.width, frame.height), size);
            QCOMPARE(frame.bytes.size(), size.width() * size.height() * 3 / 2);
            QVERIFY(times.isEmpty() || frame.time > *std::max_element(times.begin(), times.end()));
            times.insert(frame.time);
        }
    }

    void repeatsTheOnlyPixel()
    {
        Playback playback("tiny.avi");
        playback.setState(GST_STATE_PLAYING);
        QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
        // Red in BT.601 of limited range.
        QCOMPARE(playback.showFirst().bytes.toHex(), QByteArray("515151515af0"));
    }

    void keepsFramesThatOutliveTheirPool()
    {
        GstSample* sample = nullptr;
        {
            Playback playback("silent.mp4");
            playback.setState(GST_STATE_PLAYING);
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            sample = playback.takeFirst();
        }
        const PhyMemBlock* block = gst_buffer_query_phymem_block(gst_sample_get_buffer(sample));
        const auto physical = static_cast<uint32_t>(block->paddr);
        QCOMPARE(hostCounters().framesOut.load(), 1);
        QCOMPARE(PhysBlock::find(physical)->data(), block->vaddr);
        gst_sample_unref(sample);
        QVERIFY(!PhysBlock::find(physical));
    }
};

QTEST_GUILESS_MAIN(tst_video_path)
#include "tst_video_path.moc"
