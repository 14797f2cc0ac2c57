#include "platform/open/PhysBlock.h"

#include <cstdlib>
#include <map>
#include <mutex>

namespace {

// Room between blocks and where they start; a multiple of what SIMD code likes.
constexpr size_t kAlignment = 64;
constexpr uint32_t kPage = 4096;

// Never 0 and never all ones, which mean "none" where a physical address is expected.
constexpr uint32_t kLowest = 0x10000000;
constexpr uint32_t kHighest = 0xF0000000;

size_t roundedUp(size_t size, size_t step)
{
    return (size + step - 1) / step * step;
}

// Hands out physical addresses and remembers whose they are.
class AddressSpace
{
public:
    uint32_t claim(size_t size);
    void publish(uint32_t physical, const std::shared_ptr<PhysBlock>& block);
    void release(uint32_t physical);
    std::shared_ptr<PhysBlock> find(uint32_t physical);

private:
    struct Entry
    {
        uint64_t end;
        std::weak_ptr<PhysBlock> block;
    };

    uint32_t nextFree(uint64_t length);

    std::mutex m_Mutex; // guards what follows
    std::map<uint32_t, Entry> m_mapEntries;
    uint32_t m_nNext = kLowest;
};

// Addresses are used again as late as possible, so that one kept too long finds nothing instead
// of somebody else's picture.
uint32_t AddressSpace::nextFree(uint64_t length)
{
    uint64_t start = m_nNext;
    for (bool wrapped = false;;) {
        if (start + length > kHighest) {
            if (wrapped)
                return 0;
            wrapped = true;
            start = kLowest;
        }
        auto above = m_mapEntries.lower_bound(static_cast<uint32_t>(start));
        const bool runsInto = above != m_mapEntries.end() && above->first < start + length;
        if (runsInto) {
            start = above->second.end;
        } else if (above != m_mapEntries.begin() && std::prev(above)->second.end > start) {
            start = std::prev(above)->second.end;
        } else {
            return static_cast<uint32_t>(start);
        }
    }
}

uint32_t AddressSpace::claim(size_t size)
{
    const uint64_t length = roundedUp(size, kPage);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const uint32_t physical = nextFree(length);
    if (physical != 0) {
        m_mapEntries[physical].end = physical + length;
        m_nNext = static_cast<uint32_t>(physical + length);
    }
    return physical;
}

void AddressSpace::publish(uint32_t physical, const std::shared_ptr<PhysBlock>& block)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_mapEntries[physical].block = block;
}

void AddressSpace::release(uint32_t physical)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_mapEntries.erase(physical);
}

std::shared_ptr<PhysBlock> AddressSpace::find(uint32_t physical)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    auto entry = m_mapEntries.find(physical);
    return entry == m_mapEntries.end() ? nullptr : entry->second.block.lock();
}

// Never destroyed: blocks may outlive every static object.
AddressSpace& addressSpace()
{
    static auto* space = new AddressSpace;
    return *space;
}

} // namespace

std::shared_ptr<PhysBlock> PhysBlock::make(size_t size)
{
    auto* data =
        static_cast<unsigned char*>(std::aligned_alloc(kAlignment, roundedUp(size, kAlignment)));
    if (!data)
        return nullptr;
    std::shared_ptr<PhysBlock> block(new PhysBlock(data, size));
    if (block->physical() == 0)
        return nullptr;
    addressSpace().publish(block->physical(), block);
    return block;
}

std::shared_ptr<PhysBlock> PhysBlock::find(uint32_t physical)
{
    return addressSpace().find(physical);
}

PhysBlock::PhysBlock(unsigned char* data, size_t size)
    : m_Descriptor{data, addressSpace().claim(size)}, m_nSize(size)
{
}

PhysBlock::~PhysBlock()
{
    addressSpace().release(physical());
    std::free(m_Descriptor.vaddr);
}
