#include "platform/SurfaceFormat.h"

QSurfaceFormat adaptPlatformSurfaceFormat(const QSurfaceFormat& format)
{
    return format;
}
