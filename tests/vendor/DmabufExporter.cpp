// In place of the frame exporter, it makes the test's decoder one like those of open drivers: NV12
// in DMABUFs. It allocates them on the display's device, because a software renderer can import no
// others, and rounds sizes up as hardware does. It has kFrames of them and waits when all are out.
#include "platform/open/FrameExporter.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <drm.h>
#include <drm_mode.h>
#include <gst/allocators/gstdmabuf.h>
#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>
#include <libyuv.h>

namespace {

constexpr guint kFrames = 8;
constexpr guint kBytesPerPixel = 4; // virtio-gpu makes no other dumb buffers

GstStaticPadTemplate s_SinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-raw, format = I420"));
GstStaticPadTemplate s_SourceTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-raw, format = NV12"));

guint roundedUp(guint size, guint step)
{
    return (size + step - 1) / step * step;
}

guint codedWidth(const GstVideoInfo& info)
{
    return roundedUp(static_cast<guint>(info.width), 16);
}

guint codedHeight(const GstVideoInfo& info)
{
    return roundedUp(static_cast<guint>(info.height) + 1, 16); // never the picture's
}

// Wider than the coded size, so that nobody can take one for the other.
guint strideOf(const GstVideoInfo& info)
{
    return roundedUp(codedWidth(info), 64) + 64;
}

// -1: there is none.
int newDumbBuffer(guint stride, guint rows, guint64& size)
{
    const int card = open("/dev/dri/card0", O_RDWR | O_CLOEXEC);
    drm_mode_create_dumb dumb = {};
    dumb.width = stride / kBytesPerPixel;
    dumb.height = rows;
    dumb.bpp = kBytesPerPixel * 8;
    drm_prime_handle exported = {};
    exported.fd = -1;
    if (ioctl(card, DRM_IOCTL_MODE_CREATE_DUMB, &dumb) == 0 && dumb.pitch == stride) {
        exported.handle = dumb.handle;
        exported.flags = DRM_CLOEXEC | DRM_RDWR;
        ioctl(card, DRM_IOCTL_PRIME_HANDLE_TO_FD, &exported);
    }
    size = dumb.size;
    close(card); // takes the handle along; the buffer stays for as long as its descriptor
    return exported.fd;
}

} // namespace

// --- The pool

struct DmabufPool
{
    GstBufferPool base;
    GstAllocator* allocator;
    GstVideoInfo info;
};
struct DmabufPoolClass
{
    GstBufferPoolClass base;
};

G_DEFINE_TYPE(DmabufPool, dmabuf_pool, GST_TYPE_BUFFER_POOL)

namespace {

gboolean setConfig(GstBufferPool* base, GstStructure* config)
{
    GstCaps* caps = nullptr;
    return gst_buffer_pool_config_get_params(config, &caps, nullptr, nullptr, nullptr) &&
           gst_video_info_from_caps(&reinterpret_cast<DmabufPool*>(base)->info, caps) &&
           GST_BUFFER_POOL_CLASS(dmabuf_pool_parent_class)->set_config(base, config);
}

GstFlowReturn allocBuffer(GstBufferPool* base, GstBuffer** buffer, GstBufferPoolAcquireParams*)
{
    auto* pool = reinterpret_cast<DmabufPool*>(base);
    const guint stride = strideOf(pool->info);
    const guint rows = codedHeight(pool->info);
    guint64 size = 0;
    const int fd = newDumbBuffer(stride, rows * 3 / 2, size);
    if (fd < 0)
        return GST_FLOW_ERROR;
    *buffer = gst_buffer_new();
    gst_buffer_append_memory(*buffer, gst_dmabuf_allocator_alloc(pool->allocator, fd, size));
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0, static_cast<gsize>(stride) * rows};
    const auto signedStride = static_cast<gint>(stride);
    gint strides[GST_VIDEO_MAX_PLANES] = {signedStride, signedStride};
    gst_buffer_add_video_meta_full(*buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12,
                                   codedWidth(pool->info), rows, 2, offsets, strides);
    return GST_FLOW_OK;
}

void finalizePool(GObject* object)
{
    gst_object_unref(reinterpret_cast<DmabufPool*>(object)->allocator);
    G_OBJECT_CLASS(dmabuf_pool_parent_class)->finalize(object);
}

} // namespace

static void dmabuf_pool_class_init(DmabufPoolClass* klass)
{
    G_OBJECT_CLASS(klass)->finalize = finalizePool;
    klass->base.set_config = setConfig;
    klass->base.alloc_buffer = allocBuffer;
}

static void dmabuf_pool_init(DmabufPool* pool)
{
    pool->allocator = gst_dmabuf_allocator_new();
}

// --- The element that puts decoded frames there

struct DmabufExporter
{
    GstVideoFilter base;
};
struct DmabufExporterClass
{
    GstVideoFilterClass base;
};

G_DEFINE_TYPE(DmabufExporter, dmabuf_exporter, GST_TYPE_VIDEO_FILTER)

namespace {

GstCaps* transformCaps(GstBaseTransform*, GstPadDirection direction, GstCaps* caps, GstCaps* filter)
{
    GstCaps* result = gst_caps_copy(caps);
    const char* format = direction == GST_PAD_SINK ? "NV12" : "I420";
    gst_caps_set_simple(result, "format", G_TYPE_STRING, format, nullptr);
    if (filter) {
        GstCaps* wanted = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(result);
        result = wanted;
    }
    return result;
}

gboolean decideAllocation(GstBaseTransform*, GstQuery* query)
{
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps))
        return FALSE;
    const guint size = strideOf(info) * codedHeight(info) * 3 / 2;
    auto* pool = GST_BUFFER_POOL(g_object_new(dmabuf_pool_get_type(), nullptr));
    GstStructure* config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, caps, size, 0, kFrames);
    gst_buffer_pool_set_config(pool, config);
    while (gst_query_get_n_allocation_pools(query) > 0)
        gst_query_remove_nth_allocation_pool(query, 0);
    gst_query_add_allocation_pool(query, pool, size, 0, kFrames);
    gst_object_unref(pool);
    return TRUE;
}

GstFlowReturn copy(GstVideoFilter* filter, GstVideoFrame* in, GstVideoFrame* out)
{
    const auto* y = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(in, 0));
    const auto* u = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(in, 1));
    const auto* v = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(in, 2));
    auto* outY = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, 0));
    auto* outUv = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, 1));
    libyuv::I420ToNV12(
        y, GST_VIDEO_FRAME_PLANE_STRIDE(in, 0), u, GST_VIDEO_FRAME_PLANE_STRIDE(in, 1), v,
        GST_VIDEO_FRAME_PLANE_STRIDE(in, 2), outY, GST_VIDEO_FRAME_PLANE_STRIDE(out, 0), outUv,
        GST_VIDEO_FRAME_PLANE_STRIDE(out, 1), filter->in_info.width, filter->in_info.height);
    return GST_FLOW_OK;
}

} // namespace

static void dmabuf_exporter_class_init(DmabufExporterClass* klass)
{
    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    gst_element_class_add_static_pad_template(element, &s_SinkTemplate);
    gst_element_class_add_static_pad_template(element, &s_SourceTemplate);
    gst_element_class_set_static_metadata(element, "DMABUF exporter", "Filter/Video",
                                          "Puts frames into DMABUFs", "quadplayer");
    GST_BASE_TRANSFORM_CLASS(klass)->transform_caps = transformCaps;
    GST_BASE_TRANSFORM_CLASS(klass)->decide_allocation = decideAllocation;
    klass->base.transform_frame = copy;
}

static void dmabuf_exporter_init(DmabufExporter*) {}

GstElement* newFrameExporter()
{
    return GST_ELEMENT(g_object_new(dmabuf_exporter_get_type(), nullptr));
}
