// The engine on a platform that this test makes: it sees the pipeline, and its frames come back
// only when they are released, whatever state the pipeline goes to.
#include "player/CPlayer.h"

#include "platform/VideoPath.h"
#include "platform/host/FrameExporter.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <memory>

namespace {

constexpr int kFrames = 4;
constexpr int kLastFrame = 8; // of odd.avi

GstElement* s_pPlaybin = nullptr;
QSemaphore s_free(kFrames);
std::atomic<bool> s_bWaits{false}; // for a frame
std::atomic<int> s_nSamples{0};
std::atomic<int> s_nFreed{0};
QSemaphore s_lastSample;

void giveBack(gpointer, GstMiniObject*)
{
    s_free.release();
}

// What a decoder's buffer takes along goes when the buffer comes back to the decoder.
GstPadProbeReturn takeFrame(GstPad*, GstPadProbeInfo* info, gpointer)
{
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
    g_object_set(playbin, "video-filter", newFrameExporter(), nullptr);
    if (QTest::currentDataTag() != nullptr) {
        GstPad* pad = gst_element_get_static_pad(sink, "sink");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, takeFrame, nullptr, nullptr);
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
    void decoderThatWaitsStops_data()
    {
        QTest::addColumn<bool>("byStop");
        QTest::newRow("stop") << true;
        QTest::newRow("end of the engine") << false;
    }
    void decoderThatWaitsStops()
    {
        QFETCH(bool, byStop);
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
        player.initPipeline();
        for (int i = 0; i < kMessages; ++i) {
            GstMessage* warning = gst_message_new_warning(GST_OBJECT(s_pPlaybin), nullptr, "bad");
            gst_mini_object_weak_ref(
                GST_MINI_OBJECT(warning), [](gpointer, GstMiniObject*) { ++s_nFreed; }, nullptr);
            gst_element_post_message(s_pPlaybin, warning);
        }
        QCOMPARE(s_nFreed.load(), kMessages);
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
};

QTEST_GUILESS_MAIN(tst_other_platform)
#include "tst_other_platform.moc"
