// Feeds any bytes to the packet functions and to the link that reads packets with them.
#include "comm/CInnerCommunication.h"
#include "comm/libcommif.h"

#include <QtGlobal>

#include <cstdlib>
#include <vector>

namespace {

constexpr size_t kItemHeadBytes = 4;

using Bytes = std::vector<unsigned char>;

// Without assert(): it must hold in every build.
void require(bool holds)
{
    if (!holds)
        std::abort();
}

// The number of items. Each value lies inside the buffer, behind the one before it.
size_t readItems(Bytes& bytes)
{
    TlvPacket cursor;
    TlvPacket_Init(&cursor, bytes.data(), static_cast<unsigned>(bytes.size()));
    uint16_t type = 0;
    const bool readable = TlvPacket_ReadHead(&cursor, &type) != 0;
    size_t items = 0;
    uint16_t tag = 0;
    uint16_t length = 0;
    size_t used = kItemHeadBytes;
    while (const void* value = TlvPacket_ReadBody(&cursor, &tag, &length)) {
        used += kItemHeadBytes;
        require(value == bytes.data() + used);
        used += length;
        require(used <= bytes.size());
        ++items;
    }
    require(readable || items == 0);
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

// As many items as the buffer has room for are written and read back, none of them in part.
void writeAndReadBack(size_t size)
{
    constexpr size_t kItemBytes = kItemHeadBytes + sizeof(uint32_t);
    Bytes bytes(size);
    TlvPacket cursor;
    TlvPacket_Init(&cursor, bytes.data(), static_cast<unsigned>(size));
    TlvPacket_WriteHead(&cursor, 1);
    for (size_t i = 0; i <= size / kItemBytes; ++i)
        TlvPacket_WriteBody_U4B(&cursor, 2, 0xFFFFFFFF);
    require(cursor.length <= size);
    require(readItems(bytes) == (size < kItemHeadBytes ? 0 : (size - kItemHeadBytes) / kItemBytes));
}

void ignoreLine(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    qInstallMessageHandler(ignoreLine);
    Bytes bytes(data, data + size); // an allocation of exactly its size
    parseByLink(bytes, readItems(bytes).size());
    writeAndReadBack(size);
    return 0;
}
