// What the host platform has done, for tests and benchmarks; any thread.
#pragma once

#include <atomic>

struct HostCounters
{
    std::atomic<int> framesExported{0}; // decoded frames copied into video memory
    std::atomic<int> framesOut{0};      // of these, not yet given back
    std::atomic<int> uploads{0};        // frames that reached a texture
};

HostCounters& hostCounters();
