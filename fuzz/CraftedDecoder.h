// Lets the fuzzer play the decoder: a file that begins with the line "crafted" lists frames, and
// playbin decodes it to just these, with the caps, metas and times that it says. One frame a line:
//   FORMAT WIDTH HEIGHT FPS BYTES SPLIT TIME DURATION [FORMAT WIDTH HEIGHT PLANES STRIDE OFFSET...]
// BYTES is the buffer's size, SPLIT where a second memory begins (0: one memory), times are in ns
// (-1: none), and what follows is the video meta. A line "segment START" begins a segment.
#pragma once

// After gst_init(), once.
void registerCraftedDecoder();
