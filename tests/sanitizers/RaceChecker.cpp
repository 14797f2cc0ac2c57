// Linked to every program that is built for the thread sanitizer. The system's libraries are not
// instrumented, and the locks of Qt and GLib are no pthread locks, so what one of them protects
// would look like a race. This file tells the sanitizer of these locks and drops reports in which
// only libraries take part. Reports with the project's own code remain.
#include <cstring>

#include <dlfcn.h>
#include <sanitizer/common_interface_defs.h>
#include <sanitizer/tsan_interface.h>

// The sanitizer must know of an unlock before it happens, when no other thread can have the lock
// yet.
#define UNLOCKING(mutex) __tsan_mutex_pre_unlock(mutex, 0), __tsan_mutex_post_unlock(mutex, 0)
#define LOCKING(mutex) __tsan_mutex_pre_lock(mutex, __tsan_mutex_write_reentrant)
#define LOCKED(mutex) __tsan_mutex_post_lock(mutex, __tsan_mutex_write_reentrant, 1)

// Replaces a library's function that the project or GStreamer calls, by its linker name. One
// signature fits all: arguments are in registers, and the result is a bool or nothing.
#define STAND_IN(name, before, after)                                                              \
    extern "C" __attribute__((section("stand_ins"))) int name(void* one, void* two, long three)    \
    {                                                                                              \
        static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name));       \
        before;                                                                                    \
        const int result = real(one, two, three);                                                  \
        after;                                                                                     \
        return result;                                                                             \
    }
STAND_IN(g_mutex_clear, __tsan_mutex_destroy(one, 0), )
STAND_IN(g_mutex_lock, LOCKING(one), LOCKED(one))
STAND_IN(g_mutex_unlock, UNLOCKING(one), )
STAND_IN(g_cond_wait, UNLOCKING(two), (LOCKING(two), LOCKED(two)))
STAND_IN(g_cond_wait_until, UNLOCKING(two), (LOCKING(two), LOCKED(two)))
STAND_IN(_ZN6QMutexD1Ev, __tsan_mutex_destroy(one, 0), )
STAND_IN(_ZN6QMutex4lockEv, LOCKING(one), LOCKED(one))
STAND_IN(_ZN6QMutex6unlockEv, UNLOCKING(one), )
STAND_IN(_ZN14QWaitCondition4waitEP6QMutexm, UNLOCKING(two), (LOCKING(two), LOCKED(two)))
// Who sees a QThread finished sees all of its work, because both took the QThread's own lock. The
// thread takes it last when it asks whether to stop, or in exit().
STAND_IN(_ZNK7QThread23isInterruptionRequestedEv, __tsan_release(one), )
STAND_IN(_ZN7QThread4exitEi, __tsan_release(one), )
STAND_IN(_ZN7QThread4waitE14QDeadlineTimer, , if (result & 1) __tsan_acquire(one))
STAND_IN(_ZNK7QThread9isRunningEv, , if (!(result & 1)) __tsan_acquire(one))

extern "C" {
// The linker defines these: the bounds of the section of the replaced functions.
extern char __start_stand_ins[], __stop_stand_ins[];
// The sanitizer's interface for debuggers. GCC does not install its header.
int __tsan_get_report_data(void* report, const char**, int*, int* stacks, int* accesses, int*, int*,
                           int*, int*, void**, unsigned long);
int __tsan_get_report_stack(void* report, unsigned long index, void** trace, unsigned long frames);
int __tsan_get_report_mop(void* report, unsigned long index, int*, void**, int*, int*, int*,
                          void** trace, unsigned long frames);
}

// Looks at the first frame that is neither the sanitizer's nor a replaced function. Frames of libc
// and libstdc++ count as the project's, because the trace may have lost who called them.
__attribute__((no_sanitize_thread)) static bool isOfLibrary(void* const* trace, bool* isQueuedCall)
{
    char path[512] = "", function[512] = "";
    void* offset = nullptr;
    for (void* const* frame = trace; *frame; ++frame) {
        __sanitizer_get_module_and_offset_for_pc(*frame, path, sizeof path, &offset);
        const bool isStandIn = *frame >= __start_stand_ins && *frame < __stop_stand_ins;
        if (!isStandIn && !strstr(path, "/libtsan.so"))
            break;
    }
    if (strstr(path, "/libQt5Core.so"))
        __sanitizer_symbolize_pc(trace[0], "%f", function, sizeof function);
    *isQueuedCall = *isQueuedCall || strstr(function, "operator new");
    return (strncmp(path, "/usr/lib", 8) == 0 || strncmp(path, "/lib", 4) == 0) &&
           !strstr(path, "/libstdc++.so") && !strstr(path, "/libc.so");
}

// The sanitizer's OnReport(), called before it prints. Returns true to drop the report. A report
// with a library on one side and the project on the other remains: the library may have freed what
// the project reads too late. The exception is an object that Qt allocates for a queued call, by
// operator new: Qt's own lock protects it. A trace that the sanitizer has lost counts for neither.
extern "C" __attribute__((no_sanitize_thread)) bool
_ZN6__tsan8OnReportEPKNS_10ReportDescEb(void* report, bool suppressed)
{
    int stacks = 0, accesses = 0, x = 0;
    const char* kind = nullptr;
    void* address = nullptr;
    __tsan_get_report_data(report, &kind, &x, &stacks, &accesses, &x, &x, &x, &x, &address, 0);
    bool ofLibrary = false, ofProject = false, isQueuedCall = false;
    for (int i = 0; i < stacks + accesses; ++i) {
        void* trace[17] = {}; // ends with a null
        if (i < stacks)
            __tsan_get_report_stack(report, i, trace, 16);
        else
            __tsan_get_report_mop(report, i - stacks, &x, &address, &x, &x, &x, trace, 16);
        if (trace[0])
            (isOfLibrary(trace, &isQueuedCall) ? ofLibrary : ofProject) = true;
    }
    return suppressed || isQueuedCall || (ofLibrary && !ofProject);
}
