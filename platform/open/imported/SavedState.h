// Puts back what a pass through a framebuffer of its own changes in OpenGL's state.
#pragma once

#include <QtGui/qopengl.h>

#include <array>

class QOpenGLFunctions;

class SavedState
{
public:
    // Switches off what would keep the pass from writing all pixels as they are.
    explicit SavedState(QOpenGLFunctions& gl);
    ~SavedState();
    SavedState(const SavedState&) = delete;
    SavedState& operator=(const SavedState&) = delete;

private:
    GLint get(GLenum what) const;
    GLint getAttribute(GLenum what) const;

    QOpenGLFunctions& m_Gl;
    const GLint m_nProgram;
    const GLint m_nBuffer;
    const GLint m_nFramebuffer;
    const GLint m_nUnit;
    std::array<GLint, 2> m_Textures = {}; // of the first two units
    std::array<GLint, 4> m_Viewport = {};
    std::array<bool, 2> m_Enabled = {};

    // Of vertex attribute 0.
    const GLint m_nAttributeBuffer;
    const GLint m_nEnabled;
    const GLint m_nSize;
    const GLint m_nType;
    const GLint m_nNormalized;
    const GLint m_nStride;
    void* m_pPointer = nullptr;
};
