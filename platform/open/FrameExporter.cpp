#include "platform/open/FrameExporter.h"

#include "platform/open/FrameCounters.h"
#include "platform/open/FrameLayout.h"
#include "platform/open/FramePool.h"
#include "platform/open/TimestampRepair.h"
#include "platform/open/copied/BlockStore.h"
#include "platform/open/copied/FrameCopy.h"
#include "platform/open/imported/DmabufFrame.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include <QtGlobal>

#include <gst/base/gstbasetransform.h>
#include <gst/video/video.h>

namespace {

constexpr GstClockTime kUnknownFrameDuration = 40 * GST_MSECOND;

// Upper limit of the wait at end of stream: twice the longest gap between frames, and this much
// more for a busy machine.
constexpr GstClockTime kEndPatience = 3 * GST_SECOND;
// Upper limit of the last frame's stay, whatever its duration says.
constexpr GstClockTime kLongestStay = 30 * GST_SECOND;

#define EXPORTER_SIZES "width = [ 1, 16384 ], height = [ 1, 16384 ]"
// The largest picture of H.264 and H.265, whatever the level.
constexpr qint64 kMostPixels = 139264L * 256;

GstStaticPadTemplate s_SinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS,
    GST_STATIC_CAPS("video/x-raw, format = { NV12, I420 }, " EXPORTER_SIZES));
GstStaticPadTemplate s_SourceTemplate =
    GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS,
                            GST_STATIC_CAPS("video/x-raw, format = NV12, " EXPORTER_SIZES));

} // namespace

struct ExporterState
{
    std::shared_ptr<FramePool> pool = std::make_shared<FramePool>();
    // Streaming thread only.
    TimestampRepair times;
    GstVideoInfo info = {}; // of what comes in
    Colours colours;        // the same
    std::shared_ptr<BlockStore> blocks;
    GstClockTime stay = 0;                            // of the last frame
    int stream = 0;                                   // a number for each file
    std::vector<std::weak_ptr<DmabufFrame>> uncopied; // may be out
};

struct QuadplayerFrameExporter
{
    GstBaseTransform base;
    ExporterState* state;
};
struct QuadplayerFrameExporterClass
{
    GstBaseTransformClass base;
};

G_DEFINE_TYPE(QuadplayerFrameExporter, quadplayer_frame_exporter, GST_TYPE_BASE_TRANSFORM)

namespace {

GstBaseTransformClass* parentClass()
{
    return GST_BASE_TRANSFORM_CLASS(quadplayer_frame_exporter_parent_class);
}

ExporterState& stateOf(gpointer element)
{
    return *reinterpret_cast<QuadplayerFrameExporter*>(element)->state;
}

// --- What goes in and what comes out

void roundUp(GstStructure* structure, const char* field)
{
    int size = 0;
    if (gst_structure_get_int(structure, field, &size))
        gst_structure_set(structure, field, G_TYPE_INT, evenSize(size), nullptr);
}

void allowRoundedUp(GstStructure* structure, const char* field)
{
    int size = 0;
    if (gst_structure_get_int(structure, field, &size) && size > 1)
        gst_structure_set(structure, field, GST_TYPE_INT_RANGE, size - 1, size, nullptr);
}

void toSourceSide(GstStructure* structure)
{
    gst_structure_set(structure, "format", G_TYPE_STRING, "NV12", nullptr);
    roundUp(structure, "width");
    roundUp(structure, "height");
}

void toSinkSide(GstStructure* structure)
{
    gst_structure_remove_field(structure, "format"); // the template says which there are
    allowRoundedUp(structure, "width");
    allowRoundedUp(structure, "height");
}

GstCaps* transformCaps(GstBaseTransform*, GstPadDirection direction, GstCaps* caps, GstCaps* filter)
{
    GstCaps* result = gst_caps_copy(caps);
    for (guint i = 0; i < gst_caps_get_size(result); ++i) {
        GstStructure* structure = gst_caps_get_structure(result, i);
        if (direction == GST_PAD_SINK)
            toSourceSide(structure);
        else
            toSinkSide(structure);
    }
    if (filter) {
        GstCaps* all = result;
        result = gst_caps_intersect_full(filter, all, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(all);
    }
    return result;
}

gboolean setCaps(GstBaseTransform* base, GstCaps* in, GstCaps*)
{
    ExporterState& state = stateOf(base);
    if (!gst_video_info_from_caps(&state.info, in))
        return FALSE;
    if (qint64(state.info.width) * state.info.height > kMostPixels) {
        GST_ELEMENT_ERROR(base, STREAM, FORMAT, ("The picture is too large."),
                          ("%d by %d pixels are too large", state.info.width, state.info.height));
        return FALSE;
    }
    state.colours = coloursOf(in);
    state.blocks = std::make_shared<BlockStore>(
        tightNv12Size(evenSize(state.info.width), evenSize(state.info.height)));
    return TRUE;
}

gboolean start(GstBaseTransform* base)
{
    static std::atomic<int> s_nStreams{0};
    stateOf(base).stream = ++s_nStreams;
    return TRUE;
}

// The appsink keeps its last sample until the next file. One frame that stays out keeps all frames
// of its decoder.
void letUncopiedGo(ExporterState& state)
{
    for (const auto& weak : state.uncopied) {
        if (const auto frame = weak.lock())
            frame->letGo();
    }
    state.uncopied.clear();
}

// The numbers are those since the start of the program.
gboolean stop(GstBaseTransform* base)
{
    stateOf(base).blocks = nullptr;
    letUncopiedGo(stateOf(base));
    const FrameCounters& counters = frameCounters();
    qDebug("frames: %u exported, %u uploaded, %u buffers imported", counters.framesExported.load(),
           counters.uploads.load(), counters.imports.load());
    return TRUE;
}

// Decoders may then write frames with gaps between the rows, which are read by their video meta. A
// decoder with a pool of its own needs as many frames more as stay out uncopied, or it stalls.
gboolean proposeAllocation(GstBaseTransform*, GstQuery*, GstQuery* query)
{
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    GstCaps* caps = nullptr;
    GstVideoInfo info;
    gst_query_parse_allocation(query, &caps, nullptr);
    if (caps && gst_video_info_from_caps(&info, caps))
        gst_query_add_allocation_pool(query, nullptr, static_cast<guint>(info.size),
                                      FramePool::kFrames, 0);
    return TRUE;
}

// GstBaseTransform would use the sink's allocator; frames come from our pool only.
gboolean decideAllocation(GstBaseTransform*, GstQuery*)
{
    return TRUE;
}

// --- One frame

GstClockTime durationOf(const ExporterState& state, GstBuffer* buffer)
{
    const GstClockTime duration = GST_BUFFER_DURATION(buffer);
    if (GST_CLOCK_TIME_IS_VALID(duration) && duration > 0)
        return duration;
    const int frames = GST_VIDEO_INFO_FPS_N(&state.info);
    return frames > 0 ? gst_util_uint64_scale(GST_SECOND, GST_VIDEO_INFO_FPS_D(&state.info), frames)
                      : kUnknownFrameDuration;
}

void setTimes(GstBaseTransform* base, GstBuffer* in, GstBuffer* out)
{
    ExporterState& state = stateOf(base);
    const GstClockTime duration = durationOf(state, in);
    const bool forward = base->segment.rate > 0;
    GST_BUFFER_PTS(out) =
        forward ? state.times.repaired(GST_BUFFER_PTS(in), duration) : GST_BUFFER_PTS(in);
    GST_BUFFER_DURATION(out) = duration;
    state.stay = std::min(duration, kLongestStay);
}

std::shared_ptr<PhysBlock> copiedFrame(ExporterState& state, GstBuffer* in,
                                       const FrameLayout& layout)
{
    auto block = state.blocks->take();
    return block && copyAsTightNv12(in, layout, block->data()) ? block : nullptr;
}

// Without a video meta, GStreamer would assume other strides for most widths.
void describeTightNv12(GstBuffer* buffer, const GstVideoInfo& picture)
{
    const int width = evenSize(picture.width);
    const int height = evenSize(picture.height);
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0, static_cast<gsize>(width) * height};
    gint strides[GST_VIDEO_MAX_PLANES] = {width, width};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, width,
                                   height, 2, offsets, strides);
}

GstBuffer* newBuffer(ExporterState& state, const std::shared_ptr<PhysFrame>& frame, size_t size)
{
    frame->setStream(state.stream);
    frame->setColours(state.colours);
    GstBuffer* buffer = gst_buffer_new();
    gst_buffer_append_memory(buffer, state.pool->handOut(frame, size));
    return buffer;
}

// Null: the frame cannot be read.
GstBuffer* exported(ExporterState& state, GstBuffer* in)
{
    const auto layout = frameLayoutOf(in, state.info);
    if (!layout)
        return nullptr;
    if (const auto frame = DmabufFrame::make(in, *layout)) {
        auto& out = state.uncopied;
        out.erase(std::remove_if(out.begin(), out.end(), [](auto& old) { return old.expired(); }),
                  out.end());
        out.push_back(frame);
        return newBuffer(state, frame, 1);
    }
    const auto block = copiedFrame(state, in, *layout);
    if (!block)
        return nullptr;
    GstBuffer* buffer = newBuffer(state, block, block->size());
    describeTightNv12(buffer, state.info);
    return buffer;
}

GstFlowReturn prepareOutputBuffer(GstBaseTransform* base, GstBuffer* in, GstBuffer** out)
{
    ExporterState& state = stateOf(base);
    if (!state.pool->waitForRoom())
        return GST_FLOW_FLUSHING;
    *out = exported(state, in);
    if (!*out) {
        GST_ELEMENT_ERROR(base, STREAM, FORMAT, ("A decoded frame is not what its caps say"),
                          (nullptr));
        return GST_FLOW_ERROR;
    }
    gst_buffer_copy_into(*out, in, GST_BUFFER_COPY_FLAGS, 0, -1);
    setTimes(base, in, *out);
    ++frameCounters().framesExported;
    return GST_FLOW_OK;
}

// The output buffer is complete already, but without this function GstBaseTransform would pass the
// input on.
GstFlowReturn keepOutput(GstBaseTransform*, GstBuffer*, GstBuffer*)
{
    return GST_FLOW_OK;
}

// --- Events and states

// False: drop the event.
bool holdEndOfStream(ExporterState& state)
{
    const GstClockTime patience = kEndPatience + 2 * state.times.longestStep();
    return state.pool->waitUntilShown(std::chrono::nanoseconds(patience),
                                      std::chrono::nanoseconds(state.stay));
}

void resetTimes(ExporterState& state, GstEvent* segmentEvent)
{
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(segmentEvent, &segment);
    state.times.reset(segment->format == GST_FORMAT_TIME ? segment->start : 0);
}

gboolean sinkEvent(GstBaseTransform* base, GstEvent* event)
{
    ExporterState& state = stateOf(base);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_FLUSH_START:
        state.pool->setFlushing(true);
        break;
    case GST_EVENT_FLUSH_STOP:
        state.pool->setFlushing(false);
        state.times.reset(0);
        state.stay = 0;
        break;
    case GST_EVENT_SEGMENT:
        resetTimes(state, event);
        break;
    case GST_EVENT_EOS:
        if (!holdEndOfStream(state)) {
            // A flush came first. It may not have reached the sink yet, where this event would
            // end the playback.
            gst_event_unref(event);
            return TRUE;
        }
        break;
    default:
        break;
    }
    return parentClass()->sink_event(base, event);
}

// Tell the pool before the parent acts: the parent waits for the streaming thread, which may wait
// in the pool.
GstStateChangeReturn changeState(GstElement* element, GstStateChange transition)
{
    FramePool& pool = *stateOf(element).pool;
    switch (transition) {
    case GST_STATE_CHANGE_READY_TO_PAUSED:
        pool.setActive(true);
        break;
    case GST_STATE_CHANGE_PAUSED_TO_PLAYING:
        pool.setPlaying(true);
        break;
    case GST_STATE_CHANGE_PLAYING_TO_PAUSED:
        pool.setPlaying(false);
        break;
    case GST_STATE_CHANGE_PAUSED_TO_READY:
        pool.setActive(false);
        break;
    default:
        break;
    }
    return GST_ELEMENT_CLASS(quadplayer_frame_exporter_parent_class)
        ->change_state(element, transition);
}

void finalize(GObject* object)
{
    delete reinterpret_cast<QuadplayerFrameExporter*>(object)->state;
    G_OBJECT_CLASS(quadplayer_frame_exporter_parent_class)->finalize(object);
}

} // namespace

static void quadplayer_frame_exporter_class_init(QuadplayerFrameExporterClass* klass)
{
    G_OBJECT_CLASS(klass)->finalize = finalize;
    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    element->change_state = changeState;
    gst_element_class_add_static_pad_template(element, &s_SinkTemplate);
    gst_element_class_add_static_pad_template(element, &s_SourceTemplate);
    gst_element_class_set_static_metadata(element, "Frame exporter", "Filter/Video",
                                          "Puts frames into physical memory", "quadplayer");
    klass->base.transform_caps = transformCaps;
    klass->base.set_caps = setCaps;
    klass->base.propose_allocation = proposeAllocation;
    klass->base.decide_allocation = decideAllocation;
    klass->base.prepare_output_buffer = prepareOutputBuffer;
    klass->base.transform = keepOutput;
    klass->base.start = start;
    klass->base.stop = stop;
    klass->base.sink_event = sinkEvent;
}

static void quadplayer_frame_exporter_init(QuadplayerFrameExporter* exporter)
{
    exporter->state = new ExporterState;
}

GstElement* newFrameExporter()
{
    return GST_ELEMENT(g_object_new(quadplayer_frame_exporter_get_type(), nullptr));
}
