// The element that stands in for the hardware decoder's output: copies decoded I420 or NV12 frames
// into a fixed number of frames of video memory (FramePool), tightly packed and of even size, and
// waits when all are out.
//
// Threads: the streaming thread runs everything but frameExporterInterrupt(), which any thread may
// call. Every wait ends at flush-start and when the element goes down from PAUSED. End of stream is
// held until the last frame has been looked at: without it a silent clip, which is decoded far
// ahead of its picture, would lose its last frames.
#pragma once

#include <gst/gst.h>

GType quadplayer_frame_exporter_get_type();

// A floating reference.
GstElement* makeFrameExporter();

// Ends the waits, those to come included, until the element comes up or the flush ends.
void frameExporterInterrupt(GstElement* exporter);
