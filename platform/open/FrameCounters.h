// What became of the frames so far, for tests and measurements. Any thread.
#pragma once

#include <atomic>

struct FrameCounters
{
    std::atomic<unsigned> framesExported{0}; // went on to the sink
    std::atomic<int> framesOut{0};           // have not come back to their pool
    std::atomic<unsigned> imports{0};        // buffers of decoders that EGL was asked for
    std::atomic<unsigned> uploads{0};        // were converted and uploaded by the processor
};

inline FrameCounters& frameCounters()
{
    static FrameCounters counters;
    return counters;
}
