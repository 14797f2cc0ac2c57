#include "platform/host/PhysMemory.h"

#include "player/phymem.h"

namespace {

constexpr char kMemoryType[] = "QuadplayerPhysMemory";

struct PhysMemory
{
    GstMemory base; // first: GStreamer sees the whole as this
    std::unique_ptr<PhysBlock> block;
    std::shared_ptr<FramePool> pool;
    PhyMemBlock descriptor;
};

PhysMemory* physMemory(GstMemory* memory)
{
    return reinterpret_cast<PhysMemory*>(memory);
}

gpointer mapMemory(GstMemory* memory, gsize /*maxSize*/, GstMapFlags /*flags*/)
{
    return physMemory(memory)->block->data();
}

void unmapMemory(GstMemory* memory)
{
    const PhysMemory* phys = physMemory(memory);
    phys->pool->setShown(phys->block->physical());
}

void freeMemory(GstAllocator* /*allocator*/, GstMemory* memory)
{
    PhysMemory* phys = physMemory(memory);
    phys->pool->giveBack(std::move(phys->block));
    delete phys;
}

} // namespace

struct QuadplayerPhysAllocator
{
    GstAllocator parent;
};

struct QuadplayerPhysAllocatorClass
{
    GstAllocatorClass parent_class;
};

G_DEFINE_TYPE(QuadplayerPhysAllocator, quadplayer_phys_allocator, GST_TYPE_ALLOCATOR)

static void quadplayer_phys_allocator_class_init(QuadplayerPhysAllocatorClass* klass)
{
    klass->parent_class.free = freeMemory;
}

static void quadplayer_phys_allocator_init(QuadplayerPhysAllocator* allocator)
{
    GstAllocator* base = &allocator->parent;
    base->mem_type = kMemoryType;
    base->mem_map = mapMemory;
    base->mem_unmap = unmapMemory;
    GST_OBJECT_FLAG_SET(base, GST_ALLOCATOR_FLAG_CUSTOM_ALLOC);
}

namespace {

// One for the process: GStreamer's memories hold a reference each.
GstAllocator* allocator()
{
    static auto* instance = [] {
        auto* made =
            static_cast<GstAllocator*>(g_object_new(quadplayer_phys_allocator_get_type(), nullptr));
        gst_object_ref_sink(made);
        GST_OBJECT_FLAG_SET(made, GST_OBJECT_FLAG_MAY_BE_LEAKED);
        return made;
    }();
    return instance;
}

} // namespace

GstMemory* wrapPhysBlock(std::shared_ptr<FramePool> pool, std::unique_ptr<PhysBlock> block)
{
    const size_t size = block->size();
    auto* phys = new PhysMemory{{}, std::move(block), std::move(pool), {}};
    phys->descriptor = {phys->block->data(), phys->block->physical()};
    gst_memory_init(&phys->base, GST_MEMORY_FLAG_NO_SHARE, allocator(), nullptr, size, 0, 0, size);
    return &phys->base;
}

gboolean gst_buffer_is_phymem(GstBuffer* buffer)
{
    return gst_buffer_n_memory(buffer) == 1 &&
           gst_memory_is_type(gst_buffer_peek_memory(buffer, 0), kMemoryType);
}

PhyMemBlock* gst_buffer_query_phymem_block(GstBuffer* buffer)
{
    return &physMemory(gst_buffer_peek_memory(buffer, 0))->descriptor;
}
