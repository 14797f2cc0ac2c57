// Bounds the frames in flight, as a hardware decoder does that owns a fixed number of them: whoever
// wants to hand out one more waits until one comes back. That wait and the wait for the last frame
// end at once when the stream is flushed or stopped, or stopping would hang: the frames that are
// out come back only after it.
// Frames may outlive the pool's owner; each keeps the pool alive until it has come back.
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
    // At least 4 must be: one with the sink, one being shown, one due, one being filled. Positions
    // run ahead of the picture by as many frames, so many more would be felt.
    static constexpr int kFrames = 4;

    // Waits until fewer than kFrames are out. False when interrupted.
    bool waitForRoom();

    // Memory for a buffer that goes on; see newPhysMemory(). The frame counts as out until the last
    // user of that memory lets go, and is dropped then.
    GstMemory* handOut(std::shared_ptr<PhysFrame> frame, size_t size);

    // Waits until the frame handed out last was mapped and unmapped again, as whoever shows it
    // does, or was dropped, and then for as long as it is to stay. Gives up when playing goes on
    // for `patience` without any frame moving. False when interrupted.
    bool waitUntilShown(std::chrono::nanoseconds patience, std::chrono::nanoseconds stay);

    void setActive(bool active);     // false: going down, nobody may wait any more
    void setFlushing(bool flushing); // false: a new stretch of the stream begins
    void setPlaying(bool playing);   // false: paused, time does not count

private:
    bool interrupted() const { return !m_bActive || m_bFlushing; }
    void markShown(uint64_t number);
    // False: nothing changed although playing went on for `patience`.
    bool waitForChange(std::unique_lock<std::mutex>& lock, std::chrono::nanoseconds patience);
    void giveBack(uint64_t number);

    std::mutex m_Mutex; // guards everything below
    std::condition_variable m_Changed;
    int m_nOut = 0;
    uint64_t m_nTaken = 0; // number of the frame handed out last
    uint64_t m_nShown = 0; // highest number shown or dropped
    bool m_bActive = false;
    bool m_bFlushing = false;
    bool m_bPlaying = false;
};
