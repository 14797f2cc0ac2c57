#include "hub/Hub.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kUsageStatus = 2;

FileDescriptor catchStopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

int runHub(const HubOptions& options)
{
    if (options.socketPath.empty()) {
        std::fputs("no private folder for the socket; set XDG_RUNTIME_DIR or --socket\n", stderr);
        return EXIT_FAILURE;
    }
    FileDescriptor listener = listenAt(options.socketPath);
    if (!listener.isValid()) {
        std::fprintf(stderr, "cannot listen at '%s': %s\n", options.socketPath.c_str(),
                     std::strerror(errno)); // NOLINT(concurrency-mt-unsafe)
        return EXIT_FAILURE;
    }
    FileDescriptor stop = catchStopSignals(); // a signal ends listenAt(), which may wait
    std::printf("listening at %s\n", options.socketPath.c_str());
    Hub hub(std::move(listener), std::move(stop), options);
    hub.run();
    unlink(options.socketPath.c_str()); // while the hub still listens: see listenAt()
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const HubOptions options = readHubOptions({argv + 1, argv + argc});
    if (!options.error.empty()) {
        std::fprintf(stderr, "%s\n", options.error.c_str());
        return kUsageStatus;
    }
    if (options.help) {
        printHubHelp();
        return EXIT_SUCCESS;
    }
    return runHub(options);
}
