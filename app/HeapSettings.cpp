#include "app/HeapSettings.h"

#include <malloc.h>

namespace {

// Below frame size, above any long-lived allocation.
constexpr int kMappedFromBytes = 256 * 1024;

} // namespace

void keepHeapSmall()
{
    // Each playback starts new threads. glibc gives threads arenas of their own and keeps their
    // memory: 20 MB after fifty playbacks.
    mallopt(M_ARENA_MAX, 1);
    // After the first free of a frame, glibc puts later frames on the heap, where small blocks
    // behind them keep it from shrinking: 50 MB more from the first playback on.
    mallopt(M_MMAP_THRESHOLD, kMappedFromBytes);
}
