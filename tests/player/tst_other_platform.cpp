// The engine on a platform of the test's own, which sees the pipeline, and delays, drops or changes
// what goes to the sink. Its frames come back only when they are released, whatever the pipeline's
// state.
#include "player/EngineClock.h"
#include "tests/Rows.h"
#include "tests/player/Engine.h"

#include "platform/VideoPath.h"
#include "platform/open/FrameExporter.h"

#include <functional>

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

namespace {

constexpr int kFrames = 3;    // fewer than the frame exporter has
constexpr int kLastFrame = 5; // of odd.avi

// What the platform does to each buffer or event at the sink. One of the two is null; false drops
// the other.
std::function<bool(GstBuffer*, GstEvent*)> s_pass;
std::function<void()> s_beforeSample; // called before the engine's own handler
bool s_bPhysical = true;

GstElement* s_pPlaybin = nullptr;
QSemaphore s_free(kFrames);
std::atomic<bool> s_bWaits{false}; // the decoder waits for a frame
std::atomic<int> s_nBuffers{0};

// The decoder may reuse the frame when its buffer is released.
bool takeFrame(GstBuffer* buffer, GstEvent*)
{
    if (!buffer)
        return true;
    s_bWaits = s_free.available() == 0;
    s_free.acquire();
    gst_mini_object_weak_ref(
        GST_MINI_OBJECT(buffer), [](gpointer, GstMiniObject*) { s_free.release(); }, nullptr);
    return true;
}

GstPadProbeReturn probe(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstEvent* event = GST_IS_EVENT(info->data) ? GST_EVENT(info->data) : nullptr;
    GstBuffer* buffer = GST_IS_BUFFER(info->data) ? GST_BUFFER(info->data) : nullptr;
    return !s_pass || s_pass(buffer, event) ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
}

// The bytes that the exporter makes of a buffer, in hexadecimal, or the name of what went wrong.
QByteArray exported(const QByteArray& caps, GstBuffer* buffer)
{
    GstElement* exporter = newFrameExporter();
    GstHarness* harness = gst_harness_new_with_element(exporter, "sink", "src");
    gst_harness_set_src_caps_str(harness, caps);
    const GstFlowReturn flow = gst_harness_push(harness, buffer);
    gsize size = 0;
    guint8* data = gst_harness_take_all_data(harness, &size);
    const QByteArray bytes = QByteArray(reinterpret_cast<char*>(data), int(size)).toHex();
    g_free(data);
    gst_harness_teardown(harness);
    gst_object_unref(exporter);
    return flow == GST_FLOW_OK ? bytes : QByteArray(gst_flow_get_name(flow));
}

// decodebin locks the state of an element while it plugs it in.
void complain(GstBin*, GstBin*, GstElement* element, gpointer)
{
    if (gst_element_is_locked_state(element) && ++s_nBuffers)
        GST_ELEMENT_ERROR(element, STREAM, FAILED, (nullptr), (nullptr));
}

GstFlowReturn onSample(GstElement*, gpointer)
{
    if (s_beforeSample)
        s_beforeSample();
    return GST_FLOW_OK;
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
    void initTestCase() { gst_init(nullptr, nullptr); }
    void init()
    {
        s_pass = nullptr;
        s_beforeSample = nullptr;
        s_bWaits = false;
        s_nBuffers = 0;
    }

    void asksPlaybinForEverything()
    {
        Engine e;
        const GstElement* first = s_pPlaybin;
        e.player->initPipeline(); // only once
        QCOMPARE(s_pPlaybin, first);
        int before = 0;
        int flags = 0;
        gchar* uri = nullptr;
        g_object_get(s_pPlaybin, "flags", &before, nullptr);
        e.player->playFile("/no such file");
        g_object_get(s_pPlaybin, "flags", &flags, "uri", &uri, nullptr);
        QCOMPARE(flags, before | 0x0F);
        QCOMPARE(uri, "file:///no such file");
        g_free(uri);
    }

    void decoderThatWaitsStops_data()
    {
        columns<bool>({"byStop"});
        row("stop", true);
        row("end of the engine", false);
    }
    void decoderThatWaitsStops()
    {
        QFETCH(bool, byStop);
        s_pass = takeFrame;
        Engine e;
        e.holdFrom = byStop ? 1 : kNever;
        e.player->playFile(clip("long.mp4"));
        QTRY_VERIFY_WITH_TIMEOUT(s_bWaits, kLimitMs);
        if (byStop)
            e.player->stop();
        e.player.reset();
        QCOMPARE(s_free.available(), kFrames);
    }

    // Nobody takes messages off the bus: those of a damaged file would fill the memory.
    void keepsNoMessage()
    {
        Engine e;
        bool freed = false;
        GstMessage* warning = gst_message_new_warning(GST_OBJECT(s_pPlaybin), nullptr, "bad");
        const auto note = [](gpointer flag, GstMiniObject*) { *static_cast<bool*>(flag) = true; };
        gst_mini_object_weak_ref(GST_MINI_OBJECT(warning), note, &freed);
        gst_element_post_message(s_pPlaybin, warning);
        QVERIFY(freed);
        QCOMPARE(e.errors, 0);
    }

    // decodebin tries the next element instead.
    void anElementThatDoesNotFitIsNoError()
    {
        Engine e;
        g_signal_connect(s_pPlaybin, "deep-element-added", G_CALLBACK(complain), nullptr);
        QVERIFY(e.starts("silent.mp4"));
        QCOMPARE(e.errors, 0);
        QVERIFY(s_nBuffers > 0);
    }

    // A recording's text may not forge a line of the log or work the terminal.
    void printsTextsOnOneLine()
    {
        Engine e;
        QTest::ignoreMessage(QtDebugMsg, "++ GST_MESSAGE_ERROR ..  é𝄞??[m?b");
        GST_ELEMENT_ERROR(s_pPlaybin, STREAM, FAILED, ("é𝄞\n\x1b[m\u2028b"), (nullptr));
        QTRY_COMPARE_WITH_TIMEOUT(e.errors, 1, kLimitMs);
    }

    // The file plays on, so these lines are all that tells.
    void saysWhatIsMissing()
    {
        Engine e;
        QVERIFY(e.starts("silent.mp4"));
        const QString line = QStringLiteral("++ CPlayer file %1 : %2");
        const QString file = QFile::decodeName(clip("silent.mp4"));
        for (const char* text :
             {"no GStreamer plugin is installed for it: X decoder", "playbin0: Y"})
            QTest::ignoreMessage(QtDebugMsg, qUtf8Printable(line.arg(file, text)));
        GstStructure* plugin =
            gst_structure_new("missing-plugin", "name", G_TYPE_STRING, "X decoder", nullptr);
        gst_element_post_message(s_pPlaybin, gst_message_new_element(nullptr, plugin));
        GST_ELEMENT_WARNING(s_pPlaybin, RESOURCE, FAILED, ("Y"), (nullptr));
        QCOMPARE(e.errors, 0);
    }

    // playsink leaves a pad if a file is stopped while it starts, and aborts on a name used twice.
    void numbersNoPadTwice()
    {
        const Engine e; // its rules hold for every element
        GstElement* synchronizer = gst_element_factory_make("streamsynchronizer", nullptr);
        QStringList names;
        for (const GstState state : {GST_STATE_READY, GST_STATE_NULL, GST_STATE_NULL}) {
            gst_element_set_state(synchronizer, state);
            GstPad* pad = gst_element_request_pad_simple(synchronizer, "sink_%u");
            names << GST_OBJECT_NAME(pad);
            gst_object_unref(pad);
        }
        QCOMPARE(names.removeDuplicates(), 0);
        gst_object_unref(synchronizer);
    }

    // Nobody shows a refused frame, so the end must not wait for it.
    void endComesAtOnceAfterARefusedFrame()
    {
        QSemaphore last;
        s_beforeSample = [&last] {
            if (++s_nBuffers == kLastFrame) {
                last.release();
                QThread::msleep(200); // for the engine to begin with its pause, which waits for it
            }
        };
        Engine e;
        e.player->playFile(clip("odd.avi"));
        QVERIFY(last.tryAcquire(1, kLimitMs));
        e.player->playPause();
        const Clock clock;
        e.player->playPause();
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
        QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(e.frames < kLastFrame);
    }

    // Paused, so that the position stands still. A seek past the end goes to one second before it,
    // or to the start of a shorter clip.
    void seeksToTheNanosecond()
    {
        QCOMPARE(nanosecondsToUs(1600), 2); // rounded
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
            Engine e;
            QVERIFY(e.starts(clip));
            e.player->playPause();
            const qint64 duration = e.player->queryDuration();
            for (const qint64 step : {34, 34, 34, 34, -34, -34, -34, -34}) {
                QTRY_VERIFY_WITH_TIMEOUT(gst_element_get_state(s_pPlaybin, nullptr, nullptr, 0) !=
                                             GST_STATE_CHANGE_ASYNC,
                                         kLimitMs);
                const qint64 wanted = e.player->queryPosition() + step * kSecond;
                step > 0 ? e.player->seekForward() : e.player->seekBackward();
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
        Engine e;
        e.player->playFile(clip("odd.avi"));
        QTRY_COMPARE_WITH_TIMEOUT(s_nBuffers.load(), kLastFrame, kLimitMs);
        QTest::qWait(100); // the worker goes to sleep
        const Clock clock;
        e.player.reset();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    }

    // Of two frames with one time, only one is taken; a frame without a time is due at once.
    void framesElsewhereAreNotHandedOn()
    {
        s_bPhysical = false;
        s_pass = [](GstBuffer* buffer, GstEvent*) {
            if (!buffer)
                return true;
            GST_BUFFER_PTS(buffer) += GST_SECOND / 2;
            if (++s_nBuffers == kLastFrame - 1)
                GST_BUFFER_PTS(buffer) -= GST_SECOND / 10;
            else if (s_nBuffers == kLastFrame)
                GST_BUFFER_PTS(buffer) = GST_CLOCK_TIME_NONE;
            return true;
        };
        Engine e;
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^Not a phy mem block, sz= \\d"));
        e.player->playFile(clip("odd.avi"));
        s_bPhysical = true;
        QTRY_COMPARE_WITH_TIMEOUT(e.updates, kLastFrame - 1, kLimitMs);
        QCOMPARE(e.frames.load(), 0);
    }

    // The exporter takes four by two pixels of an NV12 frame of eight by four with numbered bytes.
    // It refuses what would be outside the buffer.
    void readsTheFramesOwnBytesOnly_data()
    {
        columns<int, gint, gsize, guint, QByteArray>(
            {"planes", "stride", "colours", "corner", "expected"});
        row("padded rows", 2, 8, gsize(32), 0U, QByteArray("0001020308090a0b20212223"));
        row("crop", 2, 8, gsize(32), 2U, QByteArray("121314151a1b1c1d2a2b2c2d"));
        row("crop past the edge", 2, 8, gsize(32), 5U, QByteArray("error"));
        row("one plane", 1, 8, gsize(32), 0U, QByteArray("error"));
        row("three planes", 3, 8, gsize(32), 0U, QByteArray("error"));
        row("no stride", 2, 0, gsize(32), 0U, QByteArray("error"));
        row("rows backwards", 2, -8, gsize(32), 0U, QByteArray("error"));
        row("rows over rows", 2, 3, gsize(32), 0U, QByteArray("error"));
        row("rows past the end", 2, G_MAXINT, gsize(32), 0U, QByteArray("error"));
        row("colours at the end", 2, 8, gsize(44), 0U, QByteArray("0001020308090a0b2c2d2e2f"));
        row("colours past the end", 2, 8, gsize(45), 0U, QByteArray("error"));
        row("colours nowhere", 2, 8, G_MAXSIZE, 0U, QByteArray("error"));
    }
    void readsTheFramesOwnBytesOnly()
    {
        QFETCH(int, planes);
        QFETCH(gint, stride);
        QFETCH(gsize, colours);
        QFETCH(guint, corner);
        QFETCH(QByteArray, expected);
        GstBuffer* buffer = gst_buffer_new_allocate(nullptr, 48, nullptr);
        for (guint8 i = 0; i < 48; ++i)
            gst_buffer_fill(buffer, i, &i, 1);
        gsize offsets[GST_VIDEO_MAX_PLANES] = {0, colours};
        gint strides[GST_VIDEO_MAX_PLANES] = {stride, stride};
        gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, 8,
                                       4, guint(planes), offsets, strides);
        GstVideoCropMeta* crop = gst_buffer_add_video_crop_meta(buffer);
        crop->x = crop->y = corner;
        crop->width = 4;
        crop->height = 2;
        QCOMPARE(exported("video/x-raw, format = NV12, width = 4, height = 2", buffer), expected);
        buffer = gst_buffer_new();
        QCOMPARE(exported("video/x-raw, format = I420, width = 4, height = 2", buffer), "error");
    }

    // Four frames of the size that GStreamer allows would be 1.6 GB.
    void refusesHugePictures()
    {
        const QByteArray caps = "video/x-raw, format = NV12, width = 8192, height = ";
        QCOMPARE(exported(caps + "4352", gst_buffer_new()), "error"); // which is empty
        QCOMPARE(exported(caps + "4354", gst_buffer_new()), "not-negotiated");
    }
};

QTEST_GUILESS_MAIN(tst_other_platform)
#include "tst_other_platform.moc"
