#include "app/SignalHandler.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace {

std::array<int, 2> s_pipe = {-1, -1}; // made before the handler is installed, never closed

// Ignores the result: a signal handler can tell no one of a failure.
void writeAll(int descriptor, const char* data, size_t size)
{
    const ssize_t written = write(descriptor, data, size);
    static_cast<void>(written);
}

// Without printf(), which a signal handler must not call.
void printSignal(int signo)
{
    constexpr std::string_view kStart = "catch a signal no=";
    constexpr std::string_view kEnd = ".\n";
    constexpr size_t kDigits = 12;
    char line[kStart.size() + kDigits + kEnd.size()];
    char* at = std::copy(kStart.begin(), kStart.end(), line);
    at = std::to_chars(at, at + kDigits, signo).ptr;
    at = std::copy(kEnd.begin(), kEnd.end(), at);
    writeAll(STDOUT_FILENO, line, static_cast<size_t>(at - line));
}

// Blocks or unblocks SIGINT for the calling thread. Threads inherit it from the one that starts
// them.
void maskInterrupt(int how)
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(how, &interrupt, nullptr);
}

bool catchInterrupt()
{
    struct sigaction action = {};
    action.sa_handler = signalHandler;
    sigemptyset(&action.sa_mask);
    return pipe2(s_pipe.data(), O_CLOEXEC | O_NONBLOCK) == 0 &&
           sigaction(SIGINT, &action, nullptr) == 0;
}

} // namespace

void signalHandler(int signo)
{
    const int savedErrno = errno;
    printSignal(signo);
    if (signo == SIGINT)
        writeAll(s_pipe[1], "i", 1);
    errno = savedErrno;
}

void holdInterrupts()
{
    maskInterrupt(SIG_BLOCK);
}

bool installSignalHandlers()
{
    const bool caught = catchInterrupt();
    maskInterrupt(SIG_UNBLOCK);
    if (!caught) {
        std::printf("sigaction error(%s).\n", std::strerror(errno));
        return false;
    }
    std::signal(SIGPIPE, SIG_IGN);
    return true;
}

int interruptDescriptor()
{
    return s_pipe[0];
}
