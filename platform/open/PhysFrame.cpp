#include "platform/open/PhysFrame.h"

#include <map>
#include <mutex>

namespace {

// Not 0 and not all ones, which mean "no physical address" in the program.
constexpr uint32_t kLowest = 1;
constexpr uint32_t kHighest = 0xFFFFFFFE;

struct AddressSpace
{
    uint32_t claim(PhysFrame* frame);

    std::mutex mutex; // guards what follows
    std::map<uint32_t, PhysFrame*> frames;
    uint32_t last = kLowest - 1;
};

// Reuse addresses as late as possible: a stale one should find no frame, not another picture.
uint32_t AddressSpace::claim(PhysFrame* frame)
{
    const std::lock_guard<std::mutex> lock(mutex);
    do
        last = last < kHighest ? last + 1 : kLowest;
    while (!frames.emplace(last, frame).second);
    return last;
}

// Never destroyed, because frames may outlive every static object.
AddressSpace& addressSpace()
{
    static auto* space = new AddressSpace;
    return *space;
}

} // namespace

std::shared_ptr<PhysFrame> PhysFrame::find(uint32_t physical)
{
    AddressSpace& space = addressSpace();
    const std::lock_guard<std::mutex> lock(space.mutex);
    const auto found = space.frames.find(physical);
    return found == space.frames.end() ? nullptr : found->second->weak_from_this().lock();
}

PhysFrame::PhysFrame(unsigned char* vaddr) : m_Descriptor{vaddr, addressSpace().claim(this)} {}

PhysFrame::~PhysFrame()
{
    AddressSpace& space = addressSpace();
    const std::lock_guard<std::mutex> lock(space.mutex);
    space.frames.erase(physical());
}
