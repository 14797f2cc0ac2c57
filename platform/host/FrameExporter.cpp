#include "platform/host/FrameExporter.h"

#include "platform/host/FrameCopy.h"
#include "platform/host/HostCounters.h"
#include "platform/host/PhysMemory.h"
#include "platform/host/TimestampRepair.h"
#include "player/phymem.h"

#include <gst/base/gstbasetransform.h>
#include <gst/video/video.h>

namespace {

constexpr GstClockTime kDefaultDuration = 40 * GST_MSECOND;

// How long, beside the step between frames, nothing may happen before a held end of stream goes on.
constexpr std::chrono::seconds kPatience(2);

struct Exporter
{
    std::shared_ptr<FramePool> pool = std::make_shared<FramePool>();
    TimestampRepair times;
    GstVideoInfo input = {};
    int width = 0; // of the frames that go out: even
    int height = 0;
};

} // namespace

struct QuadplayerFrameExporter
{
    GstBaseTransform parent;
    Exporter* exporter;
};

struct QuadplayerFrameExporterClass
{
    GstBaseTransformClass parent_class;
};

G_DEFINE_TYPE(QuadplayerFrameExporter, quadplayer_frame_exporter, GST_TYPE_BASE_TRANSFORM)

namespace {

GstStaticPadTemplate s_sinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("{ I420, NV12 }")));
GstStaticPadTemplate s_srcTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("NV12")));

Exporter& exporterOf(gpointer element)
{
    return *reinterpret_cast<QuadplayerFrameExporter*>(element)->exporter;
}

// --- Caps: NV12 goes out, of even size. ---

void roundField(GstStructure* structure, const char* field)
{
    int pixels = 0;
    if (gst_structure_get_int(structure, field, &pixels))
        gst_structure_set(structure, field, G_TYPE_INT, roundUpToEven(pixels), nullptr);
}

// Towards the decoder nothing is asked of the size: whatever it is, it is rounded here.
GstCaps* transformCaps(GstBaseTransform* base, GstPadDirection direction, GstCaps* caps,
                       GstCaps* filter)
{
    GstCaps* result = gst_caps_copy(caps);
    for (guint i = 0; i < gst_caps_get_size(result); ++i) {
        GstStructure* structure = gst_caps_get_structure(result, i);
        gst_structure_remove_field(structure, "format");
        if (direction == GST_PAD_SINK) {
            roundField(structure, "width");
            roundField(structure, "height");
        } else {
            gst_structure_remove_fields(structure, "width", "height", nullptr);
        }
    }
    GstPad* other = direction == GST_PAD_SINK ? base->srcpad : base->sinkpad;
    GstCaps* allowed = gst_pad_get_pad_template_caps(other);
    GstCaps* formatted = gst_caps_intersect_full(result, allowed, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(allowed);
    gst_caps_unref(result);
    if (!filter)
        return formatted;
    GstCaps* filtered = gst_caps_intersect_full(filter, formatted, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(formatted);
    return filtered;
}

gboolean setCaps(GstBaseTransform* base, GstCaps* input, GstCaps* output)
{
    Exporter& exporter = exporterOf(base);
    const GstStructure* structure = gst_caps_get_structure(output, 0);
    return gst_video_info_from_caps(&exporter.input, input) &&
           gst_structure_get_int(structure, "width", &exporter.width) &&
           gst_structure_get_int(structure, "height", &exporter.height);
}

gboolean transformSize(GstBaseTransform* base, GstPadDirection /*direction*/, GstCaps* /*caps*/,
                       gsize /*size*/, GstCaps* /*otherCaps*/, gsize* otherSize)
{
    const Exporter& exporter = exporterOf(base);
    *otherSize = nv12Size(exporter.width, exporter.height);
    return TRUE;
}

// Rows may come in padded: the copy reads them through the buffer's own description.
gboolean proposeAllocation(GstBaseTransform* /*base*/, GstQuery* /*decide*/, GstQuery* query)
{
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return TRUE;
}

// The frames are this element's own; nothing of downstream's pools is wanted.
gboolean decideAllocation(GstBaseTransform* /*base*/, GstQuery* /*query*/)
{
    return TRUE;
}

// --- Frames. ---

GstClockTime durationOf(const Exporter& exporter, GstBuffer* input)
{
    if (GST_BUFFER_DURATION_IS_VALID(input) && GST_BUFFER_DURATION(input) > 0)
        return GST_BUFFER_DURATION(input);
    const int rate = GST_VIDEO_INFO_FPS_N(&exporter.input);
    if (rate <= 0)
        return kDefaultDuration;
    return gst_util_uint64_scale_int(GST_SECOND, GST_VIDEO_INFO_FPS_D(&exporter.input), rate);
}

// Rows without padding are not GStreamer's default at every width, so they are described.
void describeRows(const Exporter& exporter, GstBuffer* output)
{
    const auto width = static_cast<guint>(exporter.width);
    const auto height = static_cast<guint>(exporter.height);
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0, static_cast<gsize>(width) * height};
    gint strides[GST_VIDEO_MAX_PLANES] = {exporter.width, exporter.width};
    gst_buffer_add_video_meta_full(output, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, width,
                                   height, 2, offsets, strides);
}

GstFlowReturn prepareOutput(GstBaseTransform* base, GstBuffer* input, GstBuffer** output)
{
    Exporter& exporter = exporterOf(base);
    std::unique_ptr<PhysBlock> block =
        exporter.pool->acquire(nv12Size(exporter.width, exporter.height));
    if (!block)
        return GST_FLOW_FLUSHING;
    *output = gst_buffer_new();
    gst_buffer_append_memory(*output, wrapPhysBlock(exporter.pool, std::move(block)));
    describeRows(exporter, *output);
    gst_buffer_copy_into(*output, input, GST_BUFFER_COPY_FLAGS, 0, static_cast<gsize>(-1));
    const GstClockTime duration = durationOf(exporter, input);
    GST_BUFFER_PTS(*output) = exporter.times.next(GST_BUFFER_PTS(input), duration);
    GST_BUFFER_DURATION(*output) = duration;
    return GST_FLOW_OK;
}

// Writes to the block itself: a mapping would count as the frame having been looked at.
GstFlowReturn transform(GstBaseTransform* base, GstBuffer* input, GstBuffer* output)
{
    const Exporter& exporter = exporterOf(base);
    GstVideoFrame source;
    if (!gst_video_frame_map(&source, &exporter.input, input, GST_MAP_READ))
        return GST_FLOW_ERROR;
    const PhyMemBlock* block = gst_buffer_query_phymem_block(output);
    copyToNv12(source, block->vaddr);
    gst_video_frame_unmap(&source);
    exporter.pool->setLastOut(static_cast<uint32_t>(block->paddr));
    ++hostCounters().framesExported;
    return GST_FLOW_OK;
}

// --- Events and states. ---

void holdEndOfStream(Exporter& exporter)
{
    const std::chrono::nanoseconds step(exporter.times.lastStep());
    exporter.pool->waitLastShown(kPatience + step);
}

gboolean sinkEvent(GstBaseTransform* base, GstEvent* event)
{
    Exporter& exporter = exporterOf(base);
    const GstEventType type = GST_EVENT_TYPE(event);
    if (type == GST_EVENT_FLUSH_START)
        exporter.pool->interrupt();
    if (type == GST_EVENT_FLUSH_STOP)
        exporter.pool->rearm();
    if (type == GST_EVENT_FLUSH_STOP || type == GST_EVENT_SEGMENT)
        exporter.times.reset();
    if (type == GST_EVENT_EOS)
        holdEndOfStream(exporter);
    return GST_BASE_TRANSFORM_CLASS(quadplayer_frame_exporter_parent_class)
        ->sink_event(base, event);
}

// Going down, the waits end before the parent's state change, which waits for the streaming thread.
GstStateChangeReturn changeState(GstElement* element, GstStateChange change)
{
    Exporter& exporter = exporterOf(element);
    if (change == GST_STATE_CHANGE_READY_TO_PAUSED)
        exporter.pool->rearm();
    if (change == GST_STATE_CHANGE_PAUSED_TO_READY)
        exporter.pool->interrupt();
    return GST_ELEMENT_CLASS(quadplayer_frame_exporter_parent_class)->change_state(element, change);
}

void finalize(GObject* object)
{
    delete reinterpret_cast<QuadplayerFrameExporter*>(object)->exporter;
    G_OBJECT_CLASS(quadplayer_frame_exporter_parent_class)->finalize(object);
}

} // namespace

static void quadplayer_frame_exporter_class_init(QuadplayerFrameExporterClass* klass)
{
    G_OBJECT_CLASS(klass)->finalize = finalize;

    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    element->change_state = changeState;
    gst_element_class_add_static_pad_template(element, &s_sinkTemplate);
    gst_element_class_add_static_pad_template(element, &s_srcTemplate);
    gst_element_class_set_static_metadata(element, "Frame exporter", "Filter/Video",
                                          "Copies decoded frames into video memory",
                                          "the quadplayer authors");

    GstBaseTransformClass* base = &klass->parent_class;
    base->transform_caps = transformCaps;
    base->set_caps = setCaps;
    base->transform_size = transformSize;
    base->propose_allocation = proposeAllocation;
    base->decide_allocation = decideAllocation;
    base->prepare_output_buffer = prepareOutput;
    base->transform = transform;
    base->sink_event = sinkEvent;
}

static void quadplayer_frame_exporter_init(QuadplayerFrameExporter* element)
{
    element->exporter = new Exporter;
    gst_base_transform_set_qos_enabled(&element->parent, FALSE);
}

GstElement* makeFrameExporter()
{
    return GST_ELEMENT(g_object_new(quadplayer_frame_exporter_get_type(), nullptr));
}

void frameExporterInterrupt(GstElement* exporter)
{
    exporterOf(exporter).pool->interrupt();
}
