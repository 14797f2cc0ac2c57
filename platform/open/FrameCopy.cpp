#include "platform/open/FrameCopy.h"

#include <cstring>

#include <libyuv.h>

namespace {

const uint8_t* plane(const GstVideoFrame& frame, int index)
{
    return static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, index));
}

int stride(const GstVideoFrame& frame, int index)
{
    return GST_VIDEO_FRAME_PLANE_STRIDE(&frame, index);
}

// Colours need no repeating: a picture of odd size has half of them, rounded up.
void repeatLumaEdges(unsigned char* luma, int width, int height)
{
    const ptrdiff_t stride = evenSize(width);
    if (stride != width) {
        for (unsigned char* row = luma; row != luma + stride * height; row += stride)
            row[width] = row[width - 1];
    }
    if (evenSize(height) != height)
        std::memcpy(luma + stride * height, luma + stride * (height - 1), stride);
}

} // namespace

void copyAsTightNv12(const GstVideoFrame& frame, unsigned char* out)
{
    const int width = GST_VIDEO_FRAME_WIDTH(&frame);
    const int height = GST_VIDEO_FRAME_HEIGHT(&frame);
    const int outStride = evenSize(width);
    unsigned char* colours = out + static_cast<size_t>(outStride) * evenSize(height);
    if (GST_VIDEO_FRAME_FORMAT(&frame) == GST_VIDEO_FORMAT_NV12) {
        libyuv::NV12Copy(plane(frame, 0), stride(frame, 0), plane(frame, 1), stride(frame, 1), out,
                         outStride, colours, outStride, width, height);
    } else {
        libyuv::I420ToNV12(plane(frame, 0), stride(frame, 0), plane(frame, 1), stride(frame, 1),
                           plane(frame, 2), stride(frame, 2), out, outStride, colours, outStride,
                           width, height);
    }
    repeatLumaEdges(out, width, height);
}
