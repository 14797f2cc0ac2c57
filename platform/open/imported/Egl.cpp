#include "platform/open/imported/Egl.h"

#include <QByteArray>
#include <QOpenGLContext>
#include <QtPlatformHeaders/QEGLNativeContext>

namespace {

template <typename Function>
void find(Function& function, QOpenGLContext& context, const char* name)
{
    function = reinterpret_cast<Function>(context.getProcAddress(name));
}

} // namespace

const char* Egl::load(QOpenGLContext& context)
{
    // With GLX, looking up functions of EGL may succeed, but they do not work.
    const QVariant handle = context.nativeHandle();
    if (!handle.canConvert<QEGLNativeContext>())
        return "no EGL";
    display = handle.value<QEGLNativeContext>().display();
    const char*(EGLAPIENTRYP queryString)(EGLDisplay, EGLint) = nullptr;
    find(queryString, context, "eglQueryString");
    if (!queryString)
        return "no EGL";
    const QByteArray extensions = queryString(display, EGL_EXTENSIONS);
    if (!extensions.split(' ').contains("EGL_EXT_image_dma_buf_import") ||
        !context.hasExtension("GL_OES_EGL_image"))
        return "no extension";
    find(createImage, context, "eglCreateImageKHR");
    find(destroyImage, context, "eglDestroyImageKHR");
    find(imageTargetTexture, context, "glEGLImageTargetTexture2DOES");
    return createImage && destroyImage && imageTargetTexture ? nullptr : "no extension";
}
