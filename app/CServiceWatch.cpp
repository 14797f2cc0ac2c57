#include "app/CServiceWatch.h"

#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr char kAlive[] = "WATCHDOG=1";
constexpr int kUsPerMs = 1000;
constexpr int kTimesInALimit = 3;

} // namespace

CServiceWatch::CServiceWatch(QObject* parent)
    : QObject(parent), m_strSocket(qgetenv("NOTIFY_SOCKET"))
{
    const int limitUs = qEnvironmentVariableIntValue("WATCHDOG_USEC");
    const auto length = static_cast<size_t>(m_strSocket.size());
    if (limitUs > 0 && length > 0 && length <= sizeof sockaddr_un().sun_path)
        startTimer(limitUs / kUsPerMs / kTimesInALimit);
}

void CServiceWatch::timerEvent(QTimerEvent* /*event*/)
{
    const auto length = static_cast<size_t>(m_strSocket.size());
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_strSocket.constData(), length);
    if (address.sun_path[0] == '@')
        address.sun_path[0] = '\0';
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sendto(fd, kAlive, std::strlen(kAlive), MSG_NOSIGNAL, reinterpret_cast<sockaddr*>(&address),
           static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
    close(fd);
}
