// Part of every program that is built for the thread sanitizer. The libraries of the system are not
// instrumented, and the locks of Qt and GLib are no pthread locks: whatever is handed over under
// one would be taken for a race. So the sanitizer is told of these locks, and its reports on what
// libraries did among themselves are dropped. All that the project's own code took part in shows.
#include <cstring>

#include <dlfcn.h>
#include <sanitizer/common_interface_defs.h>
#include <sanitizer/tsan_interface.h>

// Told before it happens: until then nobody else gets the lock.
#define UNLOCKING(mutex) __tsan_mutex_pre_unlock(mutex, 0), __tsan_mutex_post_unlock(mutex, 0)
#define LOCKING(mutex) __tsan_mutex_pre_lock(mutex, __tsan_mutex_write_reentrant)
#define LOCKED(mutex) __tsan_mutex_post_lock(mutex, __tsan_mutex_write_reentrant, 1)

// A function that stands in for a library's, by the name the linker knows: those that the project
// and GStreamer call. All fit one form: values that are passed in registers, and a truth value or
// nothing as the result.
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
// The lock of a QThread orders what it did, at the latest until it asks whether to stop or calls
// exit(), before whoever finds it ended.
STAND_IN(_ZNK7QThread23isInterruptionRequestedEv, __tsan_release(one), )
STAND_IN(_ZN7QThread4exitEi, __tsan_release(one), )
STAND_IN(_ZN7QThread4waitE14QDeadlineTimer, , if (result & 1) __tsan_acquire(one))
STAND_IN(_ZNK7QThread9isRunningEv, , if (!(result & 1)) __tsan_acquire(one))

extern "C" {
// The bounds of the section of the stand-ins, as the linker names them.
extern char __start_stand_ins[], __stop_stand_ins[];
// Of the sanitizer's interface for debuggers, whose header GCC leaves out.
int __tsan_get_report_data(void* report, const char**, int*, int* stacks, int* accesses, int*, int*,
                           int*, int*, void**, unsigned long);
int __tsan_get_report_stack(void* report, unsigned long index, void** trace, unsigned long frames);
int __tsan_get_report_mop(void* report, unsigned long index, int*, void**, int*, int*, int*,
                          void** trace, unsigned long frames);
}

// Whose code called into the C library or took the lock: the first frame tells that is neither the
// sanitizer's nor a stand-in's. The run-time libraries of the language work for whoever called
// them, which the trace may no longer tell: they count as the project.
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

// The sanitizer's OnReport(), asked before it prints: true drops the report. A library's call
// against an access of the project's own shows, for what the project reads too late, a library may
// have freed. The one exception is what Qt made for a queued call, with new as nothing else: only
// Qt takes the lock of its queue, and no variable of the project holds the address. A trace that
// the sanitizer has lost decides nothing.
extern "C" __attribute__((no_sanitize_thread)) bool
_ZN6__tsan8OnReportEPKNS_10ReportDescEb(void* report, bool suppressed)
{
    int stacks = 0, accesses = 0, x = 0;
    const char* kind = nullptr;
    void* address = nullptr;
    __tsan_get_report_data(report, &kind, &x, &stacks, &accesses, &x, &x, &x, &x, &address, 0);
    bool ofLibrary = false, ofProject = false, isQueuedCall = false;
    for (int i = 0; i < stacks + accesses; ++i) {
        void* trace[17] = {}; // the last one ends it
        if (i < stacks)
            __tsan_get_report_stack(report, i, trace, 16);
        else
            __tsan_get_report_mop(report, i - stacks, &x, &address, &x, &x, &x, trace, 16);
        if (trace[0])
            (isOfLibrary(trace, &isQueuedCall) ? ofLibrary : ofProject) = true;
    }
    return suppressed || isQueuedCall || (ofLibrary && !ofProject);
}
