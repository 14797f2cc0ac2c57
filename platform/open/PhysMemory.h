// GstMemory around a PhysFrame, which gst_buffer_is_phymem() recognises. Mapping it only returns
// the frame's virtual address. Any thread.
#pragma once

#include "platform/open/PhysFrame.h"

#include <functional>

#include <gst/gst.h>

// `size` is the number of bytes at the frame's virtual address. `onUnmapped` runs after every
// unmap, in the thread that unmaps. The memory owns the frame and the function.
GstMemory* newPhysMemory(std::shared_ptr<PhysFrame> frame, size_t size,
                         std::function<void()> onUnmapped = {});
