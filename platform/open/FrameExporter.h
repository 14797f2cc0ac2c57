// The element in front of the appsink, in place of a hardware decoder's output: it hands on frames
// in physical memory, at most FramePool::kFrames at a time, and waits when all are out. Decoded
// I420 or NV12 frames are copied. It holds the end of the stream back until the last frame has been
// shown, and makes presentation times rise. Its pads carry system memory in and NV12 of even size,
// without gaps, out.
#pragma once

#include <gst/gst.h>

// A floating reference, as from gst_element_factory_make().
GstElement* newFrameExporter();
