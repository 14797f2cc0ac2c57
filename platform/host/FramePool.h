// The fixed number of frame buffers that a hardware decoder owns: whoever wants one waits when all
// are out, and every wait can be ended.
//
// The streaming thread acquires and drains; any thread gives back and reports what it looked at;
// the thread that flushes or changes the state interrupts and rearms. One lock, held for a few
// instructions only. Frames keep their pool alive, so it may be dropped while some are out.
#pragma once

#include "platform/host/PhysBlock.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

class FramePool
{
public:
    static constexpr int kFrames = 8;

    // A block of this size, or null when interrupted.
    std::unique_ptr<PhysBlock> acquire(size_t size);
    void giveBack(std::unique_ptr<PhysBlock> block);

    // Ends every wait, those to come included, until rearm().
    void interrupt();
    void rearm();

    // Which frame went out last, and that a frame has been looked at (mapped and unmapped).
    void setLastOut(uint32_t physical);
    void setShown(uint32_t physical);

    // Waits until the frame that went out last has been looked at or given back, or until nothing
    // has happened for `patience`, or until interrupted.
    void waitLastShown(std::chrono::nanoseconds patience);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under m_mutex.
    std::vector<std::unique_ptr<PhysBlock>> m_free; // all of m_nBlockSize
    size_t m_nBlockSize = 0;
    int m_nOut = 0;
    int m_nEvents = 0;
    uint32_t m_nLastOut = 0; // 0: it has been shown
    bool m_bInterrupted = false;
};
