// Draws the NV12 planes of DMABUFs into textures, in one OpenGL context: the renderer reads them
// where they lie. Lives in the thread of its context and dies with it.
#pragma once

#include "platform/open/Colours.h"
#include "platform/open/imported/DisplayDevice.h"
#include "platform/open/imported/EglImages.h"

#include <QObject>
#include <QOpenGLBuffer>
#include <QOpenGLShaderProgram>

#include <memory>

class GpuConversion : public QObject
{
    Q_OBJECT

public:
    // That of the current context.
    static GpuConversion& current();

    // Into `texture`, which has RGBA storage of this size; `memory` is that of the first plane. Has
    // read the planes when it returns, and leaves OpenGL's state as it was. Null: done; or why not.
    const char* draw(GstMemory* memory, const Nv12Planes& planes, const Colours& colours,
                     GLuint texture, int width, int height);

private:
    explicit GpuConversion(QOpenGLContext& context);
    const char* prepare(QOpenGLContext& context);
    void useColours(const Colours& colours);
    void drawQuad(const EglImages& images);

    Egl m_Egl;
    std::unique_ptr<DisplayDevice> m_pOwner; // only a software renderer needs one
    QOpenGLShaderProgram m_Program;
    QOpenGLBuffer m_Quad;
    GLuint m_nFramebuffer = 0; // goes with the context
    const char* m_pWhyNot = nullptr;
};
