// Which surface format the platform needs.
#pragma once

#include <QSurfaceFormat>

// Adapts `format`. Open systems: OpenGL ES; with a software renderer also no samples, depth or
// stencil. Device: unchanged. Call it in the GUI thread, after the application object is made and
// before the first OpenGL widget.
QSurfaceFormat adaptPlatformSurfaceFormat(const QSurfaceFormat& format);
