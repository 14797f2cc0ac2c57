// The way of decoded frames through a real playbin: into a few frames of physical memory and out
// of them again, whatever happens to the stream meanwhile.
#include "tests/platform/Playback.h"

#include "platform/host/FramePool.h"
#include "platform/host/HostCounters.h"
#include "player/phymem.h"

#include <QTest>

namespace {

constexpr int kTimeoutMs = 15000;
constexpr qint64 kAtOnceMs = 2000; // generous: sanitizers, and other work on the machine

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

bool waitForAllOut(Playback& playback)
{
    return QTest::qWaitFor([&] { return playback.kept() == FramePool::kFrames; }, kTimeoutMs);
}

template <typename Call> bool isAtOnce(Call call)
{
    QElapsedTimer timer;
    timer.start();
    call();
    return timer.elapsed() < kAtOnceMs;
}

} // namespace

class tst_video_path : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    // Every frame of a test comes back, or it is a leak.
    void cleanup() { QTRY_COMPARE(hostCounters().framesOut.load(), 0); }

    void goesDownAndSeeksWhileAllFramesAreOut_data()
    {
        QTest::addColumn<QByteArray>("clip");
        QTest::addColumn<bool>("paused");
        QTest::newRow("playing") << QByteArray("long.mp4") << false;
        QTest::newRow("paused") << QByteArray("long.mp4") << true;
        QTest::newRow("playing, with sound") << QByteArray("talking.mp4") << false;
        QTest::newRow("paused, with sound") << QByteArray("talking.mp4") << true;
    }
    void goesDownAndSeeksWhileAllFramesAreOut()
    {
        QFETCH(QByteArray, clip);
        QFETCH(bool, paused);
        const GstState state = paused ? GST_STATE_PAUSED : GST_STATE_PLAYING;
        Playback playback(clip);
        for (const GstClockTime target : {1, 0}) {
            QVERIFY(waitForAllOut(playback));
            playback.setState(state);
            QVERIFY(isAtOnce([&] { playback.seek(target * GST_SECOND); }));
            playback.drop(FramePool::kFrames); // what was out before
            playback.setState(GST_STATE_PLAYING);
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            QCOMPARE(playback.showFirst().time, qint64(target * GST_SECOND));
        }
        QVERIFY(waitForAllOut(playback));
        playback.setState(state);
        QVERIFY(isAtOnce([&] { playback.setState(GST_STATE_NULL); }));
    }

    void endsOnceTheLastFrameWasShown()
    {
        Playback playback("odd.avi");
        for (int frame = 0; frame < 10; ++frame) {
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            QTest::qWait(20); // for an end that comes too early
            QVERIFY(!playback.isEnded());
            playback.showFirst();
        }
        QTRY_VERIFY_WITH_TIMEOUT(playback.isEnded(), kTimeoutMs);
    }
    void aPauseDoesNotLoseTheEnd()
    {
        Playback playback("odd.avi");
        QVERIFY(waitForAllOut(playback));
        playback.setState(GST_STATE_PAUSED);
        playback.showFirst();
        QVERIFY(!QTest::qWaitFor([&] { return playback.isEnded(); }, 100));
        playback.setState(GST_STATE_PLAYING);
        QCOMPARE(showAll(playback).size(), 9);
    }
    void givesUpOnALastFrameThatNobodyShows()
    {
        Playback playback("tiny.avi");
        QVERIFY(waitForAllOut(playback));
        playback.drop(FramePool::kFrames);
        QTRY_COMPARE_WITH_TIMEOUT(playback.kept(), 2, kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(playback.isEnded(), kTimeoutMs);
    }
    void aSeekOvertakesTheEnd()
    {
        Playback playback("odd.avi");
        // Many times: the end that goes on all the same is not always faster than the flush.
        for (int round = 0; round < 30; ++round) {
            QVERIFY(waitForAllOut(playback));
            playback.showFirst();
            playback.showFirst();
            QVERIFY(waitForAllOut(playback)); // only the end is missing
            QVERIFY(isAtOnce([&] { playback.seek(0); }));
            playback.drop(FramePool::kFrames);
        }
        QCOMPARE(showAll(playback).size(), 10);
    }

    void sizesAreEvenAndRowsTight_data()
    {
        QTest::addColumn<QByteArray>("clip");
        QTest::addColumn<QVector<QSize>>("sizes"); // of the first and the last frame
        QTest::newRow("odd") << QByteArray("odd.avi") << QVector<QSize>{{54, 42}, {54, 42}};
        QTest::newRow("one pixel") << QByteArray("tiny.avi") << QVector<QSize>{{2, 2}, {2, 2}};
        QTest::newRow("changing") << QByteArray("resized.mp4")
                                  << QVector<QSize>{{320, 240}, {160, 120}};
    }
    void sizesAreEvenAndRowsTight()
    {
        QFETCH(QByteArray, clip);
        QFETCH(QVector<QSize>, sizes);
        Playback playback(clip);
        QVERIFY(waitForAllOut(playback)); // also across a change
        const QVector<ShownFrame> frames = showAll(playback);
        QVERIFY(playback.isEnded());
        QCOMPARE((QVector<QSize>{frames.first().size, frames.last().size}), sizes);
        for (const ShownFrame& frame : frames)
            QCOMPARE(frame.bytes.size(), frame.size.width() * frame.size.height() * 3 / 2);
        if (clip == "tiny.avi") // red in BT.601 of limited range, its only pixel repeated
            QCOMPARE(frames.first().bytes.toHex(), QByteArray("515151515af0"));
    }

    void framesOutliveTheirPool()
    {
        GstSample* sample = nullptr;
        {
            Playback playback("silent.mp4");
            QTRY_VERIFY_WITH_TIMEOUT(playback.kept() > 0, kTimeoutMs);
            sample = playback.takeFirst();
        }
        QCOMPARE(hostCounters().framesOut.load(), 1);
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        QVERIFY(gst_buffer_is_phymem(buffer));
        gst_buffer_query_phymem_block(buffer)->vaddr[0] = 1; // a sanitizer would object
        gst_sample_unref(sample);
    }
};

QTEST_GUILESS_MAIN(tst_video_path)
#include "tst_video_path.moc"
