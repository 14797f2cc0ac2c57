// The ten functions of the device's communication library that the link calls. Those of the link
// may be called by any thread, those of a packet by the one that owns it. Memory stays the
// caller's.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// Called by the library, on its own delivery thread, for each packet that arrives. The bytes are
// valid until it returns.
using KvrCommCallback = void (*)(void* context, void* data, unsigned int length);

// Packet cursor: 24 bytes that the caller provides and the library fills. After writing, the
// encoded length in bytes stands at byte offset 16; the other fields are the library's.
struct TlvPacket
{
    unsigned char reserved1[16];
    uint32_t length;
    uint32_t reserved2;
};

int KvrComm_Init(int endpoint, KvrCommCallback callback, void* context); // 0: the link is up
void KvrComm_Exit();   // waits for a callback that runs; none comes afterwards
int KvrComm_IsReady(); // nonzero: a packet can be sent now
int KvrComm_SendMsg(int endpoint, const void* data, unsigned int length);
unsigned int KvrComm_GetInnerErrorCode(); // code of the library's last error

void TlvPacket_Init(TlvPacket* packet, void* data, unsigned int length);
int TlvPacket_ReadHead(TlvPacket* packet, uint16_t* type); // nonzero: success
// The next item's value bytes inside the buffer, or null when no further item can be read.
void* TlvPacket_ReadBody(TlvPacket* packet, uint16_t* tag, uint16_t* length);
void TlvPacket_WriteHead(TlvPacket* packet, uint16_t type);
void TlvPacket_WriteBody_U4B(TlvPacket* packet, uint16_t tag, uint32_t value);
}

static_assert(sizeof(TlvPacket) == 24, "the library writes 24 bytes");
static_assert(offsetof(TlvPacket, length) == 16, "the encoded length stands at byte 16");
