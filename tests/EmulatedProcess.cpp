// Works around faults of the emulator. Linked to every emulated test and to what it starts.
//
// QProcess uses pidfds if the system has them. The emulator says yes, but cannot do it. QProcess
// then takes -1 for the child's pid, and killing that child kills every process of the machine. So
// syscall() here says no.
//
// The virpipe driver takes an interrupted call for a lost connection and aborts. So sigaction()
// here makes the system restart interrupted calls.
//
// On a 32-bit ARM kernel, programs have no addresses in the upper quarter. The emulator hands them
// out, and the address sanitizer reports what lies there. So it is reserved at the start.
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>

extern "C" long syscall(long number, ...) noexcept
{
    using Syscall = long (*)(long, ...);
    static const auto real = reinterpret_cast<Syscall>(dlsym(RTLD_NEXT, "syscall"));

    long values[6];
    va_list list;
    va_start(list, number);
    for (long& value : values)
        value = va_arg(list, long);
    va_end(list);

    if (number == SYS_waitid && values[0] == P_PIDFD) {
        errno = ENOSYS;
        return -1;
    }
    return real(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}

extern "C" int sigaction(int signo, const struct sigaction* wanted,
                         struct sigaction* before) noexcept
{
    using Sigaction = int (*)(int, const struct sigaction*, struct sigaction*);
    static const auto real = reinterpret_cast<Sigaction>(dlsym(RTLD_NEXT, "sigaction"));

    if (!wanted)
        return real(signo, nullptr, before);
    struct sigaction restarting = *wanted;
    restarting.sa_flags |= SA_RESTART;
    return real(signo, &restarting, before);
}

namespace {

[[gnu::constructor]] void takeUpperQuarter()
{
    constexpr unsigned long kStart = 0xBFFF0000;  // nothing of the program may end at the border
    constexpr unsigned long kLength = 0x40000000; // the emulator's own page lies behind it
    constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE;
    syscall(SYS_mmap2, kStart, kLength, PROT_NONE, kFlags, -1, 0);
}

} // namespace
