// Where the picture lies in a decoded buffer. It is made from the caps and the buffer's metas, and
// checked: whoever reads by it stays within the buffer, whatever a decoder says.
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
    int width = 0; // of the picture: what the caps say
    int height = 0;
    int codedWidth = 0; // of the frame that the picture is a part of
    int codedHeight = 0;
    Plane planes[GST_VIDEO_MAX_PLANES];
};

// Of a buffer with these caps: the video meta says where planes lie, the crop meta where the
// picture begins. Nothing when they contradict the caps or lead out of the buffer.
std::optional<FrameLayout> frameLayoutOf(GstBuffer* buffer, const GstVideoInfo& caps);

// What the stream says; where it says nothing, BT.709 from 720 lines on and BT.601 below, and the
// limited range. JPEG decoders do say that theirs is the full one.
Colours coloursOf(GstCaps* caps);
