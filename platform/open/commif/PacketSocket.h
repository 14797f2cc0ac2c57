// Unix sockets that keep packet boundaries. Nothing here blocks or raises SIGPIPE.
#pragma once

#include "platform/open/commif/FileDescriptor.h"

#include <cstddef>
#include <string>
#include <vector>

// The longest packet that the encoding can describe: its head and a 16-bit count of bytes.
constexpr size_t kMaxPacketBytes = 4 + 0xFFFF;

using PacketBytes = std::vector<unsigned char>;

enum class Received {
    Packet,  // the buffer holds exactly its bytes, possibly none
    Nothing, // try again when the descriptor is readable
    End      // the other side has gone and everything it sent was read
};

FileDescriptor connectTo(const std::string& path);

// Takes the place of a socket file that a crash left behind, never that of a program that answers,
// however many try at once. Invalid with errno set on failure; EADDRINUSE when someone answers or
// the file is no socket. The file is to be removed while the listener is still open: afterwards it
// may be the next one's.
FileDescriptor listenAt(const std::string& path);

// 0, or the errno of the failure; EAGAIN when the other side does not read.
int sendPacket(const FileDescriptor& socket, const void* data, size_t length);

// Packets longer than kMaxPacketBytes are dropped.
Received receivePacket(const FileDescriptor& socket, PacketBytes& packet);

// Waits until the socket can be read or has failed, or `wake` is readable.
void waitUntilReadable(const FileDescriptor& socket, const FileDescriptor& wake);

// True when the socket can be written or has failed; false after that time, or with `wake` readable
// before.
bool waitUntilWritable(const FileDescriptor& socket, const FileDescriptor& wake, int limitMs);
