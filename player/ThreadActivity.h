// What the threads of this process are doing, as the kernel tells it.
#pragma once

// True while a thread other than the process's first and those called `except` computes or waits
// for a disk. A pipeline that will still deliver does one or the other: it is seen when looked at a
// few times. One that has given up sleeps.
bool othersAreAtWork(const char* except);
