// The platform's part in the way of a frame from playbin to the appsink. The engine relies on this:
// - The engine stores frames without a limit, so the platform bounds them: with a few of them out,
//   at least four, whoever wants one more waits until one comes back.
// - Every wait in the platform ends at once when the pipeline goes down or is flushed, because the
//   frames that are out come back only after that.
// - A frame counts as shown when its buffer has been mapped and unmapped, which the engine also
//   does with a frame that it drops; a frame that a flush releases counts as shown, too.
// - The end of stream reaches the appsink after the last frame has been shown.
#pragma once

#include <gst/gst.h>

// Prepares the video path of `playbin`, once, after its video sink is set and while it is in NULL
// state; GUI thread. Open systems: puts the frame exporter in as "video-filter". Device: nothing,
// because the hardware decoder delivers physical memory by itself. The caller keeps `playbin`, and
// what is put in goes with it.
void preparePlatformVideoPath(GstElement* playbin);
