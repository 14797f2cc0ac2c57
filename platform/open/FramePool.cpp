#include "platform/open/FramePool.h"

#include "platform/open/HostCounters.h"
#include "platform/open/PhysMemory.h"

#include <algorithm>

GstMemory* FramePool::take(size_t size)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Changed.wait(lock, [this] { return interrupted() || m_nOut < kFrames; });
    if (interrupted())
        return nullptr;
    const auto block = unusedBlock(size);
    return block ? handOut(block) : nullptr;
}

// Blocks of the size before are dropped here; those still out, when they come back.
std::shared_ptr<PhysBlock> FramePool::unusedBlock(size_t size)
{
    if (!m_vecUnused.empty() && m_vecUnused.back()->size() != size)
        m_vecUnused.clear();
    if (m_vecUnused.empty())
        return PhysBlock::make(size);
    auto block = m_vecUnused.back();
    m_vecUnused.pop_back();
    return block;
}

GstMemory* FramePool::handOut(const std::shared_ptr<PhysBlock>& block)
{
    ++m_nOut;
    ++hostCounters().framesOut;
    const uint64_t number = ++m_nTaken;
    const auto pool = shared_from_this();
    // The memory's reference does not delete the block but brings it back.
    const std::shared_ptr<PhysBlock> lent(
        block.get(), [pool, block, number](PhysBlock*) { pool->giveBack(block, number); });
    return newPhysMemory(lent, [pool, number] { pool->markShown(number); });
}

void FramePool::markShown(uint64_t number)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_nShown = std::max(m_nShown, number);
    m_Changed.notify_all();
}

void FramePool::giveBack(const std::shared_ptr<PhysBlock>& block, uint64_t number)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    --m_nOut;
    --hostCounters().framesOut;
    m_nShown = std::max(m_nShown, number);
    const bool fits = m_vecUnused.empty() || m_vecUnused.back()->size() == block->size();
    if (m_bActive && fits)
        m_vecUnused.push_back(block);
    m_Changed.notify_all();
}

bool FramePool::waitUntilShown(std::chrono::nanoseconds patience, std::chrono::nanoseconds stay)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    bool moves = true;
    while (moves && !interrupted() && m_nShown < m_nTaken)
        moves = waitForChange(lock, patience);
    return !m_Changed.wait_for(lock, stay, [this] { return interrupted(); });
}

bool FramePool::waitForChange(std::unique_lock<std::mutex>& lock, std::chrono::nanoseconds patience)
{
    if (m_bPlaying)
        return m_Changed.wait_for(lock, patience) == std::cv_status::no_timeout;
    m_Changed.wait(lock);
    return true;
}

void FramePool::setActive(bool active)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_bActive = active;
    m_bFlushing = false;
    m_nShown = m_nTaken;
    m_vecUnused.clear();
    m_Changed.notify_all();
}

void FramePool::setFlushing(bool flushing)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_bFlushing = flushing;
    m_nShown = m_nTaken;
    m_Changed.notify_all();
}

void FramePool::setPlaying(bool playing)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_bPlaying = playing;
    m_Changed.notify_all();
}

bool FramePool::isInterrupted()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return interrupted();
}
