// The engine on a platform that this test makes: it sees the pipeline and what goes to its sink,
// and delays, drops or changes that; its frames come back only when they are released, whatever
// state the pipeline goes to.
#include "pages/player/CPlayback.h"
#include "player/CPlayer.h"
#include "player/EngineClock.h"

#include "platform/VideoPath.h"
#include "platform/host/FrameExporter.h"
#include "platform/host/HostCounters.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSemaphore>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>

namespace {

constexpr int kFrames = 4;
constexpr int kLastFrame = 5; // of odd.avi
constexpr qint64 kSecond = GST_SECOND;

// How a test wants its platform: what is done to each buffer or event at the sink. One of both is
// null; false drops it.
std::function<bool(GstBuffer*&, GstEvent*)> s_pass;
std::function<void()> s_beforeSample; // the engine's own handler comes after it
bool s_bPhysical = true;

GstElement* s_pPlaybin = nullptr;
QSemaphore s_free(kFrames);
std::atomic<bool> s_bWaits{false}; // for a frame
std::atomic<int> s_nBuffers{0};
std::atomic<int> s_nShown{0};
std::atomic<int> s_nFreed{0};

// What a decoder's buffer takes along goes when the buffer comes back to the decoder.
bool takeFrame(GstBuffer*& buffer, GstEvent*)
{
    if (!buffer)
        return true;
    s_bWaits = s_free.available() == 0;
    s_free.acquire();
    GstBuffer* token = gst_buffer_new();
    gst_mini_object_weak_ref(
        GST_MINI_OBJECT(token), [](gpointer, GstMiniObject*) { s_free.release(); }, nullptr);
    buffer = gst_buffer_make_writable(buffer);
    gst_buffer_add_parent_buffer_meta(buffer, token);
    gst_buffer_unref(token);
    return true;
}

// Before the first picture comes, a thread sleeps for long, computes, and sleeps again.
bool startSlowly(GstBuffer*& buffer, GstEvent*)
{
    if (!buffer || s_nBuffers++ > 0)
        return true;
    QThread::msleep(2700);
    for (const qint64 end = currentTimeUs() + 1000000; currentTimeUs() < end;) {
    }
    QThread::msleep(2700);
    return true;
}

GstPadProbeReturn probe(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstEvent* event = GST_IS_EVENT(info->data) ? GST_EVENT(info->data) : nullptr;
    GstBuffer* buffer = GST_IS_BUFFER(info->data) ? GST_BUFFER(info->data) : nullptr;
    const bool passes = !s_pass || s_pass(buffer, event);
    if (buffer)
        info->data = buffer;
    return passes ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
}

GstFlowReturn onSample(GstElement*, gpointer)
{
    if (s_beforeSample)
        s_beforeSample();
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
    g_signal_connect(sink, "new-sample", G_CALLBACK(onSample), nullptr);
    GstPad* pad = gst_element_get_static_pad(sink, "sink");
    const int types = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_BOTH;
    gst_pad_add_probe(pad, GstPadProbeType(types), probe, nullptr, nullptr);
    gst_object_unref(pad);
    gst_object_unref(sink);
}

class tst_other_platform : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        s_pass = nullptr;
        s_beforeSample = nullptr;
        s_bWaits = false;
        s_nBuffers = 0;
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
        s_pass = takeFrame;
        auto player = std::make_unique<CPlayer>(handOn, byStop ? &s_free : nullptr);
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
        QSemaphore last;
        s_beforeSample = [&last] {
            if (++s_nBuffers == kLastFrame) {
                last.release();
                QThread::msleep(200); // for the engine to begin with its pause, which waits for it
            }
        };
        std::atomic<int> ends{0}; // written by a streaming thread
        CPlayer player(handOn, nullptr);
        connect(&player, &CPlayer::sgPlayFinished, [&ends] { ++ends; });
        play(player, "odd.avi");
        QVERIFY(last.tryAcquire(1, QP_LIMIT_MS));
        player.playPause();
        QElapsedTimer clock;
        clock.start();
        player.playPause();
        QTRY_COMPARE_WITH_TIMEOUT(ends.load(), 1, QP_LIMIT_MS);
        QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(s_nShown < kLastFrame);
    }

    // Many times: an end that goes on all the same is not always faster than the flush.
    void aSeekOvertakesTheEnd()
    {
        gst_init(nullptr, nullptr);
        GstElement* playbin = gst_element_factory_make("playbin", nullptr);
        GstElement* sink = gst_element_factory_make("appsink", nullptr); // nobody takes from it
        g_object_set(playbin, "video-sink", sink, "uri", "file://" CLIP_DIR "/odd.avi", nullptr);
        preparePlatformVideoPath(playbin);
        g_object_set(sink, "sync", FALSE, "wait-on-eos", FALSE, nullptr);
        gst_element_set_state(playbin, GST_STATE_PLAYING);
        GstBus* bus = gst_element_get_bus(playbin);
        for (int round = 0; round < 30; ++round) {
            QTRY_COMPARE_WITH_TIMEOUT(hostCounters().framesOut.load(), kLastFrame, QP_LIMIT_MS);
            gst_element_seek_simple(playbin, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, 0);
            QVERIFY(!gst_bus_pop_filtered(bus, GST_MESSAGE_EOS));
        }
        gst_object_unref(bus);
        gst_element_set_state(playbin, GST_STATE_NULL);
        gst_object_unref(playbin);
    }

    // Paused, so that the position stands; past the end to one second before it, or to the start.
    void seeksToTheNanosecond()
    {
        std::atomic<qint64> target{-1};
        s_pass = [&target](GstBuffer*, GstEvent* event) {
            GstSeekFlags flags = GST_SEEK_FLAG_NONE;
            gint64 start = -1;
            if (event && GST_EVENT_TYPE(event) == GST_EVENT_SEEK) {
                gst_event_parse_seek(event, nullptr, nullptr, &flags, nullptr, &start, nullptr,
                                     nullptr);
                target = flags == GST_SEEK_FLAG_FLUSH ? start : -1;
            }
            return true;
        };
        for (const char* clip : {"long.mp4", "odd.avi"}) {
            s_nShown = 0;
            CPlayer player(handOn, nullptr);
            play(player, clip);
            QTRY_VERIFY_WITH_TIMEOUT(s_nShown > 0, QP_LIMIT_MS);
            player.playPause();
            const qint64 duration = player.queryDuration();
            for (const qint64 step : {34, 34, 34, 34, -34, -34, -34, -34}) {
                QTRY_VERIFY_WITH_TIMEOUT(!player.waitsForData(), QP_LIMIT_MS);
                const qint64 wanted = player.queryPosition() + step * kSecond;
                step > 0 ? player.seekForward() : player.seekBackward();
                QCOMPARE(target.load(),
                         qMax(wanted < duration ? wanted : duration - kSecond, qint64(0)));
            }
        }
    }

    void aLongGapIsLeftAtOnce()
    {
        s_pass = [](GstBuffer* buffer, GstEvent*) {
            if (buffer && s_nBuffers++ > 0)
                GST_BUFFER_PTS(buffer) += 3600 * GST_SECOND;
            return true;
        };
        auto player = std::make_unique<CPlayer>(handOn, nullptr);
        play(*player, "odd.avi");
        QTRY_COMPARE_WITH_TIMEOUT(s_nBuffers.load(), kLastFrame, QP_LIMIT_MS);
        QTest::qWait(100); // the worker lies down
        QElapsedTimer clock;
        clock.start();
        player.reset();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    }

    void framesElsewhereAreNotHandedOn()
    {
        s_bPhysical = false;
        std::atomic<int> updates{0}; // written by the worker
        CPlayer player(handOn, nullptr);
        connect(&player, &CPlayer::sgUpdateData, [&updates] { ++updates; });
        play(player, "odd.avi");
        s_bPhysical = true;
        QTRY_COMPARE_WITH_TIMEOUT(updates.load(), kLastFrame, QP_LIMIT_MS);
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
        const auto drop = [](GstBuffer*, GstEvent* event) {
            return event && GST_EVENT_TYPE(event) != GST_EVENT_EOS;
        };
        s_pass = comes ? decltype(s_pass)(startSlowly) : drop;
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
