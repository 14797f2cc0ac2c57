#include "platform/host/FrameCopy.h"

#include <cstring>

#include <libyuv.h>

namespace {

struct Plane
{
    const unsigned char* data;
    int stride;
};

Plane plane(const GstVideoFrame& frame, guint index)
{
    return {static_cast<const unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, index)),
            GST_VIDEO_FRAME_PLANE_STRIDE(&frame, index)};
}

void copyLuma(const GstVideoFrame& source, unsigned char* target, int stride)
{
    const int width = GST_VIDEO_FRAME_WIDTH(&source);
    const int height = GST_VIDEO_FRAME_HEIGHT(&source);
    const Plane luma = plane(source, 0);
    libyuv::CopyPlane(luma.data, luma.stride, target, stride, width, height);
    if (width % 2 != 0) {
        for (int row = 0; row < height; ++row)
            target[row * stride + width] = target[row * stride + width - 1];
    }
    if (height % 2 != 0)
        std::memcpy(target + static_cast<size_t>(height) * stride,
                    target + static_cast<size_t>(height - 1) * stride, stride);
}

// Both layouts hold (width + 1) / 2 by (height + 1) / 2 pairs, as the target does.
void copyChroma(const GstVideoFrame& source, unsigned char* target, int stride, int rows)
{
    const Plane first = plane(source, 1);
    if (GST_VIDEO_FRAME_FORMAT(&source) == GST_VIDEO_FORMAT_NV12) {
        libyuv::CopyPlane(first.data, first.stride, target, stride, stride, rows);
        return;
    }
    const Plane second = plane(source, 2);
    libyuv::MergeUVPlane(first.data, first.stride, second.data, second.stride, target, stride,
                         stride / 2, rows);
}

} // namespace

int roundUpToEven(int pixels)
{
    return (pixels + 1) & ~1;
}

size_t nv12Size(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height) * 3 / 2;
}

void copyToNv12(const GstVideoFrame& source, unsigned char* target)
{
    const int width = roundUpToEven(GST_VIDEO_FRAME_WIDTH(&source));
    const int height = roundUpToEven(GST_VIDEO_FRAME_HEIGHT(&source));
    copyLuma(source, target, width);
    copyChroma(source, target + static_cast<size_t>(width) * height, width, height / 2);
}
