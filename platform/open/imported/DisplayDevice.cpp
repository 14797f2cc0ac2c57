#include "platform/open/imported/DisplayDevice.h"

#include <QDir>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <drm.h>
#include <drm_mode.h>

namespace {

int openOnlyCard()
{
    const QDir devices(QStringLiteral("/dev/dri"));
    const QStringList cards = devices.entryList({"card*"}, QDir::System);
    if (cards.size() != 1)
        return -1;
    return open(devices.filePath(cards.first()).toLocal8Bit().constData(), O_RDWR | O_CLOEXEC);
}

} // namespace

DisplayDevice::DisplayDevice() : m_nFd(openOnlyCard()) {}

DisplayDevice::~DisplayDevice()
{
    if (m_nFd >= 0)
        close(m_nFd);
}

bool DisplayDevice::owns(int dmabuf) const
{
    drm_prime_handle buffer = {};
    buffer.fd = dmabuf;
    if (ioctl(m_nFd, DRM_IOCTL_PRIME_FD_TO_HANDLE, &buffer) != 0)
        return false;
    drm_mode_map_dumb map = {};
    map.handle = buffer.handle;
    const bool own = ioctl(m_nFd, DRM_IOCTL_MODE_MAP_DUMB, &map) == 0;
    drm_gem_close unused = {};
    unused.handle = buffer.handle;
    ioctl(m_nFd, DRM_IOCTL_GEM_CLOSE, &unused);
    return own;
}
