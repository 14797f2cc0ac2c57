#include "platform/SurfaceFormat.h"

#include <QByteArray>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

namespace {

// Asks a context of its own: no widget has one yet.
QByteArray rendererName(const QSurfaceFormat& format)
{
    QOffscreenSurface surface;
    surface.setFormat(format);
    surface.create();
    QOpenGLContext context;
    context.setFormat(format);
    if (!context.create() || !context.makeCurrent(&surface))
        return {};
    const auto* name = context.functions()->glGetString(GL_RENDERER);
    return QByteArray(reinterpret_cast<const char*>(name)).toLower();
}

bool isSoftware(const QByteArray& renderer)
{
    return renderer.contains("llvmpipe") || renderer.contains("softpipe") ||
           renderer.contains("software");
}

} // namespace

QSurfaceFormat adaptPlatformSurfaceFormat(const QSurfaceFormat& format)
{
    QSurfaceFormat adapted = format;
    adapted.setRenderableType(QSurfaceFormat::OpenGLES);
    adapted.setVersion(2, 0);
    if (isSoftware(rendererName(adapted)))
        adapted.setSamples(0);
    return adapted;
}
