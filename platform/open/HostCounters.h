// What the host platform has done so far, for tests and measurements. Any thread.
#pragma once

#include <atomic>

struct HostCounters
{
    std::atomic<unsigned> framesExported{0}; // frames pushed on to the sink
    std::atomic<unsigned> uploads{0};        // frames converted and sent to a texture
    std::atomic<int> framesOut{0};           // frames that have not come back to their pool
};

inline HostCounters& hostCounters()
{
    static HostCounters counters;
    return counters;
}
