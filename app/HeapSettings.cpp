#include "app/HeapSettings.h"

#include <malloc.h>

namespace {

// Frames are larger; what lives long is smaller.
constexpr int kMappedFromBytes = 256 * 1024;

} // namespace

void keepHeapSmall()
{
    // Every playback starts threads anew, and each of them would keep heap memory in an arena of
    // its own: over some fifty playbacks that adds up to 20 MB.
    mallopt(M_ARENA_MAX, 1);
    // Once a frame has been freed, the C library would put the next ones on the heap, where what
    // stays behind them keeps their memory from being given back: 7 MB more after fifty playbacks,
    // and 50 MB more from the first on.
    mallopt(M_MMAP_THRESHOLD, kMappedFromBytes);
}
