#include "platform/host/HostCounters.h"

// Never destroyed: a frame may outlive every static object.
HostCounters& hostCounters()
{
    static auto* counters = new HostCounters;
    return *counters;
}
