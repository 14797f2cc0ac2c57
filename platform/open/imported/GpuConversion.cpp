#include "platform/open/imported/GpuConversion.h"

#include "platform/open/SoftwareRenderer.h"
#include "platform/open/imported/SavedState.h"

#include <QGenericMatrix>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QVector3D>

#include <array>

namespace {

constexpr const char* kVertexShader = R"(
attribute vec2 a_pos;
varying vec2 v_tex;
void main()
{
    gl_Position = vec4(a_pos * 2.0 - 1.0, 0.0, 1.0);
    v_tex = a_pos;
}
)";

// Half precision cannot tell the columns of a wide picture apart.
constexpr const char* kFragmentShader = R"(
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif
varying vec2 v_tex;
uniform sampler2D luma;
uniform sampler2D chroma;
uniform vec3 black;
uniform mat3 toRgb;
void main()
{
    vec3 yuv = vec3(texture2D(luma, v_tex).r, texture2D(chroma, v_tex).rg);
    gl_FragColor = vec4(toRgb * (yuv - black), 1.0);
}
)";

constexpr std::array<GLfloat, 8> kQuad = {0, 0, 1, 0, 0, 1, 1, 1};

// How much red and blue weigh in luma, in the order of Colours::Matrix.
struct Weights
{
    float red;
    float blue;
};
constexpr std::array<Weights, 3> kWeights = {{{.299F, .114F}, {.2126F, .0722F}, {.2627F, .0593F}}};

} // namespace

GpuConversion& GpuConversion::current()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    auto* own = context->findChild<GpuConversion*>(QString(), Qt::FindDirectChildrenOnly);
    return own ? *own : *new GpuConversion(*context);
}

GpuConversion::GpuConversion(QOpenGLContext& context) : QObject(&context)
{
    m_pWhyNot = prepare(context);
}

const char* GpuConversion::prepare(QOpenGLContext& context)
{
    if (const char* whyNot = m_Egl.load(context))
        return whyNot;
    QOpenGLFunctions& gl = *context.functions();
    if (isSoftwareRenderer(reinterpret_cast<const char*>(gl.glGetString(GL_RENDERER))))
        m_pOwner = std::make_unique<DisplayDevice>();
    m_Program.addShaderFromSourceCode(QOpenGLShader::Vertex, kVertexShader);
    m_Program.addShaderFromSourceCode(QOpenGLShader::Fragment, kFragmentShader);
    m_Program.bindAttributeLocation("a_pos", 0);
    const SavedState state(gl);
    if (!m_Program.link() || !m_Program.bind() || !m_Quad.create() || !m_Quad.bind())
        return "no shader";
    m_Quad.allocate(kQuad.data(), sizeof(kQuad));
    m_Program.setUniformValue("chroma", 1);
    gl.glGenFramebuffers(1, &m_nFramebuffer);
    return nullptr;
}

const char* GpuConversion::draw(GstMemory* memory, const Nv12Planes& planes, const Colours& colours,
                                GLuint texture, int width, int height)
{
    if (m_pWhyNot)
        return m_pWhyNot;
    const EglImages& images = EglImages::of(memory, planes, m_Egl, m_pOwner.get());
    if (images.whyNot())
        return images.whyNot();
    QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
    const SavedState state(gl);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_nFramebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    const bool complete = gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (complete) {
        gl.glViewport(0, 0, width, height);
        m_Program.bind();
        useColours(colours);
        drawQuad(images);
    }
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0, 0);
    gl.glFinish(); // the decoder writes to the frame again when it comes back
    return complete ? nullptr : "no framebuffer";
}

// The planes' textures go at once: they would keep the decoder's memory after its pool.
void GpuConversion::drawQuad(const EglImages& images)
{
    QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
    std::array<GLuint, 2> textures = {};
    gl.glGenTextures(2, textures.data());
    for (size_t i = 0; i < textures.size(); ++i) {
        gl.glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + i));
        gl.glBindTexture(GL_TEXTURE_2D, textures[i]);
        m_Egl.imageTargetTexture(GL_TEXTURE_2D, i == 0 ? images.luma() : images.chroma());
        // As libyuv does it: both ways show the same.
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    m_Quad.bind();
    gl.glEnableVertexAttribArray(0);
    gl.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    gl.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    gl.glDeleteTextures(2, textures.data());
}

void GpuConversion::useColours(const Colours& colours)
{
    const Weights weights = kWeights[colours.matrix];
    const float green = 1 - weights.red - weights.blue;
    const float y = colours.fullRange ? 1 : 255 / 219.F;
    const float c = colours.fullRange ? 1 : 255 / 224.F;
    const float toRed = 2 * (1 - weights.red) * c;
    const float toBlue = 2 * (1 - weights.blue) * c;
    const std::array<float, 9> values = {y,
                                         0,
                                         toRed, // by rows
                                         y,
                                         -toBlue * weights.blue / green,
                                         -toRed * weights.red / green,
                                         y,
                                         toBlue,
                                         0};
    m_Program.setUniformValue("toRgb", QMatrix3x3(values.data()));
    m_Program.setUniformValue(
        "black", QVector3D(colours.fullRange ? 0 : 16 / 255.F, 128 / 255.F, 128 / 255.F));
}
