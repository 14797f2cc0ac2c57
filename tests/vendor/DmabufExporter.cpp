// In place of the frame exporter, it makes the test's decoder one like those of open drivers: NV12
// in DMABUFs. The converter before it takes its buffers from this pool. They are allocated on the
// display's device, because a software renderer can import no others, and sizes are rounded up as
// hardware does. There are kFrames of them, and the converter waits when all are out.
#include "platform/open/FrameExporter.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <drm.h>
#include <drm_mode.h>
#include <gst/allocators/gstdmabuf.h>
#include <gst/video/video.h>

namespace {

constexpr guint kFrames = 8;
constexpr guint kBytesPerPixel = 4; // virtio-gpu makes no other dumb buffers

// How the decoder stores a picture.
struct Storage
{
    explicit Storage(const GstCaps* caps)
    {
        GstVideoInfo picture;
        gst_video_info_from_caps(&picture, caps);
        width = GST_ROUND_UP_16(static_cast<guint>(picture.width));
        height = GST_ROUND_UP_16(static_cast<guint>(picture.height) + 1); // never the picture's
        // Wider than the coded size, so that nobody can take one for the other.
        stride = GST_ROUND_UP_64(width) + 64;
    }
    guint rows() const { return height * 3 / 2; }
    guint bytes() const { return stride * rows(); }

    guint width;
    guint height;
    guint stride;
};

// -1: there is none.
int newDumbBuffer(const Storage& storage)
{
    const int card = open("/dev/dri/card0", O_RDWR | O_CLOEXEC);
    drm_mode_create_dumb dumb = {};
    dumb.width = storage.stride / kBytesPerPixel;
    dumb.height = storage.rows();
    dumb.bpp = kBytesPerPixel * 8;
    drm_prime_handle exported = {};
    exported.fd = -1;
    if (ioctl(card, DRM_IOCTL_MODE_CREATE_DUMB, &dumb) == 0 && dumb.pitch == storage.stride) {
        exported.handle = dumb.handle;
        exported.flags = DRM_CLOEXEC | DRM_RDWR;
        ioctl(card, DRM_IOCTL_PRIME_HANDLE_TO_FD, &exported);
    }
    close(card); // takes the handle along; the buffer stays for as long as its descriptor
    return exported.fd;
}

GstFlowReturn allocBuffer(GstBufferPool* pool, GstBuffer** buffer, GstBufferPoolAcquireParams*)
{
    static GstAllocator* allocator = gst_dmabuf_allocator_new();
    GstStructure* config = gst_buffer_pool_get_config(pool);
    GstCaps* caps = nullptr;
    gst_buffer_pool_config_get_params(config, &caps, nullptr, nullptr, nullptr);
    const Storage storage(caps);
    gst_structure_free(config);
    const int fd = newDumbBuffer(storage);
    if (fd < 0)
        return GST_FLOW_ERROR;
    *buffer = gst_buffer_new();
    gst_buffer_append_memory(*buffer, gst_dmabuf_allocator_alloc(allocator, fd, storage.bytes()));
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0, static_cast<gsize>(storage.stride) * storage.height};
    const auto stride = static_cast<gint>(storage.stride);
    gint strides[GST_VIDEO_MAX_PLANES] = {stride, stride};
    gst_buffer_add_video_meta_full(*buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12,
                                   storage.width, storage.height, 2, offsets, strides);
    return GST_FLOW_OK;
}

} // namespace

using DmabufPool = GstBufferPool;
using DmabufPoolClass = GstBufferPoolClass;

G_DEFINE_TYPE(DmabufPool, dmabuf_pool, GST_TYPE_BUFFER_POOL)

static void dmabuf_pool_class_init(DmabufPoolClass* klass)
{
    klass->alloc_buffer = allocBuffer;
}

static void dmabuf_pool_init(DmabufPool*) {}

static GstPadProbeReturn offerPool(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
    if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
        return GST_PAD_PROBE_OK;
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    auto* pool = GST_BUFFER_POOL(g_object_new(dmabuf_pool_get_type(), nullptr));
    gst_query_add_allocation_pool(query, pool, Storage(caps).bytes(), 0, kFrames);
    gst_object_unref(pool);
    return GST_PAD_PROBE_HANDLED;
}

GstElement* newFrameExporter()
{
    GstElement* filter = gst_element_factory_make("capsfilter", nullptr);
    gst_util_set_object_arg(G_OBJECT(filter), "caps", "video/x-raw, format = NV12");
    GstPad* pad = gst_element_get_static_pad(filter, "sink");
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, offerPool, nullptr, nullptr);
    gst_object_unref(pad);
    return filter;
}
