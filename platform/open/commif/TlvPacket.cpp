// The encoding of a packet, in the machine's byte order, as both ends run on one machine:
//   head   16-bit type, 16-bit count of the bytes that follow
//   item   16-bit tag, 16-bit count, that many bytes; items follow each other without padding
// Each count is checked against the rest of the buffer before a byte is read.
#include "platform/libcommif.h"

#include <cstring>
#include <type_traits>

namespace {

constexpr uint32_t kHeadBytes = 4;
constexpr uint32_t kItemHeadBytes = 4;
constexpr uint32_t kU4Bytes = 4;
constexpr uint32_t kMaxBodyBytes = 0xFFFF;

// The content of the caller's 24 bytes. Copied in and out, as those may be unaligned.
struct Cursor
{
    union {
        unsigned char* bytes;
        uint64_t space; // the same layout with 32-bit pointers
    };
    uint32_t size;     // of the buffer
    uint32_t position; // of the next item to read
    uint32_t length;   // encoded length of the packet; 0 without a head
    uint32_t unused;

    uint32_t left() const { return length - position; }
};
static_assert(sizeof(Cursor) == sizeof(TlvPacket));
static_assert(offsetof(Cursor, length) == offsetof(TlvPacket, length));
static_assert(std::is_trivially_copyable_v<Cursor>);

Cursor load(const TlvPacket* packet)
{
    Cursor cursor;
    std::memcpy(&cursor, packet, sizeof cursor);
    return cursor;
}

void store(TlvPacket* packet, const Cursor& cursor)
{
    std::memcpy(packet, &cursor, sizeof cursor);
}

uint16_t getU16(const unsigned char* at)
{
    uint16_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return value;
}

void putU16(unsigned char* at, uint16_t value)
{
    std::memcpy(at, &value, sizeof value);
}

} // namespace

void TlvPacket_Init(TlvPacket* packet, void* data, unsigned int length)
{
    Cursor cursor = {};
    cursor.bytes = static_cast<unsigned char*>(data);
    cursor.size = data ? length : 0;
    store(packet, cursor);
}

int TlvPacket_ReadHead(TlvPacket* packet, uint16_t* type)
{
    Cursor cursor = load(packet);
    if (cursor.size < kHeadBytes)
        return 0;
    const uint32_t body = getU16(cursor.bytes + 2);
    if (body > cursor.size - kHeadBytes)
        return 0;
    *type = getU16(cursor.bytes);
    cursor.position = kHeadBytes;
    cursor.length = kHeadBytes + body;
    store(packet, cursor);
    return 1;
}

void* TlvPacket_ReadBody(TlvPacket* packet, uint16_t* tag, uint16_t* length)
{
    Cursor cursor = load(packet);
    if (cursor.left() < kItemHeadBytes)
        return nullptr;
    unsigned char* item = cursor.bytes + cursor.position;
    const uint16_t size = getU16(item + 2);
    if (size > cursor.left() - kItemHeadBytes)
        return nullptr;
    *tag = getU16(item);
    *length = size;
    cursor.position += kItemHeadBytes + size;
    store(packet, cursor);
    return item + kItemHeadBytes;
}

void TlvPacket_WriteHead(TlvPacket* packet, uint16_t type)
{
    Cursor cursor = load(packet);
    if (cursor.size < kHeadBytes)
        return;
    putU16(cursor.bytes, type);
    putU16(cursor.bytes + 2, 0);
    cursor.position = kHeadBytes;
    cursor.length = kHeadBytes;
    store(packet, cursor);
}

// Leaves the item out if it does not fit or there is no head before it.
void TlvPacket_WriteBody_U4B(TlvPacket* packet, uint16_t tag, uint32_t value)
{
    constexpr uint32_t kBytes = kItemHeadBytes + kU4Bytes;
    Cursor cursor = load(packet);
    if (cursor.length < kHeadBytes || cursor.size - cursor.length < kBytes ||
        cursor.length - kHeadBytes + kBytes > kMaxBodyBytes)
        return;
    unsigned char* item = cursor.bytes + cursor.length;
    putU16(item, tag);
    putU16(item + 2, kU4Bytes);
    std::memcpy(item + kItemHeadBytes, &value, sizeof value);
    cursor.length += kBytes;
    putU16(cursor.bytes + 2, static_cast<uint16_t>(cursor.length - kHeadBytes));
    store(packet, cursor);
}
