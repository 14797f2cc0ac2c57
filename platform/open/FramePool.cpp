#include "platform/open/FramePool.h"

#include "platform/open/FrameCounters.h"
#include "platform/open/PhysMemory.h"

#include <algorithm>
#include <utility>

bool FramePool::waitForRoom()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Changed.wait(lock, [this] { return interrupted() || m_nOut < kFrames; });
    return !interrupted();
}

GstMemory* FramePool::handOut(std::shared_ptr<PhysFrame> frame, size_t size)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    ++m_nOut;
    ++frameCounters().framesOut;
    const uint64_t number = ++m_nTaken;
    const auto pool = shared_from_this();
    // Drop the frame first, so that the next one can reuse its memory.
    PhysFrame* raw = frame.get();
    std::shared_ptr<PhysFrame> lent(raw, [pool, number, frame = std::move(frame)](auto*) mutable {
        frame.reset();
        pool->giveBack(number);
    });
    return newPhysMemory(std::move(lent), size, [pool, number] { pool->markShown(number); });
}

void FramePool::markShown(uint64_t number)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_nShown = std::max(m_nShown, number);
    m_Changed.notify_all();
}

void FramePool::giveBack(uint64_t number)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    --m_nOut;
    --frameCounters().framesOut;
    m_nShown = std::max(m_nShown, number);
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
