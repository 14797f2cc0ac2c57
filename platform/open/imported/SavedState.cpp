#include "platform/open/imported/SavedState.h"

#include <QOpenGLFunctions>

namespace {

constexpr std::array<GLenum, 2> kSwitches = {GL_BLEND, GL_SCISSOR_TEST};

} // namespace

SavedState::SavedState(QOpenGLFunctions& gl)
    : m_Gl(gl),
      m_nProgram(get(GL_CURRENT_PROGRAM)),
      m_nBuffer(get(GL_ARRAY_BUFFER_BINDING)),
      m_nFramebuffer(get(GL_FRAMEBUFFER_BINDING)),
      m_nUnit(get(GL_ACTIVE_TEXTURE)),
      m_nAttributeBuffer(getAttribute(GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING)),
      m_nEnabled(getAttribute(GL_VERTEX_ATTRIB_ARRAY_ENABLED)),
      m_nSize(getAttribute(GL_VERTEX_ATTRIB_ARRAY_SIZE)),
      m_nType(getAttribute(GL_VERTEX_ATTRIB_ARRAY_TYPE)),
      m_nNormalized(getAttribute(GL_VERTEX_ATTRIB_ARRAY_NORMALIZED)),
      m_nStride(getAttribute(GL_VERTEX_ATTRIB_ARRAY_STRIDE))
{
    gl.glGetVertexAttribPointerv(0, GL_VERTEX_ATTRIB_ARRAY_POINTER, &m_pPointer);
    gl.glGetIntegerv(GL_VIEWPORT, m_Viewport.data());
    for (size_t i = 0; i < m_Textures.size(); ++i) {
        gl.glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + i));
        m_Textures[i] = get(GL_TEXTURE_BINDING_2D);
    }
    for (size_t i = 0; i < kSwitches.size(); ++i) {
        m_Enabled[i] = gl.glIsEnabled(kSwitches[i]) == GL_TRUE;
        gl.glDisable(kSwitches[i]);
    }
}

SavedState::~SavedState()
{
    m_Gl.glUseProgram(static_cast<GLuint>(m_nProgram));
    m_Gl.glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(m_nFramebuffer));
    m_Gl.glViewport(m_Viewport[0], m_Viewport[1], m_Viewport[2], m_Viewport[3]);
    for (size_t i = 0; i < kSwitches.size(); ++i) {
        if (m_Enabled[i])
            m_Gl.glEnable(kSwitches[i]);
    }
    for (size_t i = 0; i < m_Textures.size(); ++i) {
        m_Gl.glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + i));
        m_Gl.glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(m_Textures[i]));
    }
    m_Gl.glActiveTexture(static_cast<GLenum>(m_nUnit));
    m_Gl.glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(m_nAttributeBuffer));
    m_Gl.glVertexAttribPointer(0, m_nSize, static_cast<GLenum>(m_nType),
                               static_cast<GLboolean>(m_nNormalized), m_nStride, m_pPointer);
    if (!m_nEnabled)
        m_Gl.glDisableVertexAttribArray(0);
    m_Gl.glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(m_nBuffer));
}

GLint SavedState::get(GLenum what) const
{
    GLint value = 0;
    m_Gl.glGetIntegerv(what, &value);
    return value;
}

GLint SavedState::getAttribute(GLenum what) const
{
    GLint value = 0;
    m_Gl.glGetVertexAttribiv(0, what, &value);
    return value;
}
