#include "platform/open/PhysMemory.h"

#include <atomic>
#include <utility>

namespace {

struct PhysMemory
{
    GstMemory base; // must be first: GStreamer casts to it
    std::shared_ptr<PhysFrame> frame;
    std::function<void()> onUnmapped;
    // GStreamer's reference count orders every use before the freeing, but the thread sanitizer
    // does not see it. It sees this counter, which unmapping increases and freeing reads.
    std::atomic<int> timesUnmapped{0};
};

PhysMemory* physMemory(GstMemory* memory)
{
    return reinterpret_cast<PhysMemory*>(memory);
}

} // namespace

struct QuadplayerPhysAllocator
{
    GstAllocator base;
};
struct QuadplayerPhysAllocatorClass
{
    GstAllocatorClass base;
};

G_DEFINE_TYPE(QuadplayerPhysAllocator, quadplayer_phys_allocator, GST_TYPE_ALLOCATOR)

namespace {

GstAllocator* physAllocator()
{
    // Never freed, like GStreamer's own allocators.
    static auto* allocator = GST_ALLOCATOR(
        gst_object_ref_sink(g_object_new(quadplayer_phys_allocator_get_type(), nullptr)));
    return allocator;
}

void freeMemory(GstAllocator*, GstMemory* memory)
{
    static_cast<void>(physMemory(memory)->timesUnmapped.load());
    delete physMemory(memory);
}

gpointer mapMemory(GstMemory* memory, gsize, GstMapFlags)
{
    return physMemory(memory)->frame->descriptor()->vaddr;
}

void unmapMemory(GstMemory* memory)
{
    if (physMemory(memory)->onUnmapped)
        physMemory(memory)->onUnmapped();
    physMemory(memory)->timesUnmapped++;
}

GstMemory* physMemoryOf(GstBuffer* buffer)
{
    if (!buffer || gst_buffer_n_memory(buffer) != 1)
        return nullptr;
    GstMemory* memory = gst_buffer_peek_memory(buffer, 0);
    return memory->allocator == physAllocator() ? memory : nullptr;
}

} // namespace

static void quadplayer_phys_allocator_class_init(QuadplayerPhysAllocatorClass* klass)
{
    klass->base.free = freeMemory;
}

static void quadplayer_phys_allocator_init(QuadplayerPhysAllocator* allocator)
{
    allocator->base.mem_type = "QuadplayerPhysicalMemory";
    allocator->base.mem_map = mapMemory;
    allocator->base.mem_unmap = unmapMemory;
    GST_OBJECT_FLAG_SET(allocator, GST_ALLOCATOR_FLAG_CUSTOM_ALLOC);
}

GstMemory* newPhysMemory(std::shared_ptr<PhysFrame> frame, size_t size,
                         std::function<void()> onUnmapped)
{
    auto* memory = new PhysMemory{{}, std::move(frame), std::move(onUnmapped), {}};
    // No sharing: a part of a frame has no physical address of its own.
    gst_memory_init(&memory->base, GST_MEMORY_FLAG_NO_SHARE, physAllocator(), nullptr, size, 0, 0,
                    size);
    return &memory->base;
}

gboolean gst_buffer_is_phymem(GstBuffer* buffer)
{
    return physMemoryOf(buffer) ? TRUE : FALSE;
}

PhyMemBlock* gst_buffer_query_phymem_block(GstBuffer* buffer)
{
    GstMemory* memory = physMemoryOf(buffer);
    return memory ? physMemory(memory)->frame->descriptor() : nullptr;
}
