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

// Replaces a socket file that a crash left behind, but never one that a program listens at, even if
// many try at once. On failure the result is invalid and errno is set, to EADDRINUSE if a program
// listens there or the file is no socket. Remove the file before you close the listener: afterwards
// it may be another program's.
FileDescriptor listenAt(const std::string& path);

// Returns 0 or the errno of the failure: EAGAIN if the other side does not read.
int sendPacket(const FileDescriptor& socket, const void* data, size_t length);

// Drops packets longer than kMaxPacketBytes.
Received receivePacket(const FileDescriptor& socket, PacketBytes& packet);

// Waits until the socket can be read or has failed, or `wake` is readable.
void waitUntilReadable(const FileDescriptor& socket, const FileDescriptor& wake);

// Returns true when the socket can be written or has failed, false after the limit or when `wake`
// is readable.
bool waitUntilWritable(const FileDescriptor& socket, const FileDescriptor& wake, int limitMs);
