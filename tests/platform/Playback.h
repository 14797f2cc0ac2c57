// A playbin with the platform's video path whose frames are kept until the test shows or drops
// them: what the engine does, in slow motion. Test thread, but for the GStreamer callbacks.
#pragma once

#include "platform/VideoPath.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QSize>

#include <atomic>
#include <deque>
#include <mutex>

#include <gst/app/gstappsink.h>

struct ShownFrame
{
    QSize size;
    qint64 time = -1; // ns
    QByteArray bytes;
};

class Playback
{
public:
    explicit Playback(const QByteArray& clip)
    {
        GstElement* sink = gst_element_factory_make("appsink", nullptr);
        g_object_set(m_pPipeline, "video-sink", sink, "uri",
                     ("file://" CLIP_DIR "/" + clip).constData(), nullptr);
        preparePlatformVideoPath(m_pPipeline);
        g_object_set(sink, "emit-signals", TRUE, "sync", FALSE, nullptr);
        g_signal_connect(sink, "new-sample", G_CALLBACK(keepSample), this);
        GstBus* bus = gst_element_get_bus(m_pPipeline);
        gst_bus_set_sync_handler(bus, noteEnd, this, nullptr);
        gst_object_unref(bus);
        setState(GST_STATE_PLAYING);
    }
    ~Playback()
    {
        setState(GST_STATE_NULL);
        gst_object_unref(m_pPipeline);
        drop(kept());
    }
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    void setState(GstState state) { gst_element_set_state(m_pPipeline, state); }
    void seek(GstClockTime target)
    {
        gst_element_seek_simple(m_pPipeline, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, target);
    }
    bool isEnded() const { return m_bEnded; }

    int kept() const
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return static_cast<int>(m_Samples.size());
    }
    GstSample* takeFirst()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        GstSample* sample = m_Samples.front();
        m_Samples.pop_front();
        return sample;
    }
    // Maps and unmaps the first frame kept, as the engine does around its hand-off.
    ShownFrame showFirst()
    {
        GstSample* sample = takeFirst();
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        const GstStructure* caps = gst_caps_get_structure(gst_sample_get_caps(sample), 0);
        ShownFrame frame;
        gst_structure_get(caps, "width", G_TYPE_INT, &frame.size.rwidth(), "height", G_TYPE_INT,
                          &frame.size.rheight(), nullptr);
        frame.time = static_cast<qint64>(GST_BUFFER_PTS(buffer));
        GstMapInfo map = {};
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        frame.bytes = QByteArray(reinterpret_cast<const char*>(map.data), int(map.size));
        gst_buffer_unmap(buffer, &map);
        gst_sample_unref(sample);
        return frame;
    }
    void drop(int samples)
    {
        while (samples-- > 0)
            gst_sample_unref(takeFirst());
    }

private:
    static GstFlowReturn keepSample(GstElement* sink, Playback* playback)
    {
        GstSample* pulled = gst_app_sink_pull_sample(GST_APP_SINK(sink));
        // A sample of our own: appsink writes to the last one it gave out, after a flush without
        // asking who else has it, and GStreamer complains.
        GstSample* own = gst_sample_new(gst_sample_get_buffer(pulled), gst_sample_get_caps(pulled),
                                        nullptr, nullptr);
        gst_sample_unref(pulled);
        const std::lock_guard<std::mutex> lock(playback->m_Mutex);
        playback->m_Samples.push_back(own);
        return GST_FLOW_OK;
    }
    static GstBusSyncReply noteEnd(GstBus*, GstMessage* message, void* user)
    {
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS)
            static_cast<Playback*>(user)->m_bEnded = true;
        gst_message_unref(message);
        return GST_BUS_DROP;
    }

    GstElement* m_pPipeline = gst_element_factory_make("playbin", nullptr);
    mutable std::mutex m_Mutex; // guards m_Samples
    std::deque<GstSample*> m_Samples;
    std::atomic<bool> m_bEnded{false};
};
