// GStreamer memory in blocks of a frame pool: what gst_buffer_is_phymem() recognises.
#pragma once

#include "platform/host/FramePool.h"

#include <memory>

#include <gst/gst.h>

// Wraps a block of the pool; it goes back when the memory's last user lets go. Mapping and
// unmapping it reports to the pool that it has been looked at.
GstMemory* wrapPhysBlock(std::shared_ptr<FramePool> pool, std::unique_ptr<PhysBlock> block);
