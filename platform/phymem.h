// The two functions of the device's GStreamer buffer library that the frame pump calls. Any thread
// that holds a reference to the buffer.
#pragma once

#include <gst/gst.h>

extern "C" {

// Start of the library's block descriptor; what follows in it is the library's own.
struct PhyMemBlock
{
    unsigned char* vaddr; // virtual address of the block
    unsigned long paddr;  // physical address of the block; 32 bits wide on the device
};

// TRUE when the buffer's memory is one physically contiguous block.
gboolean gst_buffer_is_phymem(GstBuffer* buffer);

// The block of a buffer for which gst_buffer_is_phymem() holds; it lives as long as the buffer.
PhyMemBlock* gst_buffer_query_phymem_block(GstBuffer* buffer);
}
