// The end of a real playbin's stream, held until the last frame was shown, against a seek.
#include "platform/VideoPath.h"
#include "platform/host/FramePool.h"
#include "platform/host/HostCounters.h"

#include <QTest>

#include <gst/app/gstappsink.h>

class tst_video_path : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        gst_init(nullptr, nullptr);
        m_pPipeline = gst_element_factory_make("playbin", nullptr);
        m_pSink = gst_element_factory_make("appsink", nullptr);
        g_object_set(m_pPipeline, "video-sink", m_pSink, "uri", "file://" CLIP_DIR "/odd.avi",
                     nullptr);
        preparePlatformVideoPath(m_pPipeline);
        g_object_set(m_pSink, "sync", FALSE, "wait-on-eos", FALSE, nullptr);
        gst_element_set_state(m_pPipeline, GST_STATE_PLAYING);
    }
    void cleanup()
    {
        gst_element_set_state(m_pPipeline, GST_STATE_NULL);
        gst_object_unref(m_pPipeline);
        QCOMPARE(hostCounters().framesOut.load(), 0);
    }

    // Many times: the end that goes on all the same is not always faster than the flush.
    void aSeekOvertakesTheEnd()
    {
        for (int round = 0; round < 30; ++round) {
            QTRY_COMPARE_WITH_TIMEOUT(hostCounters().framesOut.load(), FramePool::kFrames,
                                      QP_LIMIT_MS); // only the end is missing
            gst_element_seek_simple(m_pPipeline, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, 0);
            QVERIFY(!hasEnded());
        }
        int frames = 0;
        while (showNext())
            ++frames;
        QCOMPARE(frames, FramePool::kFrames);
        QVERIFY(QTest::qWaitFor([this] { return hasEnded(); }, QP_LIMIT_MS));
    }

private:
    bool hasEnded() // since the last look
    {
        GstBus* bus = gst_element_get_bus(m_pPipeline);
        GstMessage* end = gst_bus_pop_filtered(bus, GST_MESSAGE_EOS);
        gst_object_unref(bus);
        if (end)
            gst_message_unref(end);
        return end != nullptr;
    }
    // Maps and unmaps a frame, as the engine does around its hand-off. False: no more.
    bool showNext()
    {
        GstSample* sample =
            gst_app_sink_try_pull_sample(GST_APP_SINK(m_pSink), QP_LIMIT_MS * GST_MSECOND);
        if (!sample)
            return false;
        GstMapInfo map = {};
        gst_buffer_map(gst_sample_get_buffer(sample), &map, GST_MAP_READ);
        gst_buffer_unmap(gst_sample_get_buffer(sample), &map);
        gst_sample_unref(sample);
        return true;
    }

    GstElement* m_pPipeline = nullptr;
    GstElement* m_pSink = nullptr;
};

QTEST_GUILESS_MAIN(tst_video_path)
#include "tst_video_path.moc"
