// Packets as a person reads and types them.
#pragma once

#include "platform/open/commif/PacketSocket.h"

#include <cstdint>
#include <optional>
#include <string>

// "type=1 tag=1 value=8 tag=2 value=1". A value that has not four bytes is "bytes=0a0b", a packet
// without a readable head "unreadable bytes=...".
std::string describePacket(PacketBytes packet);

// Reads pairs of hexadecimal digits, with or without blanks between them.
std::optional<PacketBytes> packetFromHex(const std::string& text);

PacketBytes exitRequest(uint32_t mask);
