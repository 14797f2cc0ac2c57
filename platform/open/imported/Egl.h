// The functions of EGL and OpenGL ES that import DMABUFs. They are looked up through Qt's context,
// because the program also runs where there is no EGL.
#pragma once

#define EGL_NO_X11
#define MESA_EGL_NO_X11_HEADERS
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <QtGui/qopengl.h>

class QOpenGLContext;

struct Egl
{
    // Of the current context. Null: it can import; or why not.
    const char* load(QOpenGLContext& context);

    using ImageTarget = void(QOPENGLF_APIENTRYP)(GLenum target, void* image);

    EGLDisplay display = EGL_NO_DISPLAY;
    PFNEGLCREATEIMAGEKHRPROC createImage = nullptr;
    PFNEGLDESTROYIMAGEKHRPROC destroyImage = nullptr; // any thread
    ImageTarget imageTargetTexture = nullptr;
};
