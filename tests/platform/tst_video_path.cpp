// The way of decoded frames through a real playbin whose sink keeps them until the test takes them:
// what the engine does, in slow motion.
#include "platform/VideoPath.h"
#include "platform/host/FramePool.h"
#include "platform/host/HostCounters.h"
#include "player/phymem.h"

#include <QElapsedTimer>
#include <QTest>

#include <gst/app/gstappsink.h>

namespace {

constexpr qint64 kAtOnceMs = 2000; // generous: sanitizers, and other work on the machine

class Playback
{
public:
    explicit Playback(const QByteArray& clip)
    {
        g_object_set(m_pPipeline, "video-sink", m_pSink, "uri",
                     ("file://" CLIP_DIR "/" + clip).constData(), nullptr);
        preparePlatformVideoPath(m_pPipeline);
        g_object_set(m_pSink, "sync", FALSE, "wait-on-eos", FALSE, nullptr);
        setState(GST_STATE_PLAYING);
    }
    ~Playback()
    {
        setState(GST_STATE_NULL);
        gst_object_unref(m_pPipeline);
    }
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    void setState(GstState state) { gst_element_set_state(m_pPipeline, state); }
    void seek(GstClockTime target)
    {
        gst_element_seek_simple(m_pPipeline, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, target);
    }
    bool hasEnded() // since the last look
    {
        GstBus* bus = gst_element_get_bus(m_pPipeline);
        GstMessage* end = gst_bus_pop_filtered(bus, GST_MESSAGE_EOS);
        gst_object_unref(bus);
        if (end)
            gst_message_unref(end);
        return end != nullptr;
    }
    GstSample* take() // null at the end of the stream
    {
        return gst_app_sink_try_pull_sample(GST_APP_SINK(m_pSink), QP_LIMIT_MS * GST_MSECOND);
    }
    // Maps and unmaps the next frame, as the engine does around its hand-off; its time in ns, -1 at
    // the end of the stream.
    qint64 show()
    {
        GstSample* sample = take();
        if (!sample)
            return -1;
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        GstMapInfo map = {};
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        gst_buffer_unmap(buffer, &map);
        const auto time = static_cast<qint64>(GST_BUFFER_PTS(buffer));
        gst_sample_unref(sample);
        return time;
    }

private:
    GstElement* m_pPipeline = gst_element_factory_make("playbin", nullptr);
    GstElement* m_pSink = gst_element_factory_make("appsink", nullptr);
};

bool allFramesGoOut()
{
    return QTest::qWaitFor([] { return hostCounters().framesOut == FramePool::kFrames; },
                           QP_LIMIT_MS);
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
            QVERIFY(allFramesGoOut());
            playback.setState(state);
            QVERIFY(isAtOnce([&] { playback.seek(target * GST_SECOND); }));
            playback.setState(GST_STATE_PLAYING);
            QCOMPARE(playback.show(), qint64(target * GST_SECOND));
        }
        QVERIFY(allFramesGoOut());
        playback.setState(state);
        QVERIFY(isAtOnce([&] { playback.setState(GST_STATE_NULL); }));
    }

    // Many times: the end that goes on all the same is not always faster than the flush.
    void aSeekOvertakesTheEnd()
    {
        Playback playback("odd.avi");
        for (int round = 0; round < 30; ++round) {
            QVERIFY(allFramesGoOut()); // only the end is missing
            QVERIFY(isAtOnce([&] { playback.seek(0); }));
            QVERIFY(!playback.hasEnded());
        }
        int frames = 0;
        while (playback.show() >= 0)
            ++frames;
        QCOMPARE(frames, FramePool::kFrames);
        QVERIFY(QTest::qWaitFor([&] { return playback.hasEnded(); }, QP_LIMIT_MS));
    }

    void framesOutliveTheirPool()
    {
        GstSample* sample = nullptr;
        {
            Playback playback("silent.mp4");
            sample = playback.take();
        }
        QVERIFY(sample);
        QCOMPARE(hostCounters().framesOut.load(), 1);
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        QVERIFY(gst_buffer_is_phymem(buffer));
        gst_buffer_query_phymem_block(buffer)->vaddr[0] = 1; // a sanitizer would object
        gst_sample_unref(sample);
    }
};

QTEST_GUILESS_MAIN(tst_video_path)
#include "tst_video_path.moc"
