#include "platform/host/PhysBlock.h"

#include <map>
#include <mutex>

namespace {

// The made-up address space: whole pages between these two.
constexpr uint32_t kPage = 4096;
constexpr uint32_t kFirst = 0x10000000;
constexpr uint32_t kEnd = 0xF0000000;

struct Entry
{
    uint32_t pages;
    unsigned char* data;
};

struct Registry
{
    std::mutex mutex;
    std::map<uint32_t, Entry> blocks; // by physical address, under mutex
    uint32_t next = kFirst;           // under mutex
};

// Never destroyed: a frame may outlive every static object.
Registry& registry()
{
    static auto* instance = new Registry;
    return *instance;
}

uint32_t pagesFor(size_t size)
{
    return static_cast<uint32_t>((size + kPage - 1) / kPage);
}

// Called locked. Goes round the address space, so that an address is not used again soon: a stale
// one then finds nothing instead of another frame.
uint32_t freeAddress(const Registry& all, uint32_t pages)
{
    uint32_t start = all.next;
    for (const auto& [address, entry] : all.blocks) {
        if (address + entry.pages * kPage > start && address < start + pages * kPage)
            start = address + entry.pages * kPage;
    }
    return start + pages * kPage < kEnd ? start : kFirst;
}

} // namespace

PhysBlock::PhysBlock(size_t size) : m_size(size), m_data(new unsigned char[size]), m_physical(0)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const uint32_t pages = pagesFor(size);
    m_physical = freeAddress(all, pages);
    all.blocks[m_physical] = {pages, m_data.get()};
    all.next = m_physical + pages * kPage;
}

PhysBlock::~PhysBlock()
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.blocks.erase(m_physical);
}

unsigned char* PhysBlock::find(uint32_t physical)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto found = all.blocks.find(physical);
    return found == all.blocks.end() ? nullptr : found->second.data;
}
