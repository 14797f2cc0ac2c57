// The engine on a platform that this test makes: it sees the pipeline and what goes to its sink,
// and delays, drops or changes that; its frames come back only when they are released, whatever
// state the pipeline goes to.
#include "pages/player/CPlayback.h"
#include "player/CPlayer.h"
#include "player/EngineClock.h"

#include "platform/VideoPath.h"
#include "platform/host/FrameExporter.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSemaphore>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <memory>

namespace {

constexpr int kFrames = 4;
constexpr int kLastFrame = 8; // of odd.avi
constexpr qint64 kSecond = GST_SECOND;

using Probe = GstPadProbeReturn (*)(GstPad*, GstPadProbeInfo*, gpointer);

// How a test wants its platform.
Probe s_pfnProbe = nullptr; // of the sink's pad
bool s_bPhysical = true;

GstElement* s_pPlaybin = nullptr;
QSemaphore s_free(kFrames);
std::atomic<bool> s_bWaits{false}; // for a frame
std::atomic<int> s_nSamples{0};
std::atomic<int> s_nShown{0};
std::atomic<int> s_nFreed{0};
std::atomic<qint64> s_nTarget{-1}; // of the last seek, ns; -2: not just a flushing one
QSemaphore s_lastSample;

void giveBack(gpointer, GstMiniObject*)
{
    s_free.release();
}

// What a decoder's buffer takes along goes when the buffer comes back to the decoder.
GstPadProbeReturn takeFrame(GstPad*, GstPadProbeInfo* info, gpointer)
{
    if (!(info->type & GST_PAD_PROBE_TYPE_BUFFER))
        return GST_PAD_PROBE_OK;
    s_bWaits = s_free.available() == 0;
    s_free.acquire();
    GstBuffer* token = gst_buffer_new();
    gst_mini_object_weak_ref(GST_MINI_OBJECT(token), giveBack, nullptr);
    GstBuffer* buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    gst_buffer_add_parent_buffer_meta(buffer, token);
    gst_buffer_unref(token);
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    return GST_PAD_PROBE_OK;
}

// A file that starts for ever: no picture of it comes, and no end.
GstPadProbeReturn dropAll(GstPad*, GstPadProbeInfo* info, gpointer)
{
    const bool stays = (info->type & GST_PAD_PROBE_TYPE_EVENT_BOTH) &&
                       GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_EOS;
    return stays ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
}

// Before its first picture comes, a thread sleeps for long, computes, and sleeps again.
GstPadProbeReturn startSlowly(GstPad*, GstPadProbeInfo* info, gpointer)
{
    if (!(info->type & GST_PAD_PROBE_TYPE_BUFFER) || s_nSamples++ > 0)
        return GST_PAD_PROBE_OK;
    QThread::msleep(2700);
    for (const qint64 end = currentTimeUs() + 1000000; currentTimeUs() < end;) {
    }
    QThread::msleep(2700);
    return GST_PAD_PROBE_OK;
}

// All pictures but the first come an hour later.
GstPadProbeReturn makeGap(GstPad*, GstPadProbeInfo* info, gpointer)
{
    if ((info->type & GST_PAD_PROBE_TYPE_BUFFER) && s_nSamples++ > 0)
        GST_BUFFER_PTS(GST_PAD_PROBE_INFO_BUFFER(info)) += 3600 * GST_SECOND;
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn noteSeek(GstPad*, GstPadProbeInfo* info, gpointer)
{
    if (!(info->type & GST_PAD_PROBE_TYPE_EVENT_BOTH) ||
        GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_SEEK)
        return GST_PAD_PROBE_OK;
    GstSeekFlags flags = GST_SEEK_FLAG_NONE;
    gint64 start = -1;
    gst_event_parse_seek(GST_PAD_PROBE_INFO_EVENT(info), nullptr, nullptr, &flags, nullptr, &start,
                         nullptr, nullptr);
    s_nTarget = flags == GST_SEEK_FLAG_FLUSH ? start : -2;
    return GST_PAD_PROBE_OK;
}

// Comes before the engine's own handler.
GstFlowReturn countSample(GstElement*, gpointer)
{
    if (++s_nSamples == kLastFrame) {
        s_lastSample.release();
        QThread::msleep(200); // for the engine to begin with its pause, which waits for this one
    }
    return GST_FLOW_OK;
}

// As a surface that is not painted does not return while `hold` is set.
int handOn(int, unsigned long, unsigned char*, int, int, void* hold)
{
    ++s_nShown;
    while (hold && !QThread::currentThread()->isInterruptionRequested())
        QThread::msleep(1);
    return 0;
}

void play(CPlayer& player, const char* clip)
{
    player.initPipeline();
    player.playFile(qPrintable(QStringLiteral(CLIP_DIR "/") + clip));
}

} // namespace

void preparePlatformVideoPath(GstElement* playbin)
{
    s_pPlaybin = playbin;
    GstElement* sink = nullptr;
    g_object_get(playbin, "video-sink", &sink, nullptr);
    if (s_bPhysical)
        g_object_set(playbin, "video-filter", newFrameExporter(), nullptr);
    if (s_pfnProbe) {
        GstPad* pad = gst_element_get_static_pad(sink, "sink");
        gst_pad_add_probe(
            pad, GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_BOTH),
            s_pfnProbe, nullptr, nullptr);
        gst_object_unref(pad);
    } else {
        g_signal_connect(sink, "new-sample", G_CALLBACK(countSample), nullptr);
    }
    gst_object_unref(sink);
}

class tst_other_platform : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        s_pfnProbe = nullptr;
        s_bPhysical = true;
        s_nSamples = 0;
        s_nShown = 0;
    }

    void decoderThatWaitsStops_data()
    {
        QTest::addColumn<bool>("byStop");
        QTest::newRow("stop") << true;
        QTest::newRow("end of the engine") << false;
    }
    void decoderThatWaitsStops()
    {
        QFETCH(bool, byStop);
        s_pfnProbe = takeFrame;
        auto player = std::make_unique<CPlayer>(handOn, &s_free);
        play(*player, "long.mp4");
        QTRY_VERIFY_WITH_TIMEOUT(s_bWaits, QP_LIMIT_MS);
        if (byStop)
            player->stop();
        player.reset();
        QCOMPARE(s_free.available(), kFrames);
    }

    void messagesDoNotPileUp()
    {
        constexpr int kMessages = 10000;
        CPlayer player(handOn, nullptr);
        QSignalSpy errors(&player, SIGNAL(sgPlayError()));
        player.initPipeline();
        for (int i = 0; i < kMessages; ++i) {
            GstMessage* warning = gst_message_new_warning(GST_OBJECT(s_pPlaybin), nullptr, "bad");
            gst_mini_object_weak_ref(
                GST_MINI_OBJECT(warning), [](gpointer, GstMiniObject*) { ++s_nFreed; }, nullptr);
            gst_element_post_message(s_pPlaybin, warning);
        }
        QCOMPARE(s_nFreed.load(), kMessages);
        QCOMPARE(errors.count(), 0);
    }

    // Nobody will show it, so nobody need wait for it.
    void endComesAtOnceAfterARefusedFrame()
    {
        CPlayer player(handOn, nullptr);
        QSignalSpy ends(&player, SIGNAL(sgPlayFinished()));
        play(player, "odd.avi");
        QVERIFY(s_lastSample.tryAcquire(1, QP_LIMIT_MS));
        player.playPause();
        QElapsedTimer clock;
        clock.start();
        player.playPause();
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, QP_LIMIT_MS);
        QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
    }

    // Paused, so that the position stands.
    void seeksToTheNanosecond()
    {
        s_pfnProbe = noteSeek;
        CPlayer player(handOn, nullptr);
        play(player, "long.mp4");
        QTRY_VERIFY_WITH_TIMEOUT(s_nShown > 0, QP_LIMIT_MS);
        player.playPause();
        const qint64 duration = player.queryDuration();
        for (const char step : QByteArray("ffffbbbb")) {
            QTRY_VERIFY_WITH_TIMEOUT(!player.waitsForData(), QP_LIMIT_MS);
            const qint64 from = player.queryPosition();
            const qint64 ahead =
                from + 34 * kSecond < duration ? from + 34 * kSecond : duration - kSecond;
            step == 'f' ? player.seekForward() : player.seekBackward();
            QCOMPARE(s_nTarget.load(), step == 'f' ? ahead : qMax(from - 34 * kSecond, 0LL));
        }
    }

    void clipUnderASecondSeeksToItsStart()
    {
        s_pfnProbe = noteSeek;
        CPlayer player(handOn, &s_free);
        play(player, "odd.avi");
        QTRY_VERIFY_WITH_TIMEOUT(s_nShown > 0, QP_LIMIT_MS);
        player.seekForward();
        QCOMPARE(s_nTarget.load(), 0);
    }

    void aLongGapIsLeftAtOnce()
    {
        s_pfnProbe = makeGap;
        auto player = std::make_unique<CPlayer>(handOn, nullptr);
        play(*player, "odd.avi");
        QTRY_COMPARE_WITH_TIMEOUT(s_nSamples.load(), kLastFrame, QP_LIMIT_MS);
        QTest::qWait(100); // the worker lies down
        QElapsedTimer clock;
        clock.start();
        player.reset();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    }

    void framesElsewhereAreNotHandedOn()
    {
        s_bPhysical = false;
        CPlayer player(handOn, nullptr);
        QSignalSpy updates(&player, SIGNAL(sgUpdateData()));
        play(player, "odd.avi");
        QTRY_COMPARE_WITH_TIMEOUT(updates.count(), kLastFrame, QP_LIMIT_MS);
        QCOMPARE(s_nShown.load(), 0);
    }

    // A start that gets nowhere counts as an error, a slow one does not; then the watch ends.
    void startsAreWatched_data()
    {
        QTest::addColumn<bool>("comes");
        QTest::newRow("never") << false;
        QTest::newRow("slowly") << true;
    }
    void startsAreWatched()
    {
        QFETCH(bool, comes);
        s_pfnProbe = comes ? startSlowly : dropAll;
        CPlayer player(handOn, nullptr);
        const QPointer<CPlayback> playback = new CPlayback(&player, nullptr);
        QSignalSpy errors(playback, SIGNAL(sgPlayError()));
        auto* watch = playback->findChild<QTimer*>();
        QElapsedTimer clock;
        clock.start();
        play(player, "long.mp4");
        QTRY_VERIFY_WITH_TIMEOUT(!watch->isActive(), QP_LIMIT_MS);
        QCOMPARE(errors.count(), comes ? 0 : 1);
        QVERIFY(clock.elapsed() > 4500 && clock.elapsed() < 15000);
        playback->end();
        QTRY_VERIFY(!playback);
    }
};

QTEST_GUILESS_MAIN(tst_other_platform)
#include "tst_other_platform.moc"
