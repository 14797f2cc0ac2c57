// How the C library keeps the memory that is not in use.
#pragma once

// Keeps memory from growing with each playback. Call first, before threads are started.
void keepHeapSmall();
