// Feeds any bytes to the packet functions and to the link that reads packets with them.
#include "comm/CInnerCommunication.h"
#include "platform/libcommif.h"

#include <QtGlobal>

#include <cstdlib>
#include <utility>
#include <vector>

namespace {

constexpr size_t kItemHeadBytes = 4;

using Bytes = std::vector<unsigned char>;
using Items = std::vector<std::pair<uint16_t, size_t>>; // tag, length of the value

// Without assert(): it must hold in every build.
void require(bool holds)
{
    if (!holds)
        std::abort();
}

TlvPacket cursorOver(Bytes& bytes)
{
    TlvPacket cursor;
    TlvPacket_Init(&cursor, bytes.data(), static_cast<unsigned>(bytes.size()));
    return cursor;
}

// Each value lies inside the buffer and after the previous value.
Items readItems(Bytes& bytes)
{
    TlvPacket cursor = cursorOver(bytes);
    uint16_t type = 0;
    const bool readable = TlvPacket_ReadHead(&cursor, &type) != 0;
    Items items;
    uint16_t tag = 0;
    uint16_t length = 0;
    size_t used = kItemHeadBytes;
    while (const void* value = TlvPacket_ReadBody(&cursor, &tag, &length)) {
        used += kItemHeadBytes;
        require(value == bytes.data() + used);
        used += length;
        require(used <= bytes.size());
        items.emplace_back(tag, length);
    }
    require(readable || items.empty());
    return items;
}

void parseByLink(Bytes& bytes, size_t items)
{
    static CInnerCommunication link;
    static size_t requests = 0;
    static const auto counting =
        QObject::connect(&link, &CInnerCommunication::sgAppExit, [] { ++requests; });
    requests = 0;
    CInnerCommunication::msg_process_cb(&link, bytes.data(), static_cast<unsigned>(bytes.size()));
    require(counting && requests <= items);
}

// A packet written into a buffer of any size reads back as its first items, all complete.
void writeAndReadBack(const Bytes& tags)
{
    Bytes bytes(tags.empty() ? 0 : tags.front() * 4U + tags.back() % 4U);
    TlvPacket cursor = cursorOver(bytes);
    TlvPacket_WriteHead(&cursor, 1);
    Items written;
    for (const unsigned char tag : tags) {
        const uint32_t before = cursor.length;
        TlvPacket_WriteBody_U4B(&cursor, tag, 0xFFFFFFFF);
        if (cursor.length != before)
            written.emplace_back(tag, sizeof(uint32_t));
    }
    require(cursor.length <= bytes.size());
    bytes.resize(cursor.length);
    require(readItems(bytes) == written);
}

void ignoreLine(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler(ignoreLine);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    Bytes bytes(data, data + size); // an allocation of exactly its size
    parseByLink(bytes, readItems(bytes).size());
    writeAndReadBack(bytes);
    return 0;
}
