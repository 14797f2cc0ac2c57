#include "platform/SurfaceFormat.h"

#include "platform/open/SoftwareRenderer.h"

#include <QByteArray>
#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

namespace {

// Asking the renderer takes 4 ms of the start, and without a graphics device it is a software one.
bool hasGraphicsDevice()
{
    const QDir devices(QStringLiteral("/dev/dri"));
    return !devices.entryList({"card*", "renderD*"}, QDir::System).isEmpty();
}

QByteArray rendererName(const QSurfaceFormat& format)
{
    QOffscreenSurface surface;
    surface.setFormat(format);
    surface.create();
    QOpenGLContext context;
    context.setFormat(format);
    if (!context.create() || !context.makeCurrent(&surface))
        return {};
    QByteArray name = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
    context.doneCurrent();
    return name;
}

// We never use samples, depth or stencil. On a software renderer, samples cost more than half of
// the frame time, depth and stencil as much memory as the screen's picture.
QSurfaceFormat withoutExtras(QSurfaceFormat format)
{
    format.setSamples(0);
    format.setDepthBufferSize(0);
    format.setStencilBufferSize(0);
    return format;
}

} // namespace

QSurfaceFormat adaptPlatformSurfaceFormat(const QSurfaceFormat& format)
{
    QSurfaceFormat adapted = format;
    adapted.setRenderableType(QSurfaceFormat::OpenGLES);
    adapted.setVersion(2, 0);
    QSurfaceFormat probe = adapted;
    probe.setSamples(0);
    return hasGraphicsDevice() && !isSoftwareRenderer(rendererName(probe)) ? adapted
                                                                           : withoutExtras(adapted);
}
