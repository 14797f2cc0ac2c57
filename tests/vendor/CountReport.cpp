// Says at the end of the process how many frames were decoded and how many were drawn: the program
// for the device counts none.
#include "platform/open/FrameCounters.h"

#include <cstdio>

namespace {

[[gnu::destructor]] void report()
{
    std::fprintf(stderr, "stand-ins: %u frames decoded, %u drawn\n",
                 frameCounters().framesExported.load(), frameCounters().uploads.load());
}

} // namespace
