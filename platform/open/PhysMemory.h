// GStreamer memory that lies in one PhysBlock; gst_buffer_is_phymem() recognises it. Any thread.
#pragma once

#include "platform/open/PhysBlock.h"

#include <functional>

#include <gst/gst.h>

// Wraps a block. `onUnmapped` is called after every unmapping, in the thread that unmaps; both go
// with the last reference to the memory.
GstMemory* newPhysMemory(std::shared_ptr<PhysBlock> block, std::function<void()> onUnmapped = {});
