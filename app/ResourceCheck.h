// Whether the process may have what the player needs.
#pragma once

// Below some limits, libraries crash or wait for ever instead of reporting an error: Mesa without
// address space, JACK's without descriptors, Qt's D-Bus and GStreamer without threads. Prints a
// line and returns false if one of the process's limits is that low. Call it before any of them
// starts. The threads that it tries end before it returns.
bool hasEnoughResources();
