#include "platform/open/commif/CommEndpoint.h"

#include "platform/open/commif/SocketPath.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace {

constexpr int kReconnectMs = 1000;

thread_local bool t_bDelivering = false;

// Keeps the program's signal handlers off the library's thread.
class AllSignalsBlocked
{
public:
    AllSignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

private:
    sigset_t m_before = {};
};

CommError fromErrno(int error)
{
    switch (error) {
    case 0:
        return CommError::None;
    case EAGAIN:
        return CommError::QueueFull;
    case EMSGSIZE:
        return CommError::BadArgument;
    default:
        return CommError::NotConnected;
    }
}

} // namespace

CommEndpoint::~CommEndpoint()
{
    close();
    if (m_thread.joinable()) // the process ends from inside the callback
        m_thread.detach();
}

CommError CommEndpoint::open(int endpoint, KvrCommCallback callback, void* context)
{
    if (!callback)
        return CommError::BadArgument;
    if (t_bDelivering)
        return CommError::AlreadyOpen;
    const std::lock_guard<std::mutex> lock(m_lifecycle);
    if (m_thread.joinable() && !m_bStop)
        return CommError::AlreadyOpen;
    join();
    m_strPath = commSocketPath();
    FileDescriptor socket = connectTo(m_strPath);
    if (!socket.isValid())
        return CommError::NoHub;
    m_nEndpoint = endpoint;
    m_pCallback = callback;
    m_pContext = context;
    replaceSocket(std::move(socket));
    return start();
}

CommError CommEndpoint::start()
{
    m_wake = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    m_bStop = false;
    if (m_wake.isValid() && startThread())
        return CommError::None;
    m_bStop = true;
    replaceSocket(FileDescriptor());
    return CommError::NoThread;
}

bool CommEndpoint::startThread()
{
    const AllSignalsBlocked blocked;
    try {
        m_thread = std::thread(&CommEndpoint::run, this);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void CommEndpoint::close()
{
    if (t_bDelivering) {
        requestStop();
        return;
    }
    const std::lock_guard<std::mutex> lock(m_lifecycle);
    requestStop();
    join();
}

void CommEndpoint::requestStop()
{
    m_bStop = true;
    if (m_wake.isValid())
        eventfd_write(m_wake.get(), 1);
}

void CommEndpoint::join()
{
    if (m_thread.joinable())
        m_thread.join();
}

bool CommEndpoint::isReady()
{
    const std::lock_guard<std::mutex> lock(m_socketLock);
    pollfd state = {m_socket.get(), POLLOUT, 0};
    return !m_bStop && poll(&state, 1, 0) > 0 && state.revents == POLLOUT;
}

CommError CommEndpoint::send(int endpoint, const void* data, size_t length)
{
    const std::lock_guard<std::mutex> lock(m_socketLock);
    if (m_bStop || !m_socket.isValid())
        return CommError::NotConnected;
    if (endpoint != m_nEndpoint || !data || length == 0 || length > kMaxPacketBytes)
        return CommError::BadArgument;
    return fromErrno(sendPacket(m_socket, data, length));
}

void CommEndpoint::run()
{
    t_bDelivering = true;
    while (!m_bStop) {
        if (m_socket.isValid())
            serve();
        else
            reconnect();
    }
    replaceSocket(FileDescriptor());
}

void CommEndpoint::reconnect()
{
    pollfd wake = {m_wake.get(), POLLIN, 0};
    poll(&wake, 1, kReconnectMs);
    if (!m_bStop)
        replaceSocket(connectTo(m_strPath));
}

void CommEndpoint::serve()
{
    PacketBytes packet;
    while (!m_bStop) {
        switch (receivePacket(m_socket, packet)) {
        case Received::Packet:
            deliver(packet);
            break;
        case Received::Nothing:
            waitUntilReadable(m_socket, m_wake);
            break;
        case Received::End:
            replaceSocket(FileDescriptor());
            return;
        }
    }
}

void CommEndpoint::deliver(PacketBytes& packet)
{
    m_pCallback(m_pContext, packet.data(), static_cast<unsigned>(packet.size()));
}

void CommEndpoint::replaceSocket(FileDescriptor socket)
{
    const std::lock_guard<std::mutex> lock(m_socketLock);
    m_socket = std::move(socket);
}
