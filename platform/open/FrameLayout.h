// Where the picture lies in a decoded buffer. Caps and metas may contradict each other or the
// buffer, so they are checked here: who reads by this layout stays within the buffer.
#pragma once

#include "platform/open/Colours.h"

#include <gst/video/video.h>

#include <optional>

struct FrameLayout
{
    struct Plane
    {
        gsize offset = 0; // of the picture's first byte, from the start of the buffer
        gsize bytes = 0;  // from there to the end of the picture's last row
        int stride = 0;   // from row to row, in bytes
    };

    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
    int width = 0; // of the picture, from the caps
    int height = 0;
    int codedWidth = 0; // of the whole frame, which may be larger
    int codedHeight = 0;
    Plane planes[GST_VIDEO_MAX_PLANES];
};

// The video meta says where the planes lie, the crop meta where the picture begins. Empty if they
// contradict the caps or point outside the buffer.
std::optional<FrameLayout> frameLayoutOf(GstBuffer* buffer, const GstVideoInfo& caps);

// Reads the colorimetry. Without one, pictures of 720 lines and more are BT.709, smaller ones
// BT.601, and the range is limited. JPEG decoders always give one, with full range.
Colours coloursOf(GstCaps* caps);
