#include "platform/SurfaceFormat.h"

#include <QByteArray>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <array>

namespace {

// Parts of the names under which renderers without a GPU are known.
constexpr std::array<const char*, 4> kSoftwareRenderers = {"llvmpipe", "softpipe", "swrast",
                                                           "SwiftShader"};

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

bool isSoftware(const QByteArray& renderer)
{
    return std::any_of(kSoftwareRenderers.begin(), kSoftwareRenderers.end(),
                       [&](const char* name) { return renderer.contains(name); });
}

} // namespace

QSurfaceFormat adaptPlatformSurfaceFormat(const QSurfaceFormat& format)
{
    QSurfaceFormat adapted = format;
    adapted.setRenderableType(QSurfaceFormat::OpenGLES);
    adapted.setVersion(2, 0);
    QSurfaceFormat probe = adapted;
    probe.setSamples(0);
    if (isSoftware(rendererName(probe)))
        adapted.setSamples(0);
    return adapted;
}
