// A frame in a block of ordinary memory, without gaps between its rows. Any thread.
#pragma once

#include "platform/open/PhysFrame.h"

class PhysBlock : public PhysFrame
{
public:
    // Null if there is no memory.
    static std::shared_ptr<PhysBlock> make(size_t size);

    ~PhysBlock() override;

    size_t size() const { return m_nSize; }
    unsigned char* data() { return descriptor()->vaddr; }

    bool map(int width, int height, GLenum format, Picture* picture) override;
    std::string way() const override;

private:
    PhysBlock(unsigned char* data, size_t size);

    const size_t m_nSize;
};
