#include "platform/open/copied/FrameCopy.h"

#include "platform/open/MappedPlane.h"

#include <cstring>

#include <libyuv.h>

namespace {

// The colour plane is complete: decoders round half of an odd size up.
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

bool copyAsTightNv12(GstBuffer* buffer, const FrameLayout& layout, unsigned char* out)
{
    const int outStride = evenSize(layout.width);
    unsigned char* colours = out + static_cast<size_t>(outStride) * evenSize(layout.height);
    const MappedPlane y(buffer, layout.planes[0]);
    const MappedPlane u(buffer, layout.planes[1]);
    const MappedPlane v(buffer, layout.planes[2]);
    if (!y.data() || !u.data())
        return false;
    if (layout.format == GST_VIDEO_FORMAT_NV12) {
        libyuv::NV12Copy(y.data(), y.stride(), u.data(), u.stride(), out, outStride, colours,
                         outStride, layout.width, layout.height);
    } else if (v.data()) {
        libyuv::I420ToNV12(y.data(), y.stride(), u.data(), u.stride(), v.data(), v.stride(), out,
                           outStride, colours, outStride, layout.width, layout.height);
    } else {
        return false;
    }
    repeatLumaEdges(out, layout.width, layout.height);
    return true;
}
