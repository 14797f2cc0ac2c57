#include "platform/open/commif/PacketSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int kBacklog = 8;
constexpr mode_t kOwnerAndGroup = 0660; // in a private folder, the group cannot reach it
constexpr int kNoLimit = -1;

FileDescriptor makeSocket()
{
    return FileDescriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// Returns false and sets errno if the path does not fit into an address.
bool makeAddress(const std::string& path, sockaddr_un& address)
{
    address = {};
    address.sun_family = AF_UNIX;
    errno = path.empty() ? ENOENT : ENAMETOOLONG;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.data(), path.size());
    return true;
}

const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

bool isSocketFile(const std::string& path)
{
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0 && S_ISSOCK(info.st_mode);
}

// Hold this while replacing a socket file: between bind() and listen(), another hub's socket
// refuses as a dead one does. Locks the folder, so that no lock file stays; a crash releases the
// lock.
FileDescriptor lockFolderOf(const std::string& path)
{
    const std::string folder = path.substr(0, path.rfind('/') + 1) + '.';
    FileDescriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (lock.isValid() && flock(lock.get(), LOCK_EX) != 0)
        lock.reset();
    return lock;
}

// Only a refusal proves that nobody listens. A full backlog, for example, fails with EAGAIN.
void removeStale(const std::string& path)
{
    if (!connectTo(path).isValid() && errno == ECONNREFUSED && isSocketFile(path))
        unlink(path.c_str());
}

// If one side closes without reading all, the other's next call fails once with ECONNRESET. What
// the first one had sent can still be read.
bool mayGoOn(int error)
{
    return error == EAGAIN || error == EINTR || error == ECONNRESET;
}

} // namespace

FileDescriptor connectTo(const std::string& path)
{
    sockaddr_un address;
    if (!makeAddress(path, address))
        return FileDescriptor();
    FileDescriptor socket = makeSocket();
    if (connect(socket.get(), generic(address), sizeof address) != 0)
        return FileDescriptor();
    return socket;
}

FileDescriptor listenAt(const std::string& path)
{
    sockaddr_un address;
    if (!makeAddress(path, address))
        return FileDescriptor();
    const FileDescriptor lock = lockFolderOf(path);
    if (!lock.isValid())
        return FileDescriptor();
    removeStale(path);
    FileDescriptor socket = makeSocket();
    if (bind(socket.get(), generic(address), sizeof address) != 0 ||
        chmod(path.c_str(), kOwnerAndGroup) != 0 || listen(socket.get(), kBacklog) != 0)
        return FileDescriptor();
    return socket;
}

int sendPacket(const FileDescriptor& socket, const void* data, size_t length)
{
    const ssize_t sent = send(socket.get(), data, length, MSG_DONTWAIT | MSG_NOSIGNAL);
    return sent < 0 ? errno : 0;
}

Received receivePacket(const FileDescriptor& socket, PacketBytes& packet)
{
    pollfd state = {socket.get(), POLLIN | POLLRDHUP, 0};
    if (poll(&state, 1, 0) <= 0)
        return Received::Nothing;
    unsigned char bytes[kMaxPacketBytes]; // not cleared: 64 KB for each short packet
    const ssize_t length = recv(socket.get(), bytes, sizeof bytes, MSG_DONTWAIT | MSG_TRUNC);
    if (length < 0)
        return mayGoOn(errno) ? Received::Nothing : Received::End;
    // recv() returns 0 for an empty packet and at the end. Only the end comes with a hang-up.
    if (length == 0 && (state.revents & (POLLHUP | POLLRDHUP)) != 0)
        return Received::End;
    if (static_cast<size_t>(length) > sizeof bytes)
        return Received::Nothing;
    packet.assign(bytes, bytes + length);
    return Received::Packet;
}

void waitUntilReadable(const FileDescriptor& socket, const FileDescriptor& wake)
{
    pollfd both[] = {{socket.get(), POLLIN | POLLRDHUP, 0}, {wake.get(), POLLIN, 0}};
    poll(both, 2, kNoLimit);
}

bool waitUntilWritable(const FileDescriptor& socket, const FileDescriptor& wake, int limitMs)
{
    pollfd both[] = {{socket.get(), POLLOUT, 0}, {wake.get(), POLLIN, 0}};
    return poll(both, 2, limitMs) > 0 && both[0].revents != 0;
}
