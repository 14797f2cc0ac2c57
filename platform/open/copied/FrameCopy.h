// Writes a decoded picture as the hardware decoder would: NV12, rows without gaps, even sizes.
#pragma once

#include "platform/open/FrameLayout.h"

// Sizes are rounded up to even, because four luma pixels share one colour.
constexpr int evenSize(int size)
{
    return size + size % 2;
}

constexpr size_t tightNv12Size(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height) * 3 / 2;
}

// `layout` is that of `buffer`, I420 or NV12; `out` has room for tightNv12Size() of the even size.
// Edges are repeated where a size was rounded up. False: the buffer cannot be mapped.
bool copyAsTightNv12(GstBuffer* buffer, const FrameLayout& layout, unsigned char* out);
