#include "player/EngineClock.h"

#include <ctime>

namespace {
constexpr double kNsPerUs = 1000.0;
constexpr qint64 kUsPerSecond = 1000000;
} // namespace

qint64 currentTimeUs()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<qint64>(now.tv_sec) * kUsPerSecond +
           nanosecondsToUs(static_cast<qint64>(now.tv_nsec));
}

qint64 nanosecondsToUs(qint64 ns)
{
    return static_cast<qint64>(static_cast<double>(static_cast<float>(ns)) / kNsPerUs + 0.5);
}
