// The two functions of the device's GStreamer buffer library that the frame pump calls. Any thread
// may call them, with a reference to the buffer.
#pragma once

#include <gst/gst.h>

extern "C" {

// Start of the library's block descriptor. More fields follow, which only the library uses.
struct PhyMemBlock
{
    unsigned char* vaddr; // virtual address of the block
    unsigned long paddr;  // physical address of the block; 32 bits wide on the device
};

// TRUE if the buffer's memory is one physically contiguous block.
gboolean gst_buffer_is_phymem(GstBuffer* buffer);

// The block of a buffer in physical memory. It lives as long as the buffer.
PhyMemBlock* gst_buffer_query_phymem_block(GstBuffer* buffer);
}
