// One block of memory that the device would see as physically contiguous: a virtual address and a
// made-up 32-bit physical one, for the host's processes know no real ones. It can be found by its
// physical address for as long as it lives. Any thread.
#pragma once

#include "platform/phymem.h"

#include <cstddef>
#include <cstdint>
#include <memory>

class PhysBlock
{
public:
    // Null when the memory is gone.
    static std::shared_ptr<PhysBlock> make(size_t size);

    // The block at this physical address, kept alive by what is returned; null: none there.
    static std::shared_ptr<PhysBlock> find(uint32_t physical);

    ~PhysBlock();
    PhysBlock(const PhysBlock&) = delete;
    PhysBlock& operator=(const PhysBlock&) = delete;

    size_t size() const { return m_nSize; }
    unsigned char* data() const { return m_Descriptor.vaddr; }
    uint32_t physical() const { return static_cast<uint32_t>(m_Descriptor.paddr); }
    PhyMemBlock* descriptor() { return &m_Descriptor; }

private:
    PhysBlock(unsigned char* data, size_t size);

    PhyMemBlock m_Descriptor;
    const size_t m_nSize;
};
