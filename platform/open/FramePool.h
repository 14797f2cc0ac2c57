// Bounds the frames in flight, as a hardware decoder does: it has a fixed number of frames and
// waits when all are out. The engine stores frames without a limit, so nothing else bounds its
// memory. Both waits end at once when the stream is flushed or stopped. Otherwise stopping would
// hang: it waits for this thread, and the frames come back only after it. Frames may outlive the
// pool's owner; each keeps the pool alive until it has come back.
//
// waitForRoom(), handOut(), waitUntilShown(): streaming thread. The switches and the frames'
// return: any thread.
#pragma once

#include "platform/open/PhysFrame.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include <gst/gst.h>

class FramePool : public std::enable_shared_from_this<FramePool>
{
public:
    // At least 4: one in the sink, one being shown, one due, one being filled. Not many more,
    // because the pipeline's position is ahead of the picture by this many frames.
    static constexpr int kFrames = 4;

    // Waits until fewer than kFrames are out. False when interrupted.
    bool waitForRoom();

    // Wraps the frame as memory, see newPhysMemory(). The frame is out until that memory is freed.
    GstMemory* handOut(std::shared_ptr<PhysFrame> frame, size_t size);

    // Waits until the last frame has been shown, that is unmapped or freed, and then for `stay`.
    // Gives up if no frame moves for `patience` while playing. False when interrupted.
    bool waitUntilShown(std::chrono::nanoseconds patience, std::chrono::nanoseconds stay);

    void setActive(bool active);     // false: the element stops, and every wait ends
    void setFlushing(bool flushing); // true: every wait ends
    void setPlaying(bool playing);   // false: paused, `patience` does not run

private:
    bool interrupted() const { return !m_bActive || m_bFlushing; }
    void markShown(uint64_t number);
    // False: nothing changed for `patience` while playing.
    bool waitForChange(std::unique_lock<std::mutex>& lock, std::chrono::nanoseconds patience);
    void giveBack(uint64_t number);

    std::mutex m_Mutex; // guards everything below
    std::condition_variable m_Changed;
    int m_nOut = 0;
    uint64_t m_nTaken = 0; // number of the frame handed out last
    uint64_t m_nShown = 0; // highest number shown or freed
    bool m_bActive = false;
    bool m_bFlushing = false;
    bool m_bPlaying = false;
};
