// Copies a decoded picture into the hardware decoder's layout: NV12, even sizes, no gaps.
#pragma once

#include "platform/open/FrameLayout.h"

// Rounded up, because two by two pixels of NV12 share one colour.
constexpr int evenSize(int size)
{
    return size + size % 2;
}

constexpr size_t tightNv12Size(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height) * 3 / 2;
}

// `layout` is that of `buffer`, I420 or NV12; `out` has room for tightNv12Size() of the even size.
// Repeats the last column or row where a size was rounded up. False if the buffer cannot be mapped.
bool copyAsTightNv12(GstBuffer* buffer, const FrameLayout& layout, unsigned char* out);
