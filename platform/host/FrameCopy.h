// From a decoded picture to the decoder's own layout: tightly packed NV12 of even size.
#pragma once

#include <cstddef>

#include <gst/video/video.h>

int roundUpToEven(int pixels);

// Bytes of an NV12 frame of this even size without any padding.
size_t nv12Size(int width, int height);

// Copies an I420 or NV12 picture; where its size is odd the last column and row are repeated.
void copyToNv12(const GstVideoFrame& source, unsigned char* target);
