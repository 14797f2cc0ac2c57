// Reuses blocks of one size, because the kernel has to clear every page of a new one. A block that
// is out when the store is deleted is freed by its last user. Any thread.
#pragma once

#include "platform/open/copied/PhysBlock.h"

#include <mutex>
#include <vector>

class BlockStore : public std::enable_shared_from_this<BlockStore>
{
public:
    explicit BlockStore(size_t blockSize) : m_nBlockSize(blockSize) {}

    // The block comes back when its last reference goes. Null if there is no memory.
    std::shared_ptr<PhysBlock> take();

private:
    const size_t m_nBlockSize;
    std::mutex m_Mutex; // guards m_vecUnused
    std::vector<std::shared_ptr<PhysBlock>> m_vecUnused;
};
