// Stand-in for physically contiguous memory: a block with a virtual address and a made-up 32-bit
// physical one, by which the direct textures find it. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

class PhysBlock
{
public:
    explicit PhysBlock(size_t size); // bytes
    ~PhysBlock();
    PhysBlock(const PhysBlock&) = delete;
    PhysBlock& operator=(const PhysBlock&) = delete;

    unsigned char* data() const { return m_data.get(); }
    size_t size() const { return m_size; }
    uint32_t physical() const { return m_physical; } // never 0, never all ones

    // Where a living block with this physical address lies, or null.
    static unsigned char* find(uint32_t physical);

private:
    size_t m_size;
    std::unique_ptr<unsigned char[]> m_data;
    uint32_t m_physical;
};
