// The stand-in for the hardware decoder's output: an element that copies decoded I420 or NV12
// frames into the few frames of physical memory that there are, and waits when all are out.
// It holds the end of the stream back until the last frame has been shown, and makes presentation
// times rise. Its pads carry system memory in and NV12 of even size, without gaps, out.
#pragma once

#include <gst/gst.h>

// A floating reference, as from gst_element_factory_make().
GstElement* newFrameExporter();
