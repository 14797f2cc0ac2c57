// How a platform wants OpenGL surfaces to be.
#pragma once

#include <QSurfaceFormat>

// Returns `format` as this platform needs it; GUI thread, after the application object exists and
// before the first OpenGL widget. Open systems: OpenGL ES, and without multisampling, depth and
// stencil where the renderer is a software one. Device: unchanged.
QSurfaceFormat adaptPlatformSurfaceFormat(const QSurfaceFormat& format);
