// The ten functions of the device's communication library that the link calls. Any thread may call
// the KvrComm functions; the TlvPacket ones only the thread that owns the packet. The caller owns
// all memory.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// The library calls it in its delivery thread for each packet that arrives. The bytes are valid
// until it returns.
using KvrCommCallback = void (*)(void* context, void* data, unsigned int length);

// Packet cursor: the caller provides the 24 bytes, the library fills them. After writing, `length`
// is the encoded length in bytes; only the library uses the other fields.
struct TlvPacket
{
    unsigned char reserved1[16];
    uint32_t length;
    uint32_t reserved2;
};

int KvrComm_Init(int endpoint, KvrCommCallback callback, void* context); // 0: the link is up
void KvrComm_Exit();   // waits for a running callback; none comes afterwards
int KvrComm_IsReady(); // nonzero: a packet can be sent now
int KvrComm_SendMsg(int endpoint, const void* data, unsigned int length);
unsigned int KvrComm_GetInnerErrorCode(); // code of the library's last error

void TlvPacket_Init(TlvPacket* packet, void* data, unsigned int length);
int TlvPacket_ReadHead(TlvPacket* packet, uint16_t* type); // nonzero: success
// Points to the next item's value inside the buffer; null if there is no further item.
void* TlvPacket_ReadBody(TlvPacket* packet, uint16_t* tag, uint16_t* length);
void TlvPacket_WriteHead(TlvPacket* packet, uint16_t type);
void TlvPacket_WriteBody_U4B(TlvPacket* packet, uint16_t tag, uint32_t value);
}

static_assert(sizeof(TlvPacket) == 24, "the library writes 24 bytes");
static_assert(offsetof(TlvPacket, length) == 16, "the encoded length stands at byte 16");
