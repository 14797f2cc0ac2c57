// Blocks of one size, used again and again: of each new one, the kernel would have to clear all
// pages. What is out when the store goes is freed by its last user. Any thread.
#pragma once

#include "platform/open/copied/PhysBlock.h"

#include <mutex>
#include <vector>

class BlockStore : public std::enable_shared_from_this<BlockStore>
{
public:
    explicit BlockStore(size_t blockSize) : m_nBlockSize(blockSize) {}

    // Comes back with the last reference to it. Null when there is no memory.
    std::shared_ptr<PhysBlock> take();

private:
    const size_t m_nBlockSize;
    std::mutex m_Mutex; // guards m_vecUnused
    std::vector<std::shared_ptr<PhysBlock>> m_vecUnused;
};
