#include "platform/host/FramePool.h"

#include "platform/host/HostCounters.h"

std::unique_ptr<PhysBlock> FramePool::acquire(size_t size)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_bInterrupted || m_nOut < kFrames; });
    if (m_bInterrupted)
        return nullptr;
    if (size != m_nBlockSize) {
        m_free.clear();
        m_nBlockSize = size;
    }
    ++m_nOut;
    ++hostCounters().framesOut;
    if (m_free.empty())
        return std::make_unique<PhysBlock>(size);
    std::unique_ptr<PhysBlock> block = std::move(m_free.back());
    m_free.pop_back();
    return block;
}

void FramePool::giveBack(std::unique_ptr<PhysBlock> block)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_nOut;
    --hostCounters().framesOut;
    ++m_nEvents;
    if (block->physical() == m_nLastOut)
        m_nLastOut = 0;
    if (block->size() == m_nBlockSize)
        m_free.push_back(std::move(block));
    m_changed.notify_all();
}

void FramePool::interrupt()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bInterrupted = true;
    m_changed.notify_all();
}

void FramePool::rearm()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bInterrupted = false;
    m_nLastOut = 0;
}

void FramePool::setLastOut(uint32_t physical)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_nLastOut = physical;
}

void FramePool::setShown(uint32_t physical)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_nEvents;
    if (physical == m_nLastOut)
        m_nLastOut = 0;
    m_changed.notify_all();
}

void FramePool::waitLastShown(std::chrono::nanoseconds patience)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto done = [this] { return m_bInterrupted || m_nLastOut == 0; };
    int seen = m_nEvents;
    while (!done()) {
        m_changed.wait_for(lock, patience, [&] { return done() || m_nEvents != seen; });
        if (m_nEvents == seen)
            return;
        seen = m_nEvents;
    }
}
