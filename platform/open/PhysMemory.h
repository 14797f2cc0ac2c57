// GStreamer memory that stands for one PhysFrame; gst_buffer_is_phymem() recognises it. Mapping it
// gives the frame's virtual address and touches no pixels. Any thread.
#pragma once

#include "platform/open/PhysFrame.h"

#include <functional>

#include <gst/gst.h>

// `size` is what the frame has at its virtual address. `onUnmapped` is called after every
// unmapping, in the thread that unmaps; both go with the last reference to the memory.
GstMemory* newPhysMemory(std::shared_ptr<PhysFrame> frame, size_t size,
                         std::function<void()> onUnmapped = {});
