#include "app/SignalHandler.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

std::array<int, 2> s_pipe = {-1, -1}; // made before the handler is installed, never closed

// The result is not of interest: no one could be told of a failure from here.
void writeAll(int descriptor, const char* data, size_t size)
{
    const ssize_t written = write(descriptor, data, size);
    static_cast<void>(written);
}

// Digits of a small positive number, without printf, which a signal handler must not call.
size_t appendNumber(char* end, int number)
{
    size_t digits = 1;
    for (int rest = number / 10; rest > 0; rest /= 10)
        ++digits;
    for (size_t i = digits; i > 0; --i, number /= 10)
        end[i - 1] = static_cast<char>('0' + number % 10);
    return digits;
}

void printSignal(int signo)
{
    constexpr char kStart[] = "catch a signal no=";
    constexpr char kEnd[] = ".\n";
    constexpr size_t kDigits = 12;
    std::array<char, sizeof kStart + kDigits + sizeof kEnd> line = {};
    size_t length = sizeof kStart - 1;
    std::memcpy(line.data(), kStart, length);
    length += appendNumber(line.data() + length, signo);
    std::memcpy(line.data() + length, kEnd, sizeof kEnd - 1);
    writeAll(STDOUT_FILENO, line.data(), length + sizeof kEnd - 1);
}

// How the calling thread treats SIGINT; threads that it starts inherit it.
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
