// Part of every program that is built for the thread sanitizer: drops reports on what libraries of
// the system did among themselves. They are not instrumented: all that is seen of them is what they
// call in the C library, not the counters and most of the locks that order it. Whatever the
// project's own code took part in shows.
#include "tests/sanitizers/RaceChecker.h"

#include <sanitizer/common_interface_defs.h>

// Of the sanitizer's interface for debuggers, whose header GCC leaves out.
extern "C" {
int __tsan_get_report_data(void* report, const char** kind, int* count, int* stacks, int* accesses,
                           int* locations, int* mutexes, int* threads, int* threadIds,
                           void** sleepTrace, unsigned long sleepFrames);
int __tsan_get_report_stack(void* report, unsigned long index, void** trace, unsigned long frames);
int __tsan_get_report_mop(void* report, unsigned long index, int* thread, void** address, int* size,
                          int* write, int* atomic, void** trace, unsigned long frames);
}

// The bounds of the section of the stand-ins, as the linker names them.
extern "C" char __start_stand_ins[];
extern "C" char __stop_stand_ins[];

// For code that runs inside the sanitizer, where its checks must not be called.
#define UNWATCHED __attribute__((no_sanitize_thread))

namespace {

constexpr int kFrames = 16;
constexpr int kTextBytes = 512;

struct Trace
{
    void* frames[kFrames];
};

enum class Doer { kUnknown, kProject, kLibrary, kQueuedCall };

UNWATCHED bool startsWith(const char* text, const char* start)
{
    while (*start && *text == *start) {
        text++;
        start++;
    }
    return !*start;
}

UNWATCHED bool contains(const char* text, const char* part)
{
    while (*text && !startsWith(text, part))
        text++;
    return *text;
}

// The run-time libraries of the language work for whoever called them, which the trace may no
// longer tell: they count as the project.
UNWATCHED bool isLibrary(const char* path)
{
    if (contains(path, "/libstdc++.so") || contains(path, "/libc.so"))
        return false;
    return startsWith(path, "/usr/lib/") || startsWith(path, "/lib/") ||
           startsWith(path, "/lib64/");
}

// Qt allocates the event of a queued call and the arguments with new, everything else with
// malloc().
UNWATCHED bool isQueuedCall(const char* path, void* frame)
{
    char function[kTextBytes] = "";
    __sanitizer_symbolize_pc(frame, "%f", function, sizeof function);
    return contains(path, "/libQt5Core.so") && contains(function, "operator new");
}

// Whose code called into the C library or took the lock: the first frame that is neither the
// sanitizer's nor a stand-in's.
UNWATCHED Doer doer(const Trace& trace)
{
    for (void* frame : trace.frames) {
        if (!frame)
            break;
        char path[kTextBytes] = "";
        void* offset = nullptr;
        __sanitizer_get_module_and_offset_for_pc(frame, path, sizeof path, &offset);
        if (contains(path, "/libtsan.so") ||
            (frame >= __start_stand_ins && frame < __stop_stand_ins))
            continue;
        if (!isLibrary(path))
            return Doer::kProject;
        return isQueuedCall(path, trace.frames[0]) ? Doer::kQueuedCall : Doer::kLibrary;
    }
    return Doer::kUnknown;
}

// The accesses of a race, or where the locks of a cycle were taken. Other kinds of report, such as
// an unlock by the wrong thread, have none here and so always show.
UNWATCHED int readTraces(void* report, Trace* traces, int limit)
{
    const char* kind = "";
    int stacks = 0;
    int accesses = 0;
    int other = 0;
    void* address = nullptr;
    __tsan_get_report_data(report, &kind, &other, &stacks, &accesses, &other, &other, &other,
                           &other, &address, 0);
    int count = 0;
    for (int i = 0; i < accesses && count < limit; i++)
        __tsan_get_report_mop(report, i, &other, &address, &other, &other, &other,
                              traces[count++].frames, kFrames);
    for (int i = 0; contains(kind, "lock-order") && i < stacks && count < limit; i++)
        __tsan_get_report_stack(report, i, traces[count++].frames, kFrames);
    return count;
}

} // namespace

namespace __tsan {

struct ReportDesc;

// Asked by the sanitizer before it prints: true drops the report.
//
// Two accesses are dropped only when libraries did both. A library's call against an access of the
// project's own is not: what the project reads too late, a library may have freed. The one
// exception is what Qt made for a queued call: the lock of its queue of events is taken inside Qt
// only, and no variable of the project holds the address.
//
// A trace that the sanitizer has lost decides nothing, and without any known one the report shows.
UNWATCHED bool OnReport(const ReportDesc* report, bool suppressed)
{
    constexpr int kTraces = 40; // of the longest cycle: twenty locks, and what was held then
    Trace traces[kTraces] = {};
    const int count = readTraces(const_cast<ReportDesc*>(report), traces, kTraces);
    bool ofProject = false;
    bool ofLibrary = false;
    for (int i = 0; i < count; i++) {
        switch (doer(traces[i])) {
        case Doer::kQueuedCall:
            return true;
        case Doer::kLibrary:
            ofLibrary = true;
            break;
        case Doer::kProject:
            ofProject = true;
            break;
        case Doer::kUnknown:
            break;
        }
    }
    return suppressed || (ofLibrary && !ofProject);
}

} // namespace __tsan
