#include "platform/VideoPath.h"

// The hardware decoder delivers physical memory by itself.
void preparePlatformVideoPath(GstElement*) {}
