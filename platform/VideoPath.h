// What a platform must do to playbin before frames reach the appsink in physical memory.
#pragma once

#include <gst/gst.h>

// Prepares the video path of `playbin`, once, after its video sink is set and while it is in
// NULL state; GUI thread. Host: puts the frame exporter in as "video-filter". Device: nothing,
// the hardware decoder delivers physical memory by itself. `playbin` stays the caller's; what is
// put in goes with it.
void preparePlatformVideoPath(GstElement* playbin);
