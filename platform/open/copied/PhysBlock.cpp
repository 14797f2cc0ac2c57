#include "platform/open/copied/PhysBlock.h"

#include <cstdlib>

namespace {

constexpr size_t kAlignment = 64; // for SIMD code

size_t roundedUp(size_t size)
{
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

} // namespace

std::shared_ptr<PhysBlock> PhysBlock::make(size_t size)
{
    auto* data = static_cast<unsigned char*>(std::aligned_alloc(kAlignment, roundedUp(size)));
    return std::shared_ptr<PhysBlock>(data ? new PhysBlock(data, size) : nullptr);
}

PhysBlock::PhysBlock(unsigned char* data, size_t size) : PhysFrame(data), m_nSize(size) {}

PhysBlock::~PhysBlock()
{
    std::free(data());
}

bool PhysBlock::map(int width, int height, GLenum format, Picture* picture)
{
    *picture = tightPicture(width, height, format, data());
    picture->colours = colours();
    return m_nSize >= tightBytes(width, height, format);
}

std::string PhysBlock::way() const
{
    return "copied (the decoder delivers no NV12 in DMABUFs)";
}
