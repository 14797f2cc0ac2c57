// The type of the frame hand-off between the engine and whatever draws.
#pragma once

// Called on the engine's worker thread, one frame at a time; the frame's memory stays valid until
// the call returns. nFormat: 0 packed 16-bit, else NV12. nPhysAddr, pVirtAddr: where the frame
// lies. nWidth, nHeight: px. pUserData: as given to the engine. The result is not used.
using VideoDataCallback = int (*)(int nFormat, unsigned long nPhysAddr, unsigned char* pVirtAddr,
                                  int nWidth, int nHeight, void* pUserData);
