#include "platform/open/FrameLayout.h"

namespace {

constexpr int kHdLines = 720;

bool agrees(const GstVideoMeta& meta, const GstVideoInfo& caps)
{
    return meta.format == GST_VIDEO_INFO_FORMAT(&caps) &&
           meta.n_planes == GST_VIDEO_INFO_N_PLANES(&caps);
}

bool isPartOf(const FrameLayout& layout, const GstVideoCropMeta& picture)
{
    const auto width = static_cast<guint>(layout.width);
    const auto height = static_cast<guint>(layout.height);
    const auto codedWidth = static_cast<guint>(layout.codedWidth);
    const auto codedHeight = static_cast<guint>(layout.codedHeight);
    return picture.width >= width && picture.height >= height && codedWidth >= width &&
           codedHeight >= height && picture.x <= codedWidth - width &&
           picture.y <= codedHeight - height;
}

// Moves the plane's start to the picture's. False if the picture needs more than `available` bytes.
// Computed in 64 bits, which no size and stride can overflow.
bool place(FrameLayout::Plane& plane, const GstVideoFormatInfo* format, int component, int width,
           int height, const GstVideoCropMeta& picture, guint64 available)
{
    const guint64 pixelBytes = GST_VIDEO_FORMAT_INFO_PSTRIDE(format, component);
    const guint64 rowBytes =
        GST_VIDEO_FORMAT_INFO_SCALE_WIDTH(format, component, width) * pixelBytes;
    const guint64 rows = GST_VIDEO_FORMAT_INFO_SCALE_HEIGHT(format, component, height);
    const guint64 left = (picture.x >> GST_VIDEO_FORMAT_INFO_W_SUB(format, component)) * pixelBytes;
    const guint64 top = picture.y >> GST_VIDEO_FORMAT_INFO_H_SUB(format, component);
    if (plane.stride <= 0 || static_cast<guint64>(plane.stride) < rowBytes)
        return false;
    const auto stride = static_cast<guint64>(plane.stride);
    const guint64 skipped = top * stride + left;
    const guint64 bytes = (rows - 1) * stride + rowBytes;
    if (plane.offset > available || skipped + bytes > available - plane.offset)
        return false;
    plane.offset += static_cast<gsize>(skipped);
    plane.bytes = static_cast<gsize>(bytes);
    return true;
}

Colours::Matrix matrixOf(GstVideoColorMatrix said, int height)
{
    switch (said) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
    case GST_VIDEO_COLOR_MATRIX_FCC:
        return Colours::Bt601;
    case GST_VIDEO_COLOR_MATRIX_BT709:
    case GST_VIDEO_COLOR_MATRIX_SMPTE240M:
        return Colours::Bt709;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
        return Colours::Bt2020;
    default:
        return height >= kHdLines ? Colours::Bt709 : Colours::Bt601;
    }
}

} // namespace

std::optional<FrameLayout> frameLayoutOf(GstBuffer* buffer, const GstVideoInfo& caps)
{
    const GstVideoMeta* meta = gst_buffer_get_video_meta(buffer);
    if (meta && !agrees(*meta, caps))
        return {};
    FrameLayout layout;
    layout.format = GST_VIDEO_INFO_FORMAT(&caps);
    layout.width = GST_VIDEO_INFO_WIDTH(&caps);
    layout.height = GST_VIDEO_INFO_HEIGHT(&caps);
    layout.codedWidth = meta ? static_cast<int>(meta->width) : layout.width;
    layout.codedHeight = meta ? static_cast<int>(meta->height) : layout.height;

    GstVideoCropMeta picture = {};
    picture.width = static_cast<guint>(layout.width);
    picture.height = static_cast<guint>(layout.height);
    if (const GstVideoCropMeta* crop = gst_buffer_get_video_crop_meta(buffer))
        picture = *crop;
    if (!isPartOf(layout, picture))
        return {};
    // In NV12 and I420, plane n begins with component n.
    for (guint i = 0; i < GST_VIDEO_INFO_N_PLANES(&caps); ++i) {
        FrameLayout::Plane& plane = layout.planes[i];
        plane.offset = meta ? meta->offset[i] : GST_VIDEO_INFO_PLANE_OFFSET(&caps, i);
        plane.stride = meta ? meta->stride[i] : GST_VIDEO_INFO_PLANE_STRIDE(&caps, i);
        if (!place(plane, caps.finfo, static_cast<int>(i), layout.width, layout.height, picture,
                   gst_buffer_get_size(buffer)))
            return {};
    }
    return layout;
}

// GstVideoInfo fills in a guess where the caps have no colorimetry, so read the caps.
Colours coloursOf(GstCaps* caps)
{
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    int height = 0;
    gst_structure_get_int(structure, "height", &height);
    GstVideoColorimetry said = {};
    if (const char* text = gst_structure_get_string(structure, "colorimetry"))
        gst_video_colorimetry_from_string(&said, text);
    return {matrixOf(said.matrix, height), said.range == GST_VIDEO_COLOR_RANGE_0_255};
}
