// Packets as a person reads and types them.
#pragma once

#include "platform/open/commif/PacketSocket.h"

#include <cstdint>
#include <optional>
#include <string>

// "type=1 tag=1 value=8 tag=2 value=1"; values of other lengths than four bytes as "bytes=0a0b",
// and a packet without a readable head as "unreadable bytes=...".
std::string describePacket(PacketBytes packet);

// Pairs of hexadecimal digits, with or without blanks between the pairs.
std::optional<PacketBytes> packetFromHex(const std::string& text);

PacketBytes exitRequest(uint32_t mask);
