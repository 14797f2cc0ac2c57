// How glibc manages the heap.
#pragma once

// Keeps memory from growing with each playback. Call first, before threads are started.
void keepHeapSmall();
