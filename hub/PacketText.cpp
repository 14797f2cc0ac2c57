#include "hub/PacketText.h"

#include "platform/libcommif.h"

#include <cctype>
#include <cstring>

namespace {

constexpr uint16_t kRequestType = 2;
constexpr uint16_t kRequestTag = 3;
constexpr char kDigits[] = "0123456789abcdef";

std::string toHex(const void* data, size_t length)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0xF];
    }
    return text;
}

std::string describeValue(const void* value, size_t length)
{
    uint32_t number = 0;
    if (length != sizeof number)
        return " bytes=" + toHex(value, length);
    std::memcpy(&number, value, sizeof number);
    return " value=" + std::to_string(number);
}

int digitValue(char digit)
{
    const char* found = std::strchr(kDigits, std::tolower(static_cast<unsigned char>(digit)));
    return found && *found ? static_cast<int>(found - kDigits) : -1;
}

} // namespace

std::string describePacket(PacketBytes packet)
{
    TlvPacket cursor;
    TlvPacket_Init(&cursor, packet.data(), static_cast<unsigned>(packet.size()));
    uint16_t type = 0;
    if (TlvPacket_ReadHead(&cursor, &type) == 0)
        return "unreadable bytes=" + toHex(packet.data(), packet.size());
    std::string text = "type=" + std::to_string(type);
    uint16_t tag = 0;
    uint16_t length = 0;
    while (const void* value = TlvPacket_ReadBody(&cursor, &tag, &length))
        text += " tag=" + std::to_string(tag) + describeValue(value, length);
    if (cursor.length < packet.size())
        text += " and " + std::to_string(packet.size() - cursor.length) + " more";
    return text;
}

std::optional<PacketBytes> packetFromHex(const std::string& text)
{
    PacketBytes packet;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == ' ')
            continue;
        const int high = digitValue(text[at]);
        const int low = ++at < text.size() ? digitValue(text[at]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        packet.push_back(static_cast<unsigned char>(high << 4 | low));
    }
    return packet;
}

PacketBytes exitRequest(uint32_t mask)
{
    PacketBytes packet(64);
    TlvPacket cursor;
    TlvPacket_Init(&cursor, packet.data(), static_cast<unsigned>(packet.size()));
    TlvPacket_WriteHead(&cursor, kRequestType);
    TlvPacket_WriteBody_U4B(&cursor, kRequestTag, mask);
    packet.resize(cursor.length);
    return packet;
}
