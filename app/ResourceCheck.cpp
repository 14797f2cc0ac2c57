#include "app/ResourceCheck.h"

#include <cstdio>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

#include <sys/resource.h>

namespace {

// bench/stress/limits.py shows that all works with these.
constexpr size_t kDescriptors = 32;
constexpr size_t kMegabytesOfAddresses = 700;
constexpr size_t kThreads = 24;
constexpr size_t kBytesInMegabyte = 1 << 20;

bool allows(decltype(RLIMIT_AS) resource, rlim_t least)
{
    rlimit limit = {};
    return getrlimit(resource, &limit) != 0 || limit.rlim_cur >= least;
}

bool canStart(size_t count)
{
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    std::vector<std::thread> threads;
    try {
        while (threads.size() < count)
            threads.emplace_back([ended] { ended.wait(); });
    } catch (const std::system_error&) { // too few, which the caller tells
    }
    end.set_value();
    for (std::thread& thread : threads)
        thread.join();
    return threads.size() == count;
}

bool tell(bool enough, size_t least, const char* of)
{
    if (!enough)
        std::fprintf(stderr, "quadplayer: needs %zu %s, and a limit allows less\n", least, of);
    return enough;
}

} // namespace

bool hasEnoughResources()
{
    return tell(allows(RLIMIT_NOFILE, kDescriptors), kDescriptors, "file descriptors") &&
           tell(allows(RLIMIT_AS, kMegabytesOfAddresses * kBytesInMegabyte), kMegabytesOfAddresses,
                "MB of addresses") &&
           tell(canStart(kThreads), kThreads, "threads");
}
