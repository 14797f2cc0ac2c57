// CGLWndPlayer's GL objects: made once for each context, released before it goes.
#include "render/CGLWndPlayer.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QOpenGLBuffer>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>
#include <QOpenGLVertexArrayObject>
#include <QResizeEvent>
#include <QTextStream>

#include <cstdio>

namespace {

constexpr GLuint kPositionAttribute = 0;
constexpr GLuint kTextureAttribute = 1;
constexpr GLsizei kStride = 5 * sizeof(GLfloat);
constexpr size_t kTextureOffset = 3 * sizeof(GLfloat);

constexpr int kVideoUnit = 0;
constexpr int kLabelUnit = 1;
constexpr int kDiscardBlack = 1;

// A triangle strip over the whole viewport: x, y, z, s, t. t is 0 at the top, because row 0 of a
// frame is its top row.
constexpr GLfloat kQuad[] = {
    -1.0F, 1.0F,  0.0F, 0.0F, 0.0F, //
    -1.0F, -1.0F, 0.0F, 0.0F, 1.0F, //
    1.0F,  1.0F,  0.0F, 1.0F, 0.0F, //
    1.0F,  -1.0F, 0.0F, 1.0F, 1.0F, //
};

QString readShader(const char* path)
{
    QFile file(QString::fromLatin1(path));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        std::printf("file [%s] does not exist.\n", path);
        return {};
    }
    return QTextStream(&file).readAll();
}

// Links a program from two resources. If that fails, it prints the log, and the program draws
// nothing.
QOpenGLShaderProgram* makeProgram(const char* vertex, const char* fragment, QObject* parent)
{
    auto* program = new QOpenGLShaderProgram(parent);
    program->addShaderFromSourceCode(QOpenGLShader::Vertex, readShader(vertex));
    program->addShaderFromSourceCode(QOpenGLShader::Fragment, readShader(fragment));
    program->bindAttributeLocation("a_pos", kPositionAttribute);
    program->bindAttributeLocation("a_tex", kTextureAttribute);
    if (!program->link())
        qDebug() << program->log();
    return program;
}

void releaseProgram(QOpenGLShaderProgram*& program)
{
    if (!program)
        return;
    program->release();
    delete program;
    program = nullptr;
}

template <typename Object> void destroyAndDelete(Object*& object)
{
    if (!object)
        return;
    object->destroy();
    delete object;
    object = nullptr;
}

} // namespace

void CGLWndPlayer::initializeGL()
{
    initializeOpenGLFunctions();
    // These objects go with the context: using one afterwards ends the program.
    connect(context(), SIGNAL(aboutToBeDestroyed()), this, SLOT(slotReleaseObjects()),
            Qt::UniqueConnection);
    makeQuad();
    makeVideoProgram();
    makeLabelProgram();
    makeVideoTexture();
    setUpAttributes();
    makeLabelTexture();
}

void CGLWndPlayer::makeQuad()
{
    if (!m_pVao) {
        m_pVao = new QOpenGLVertexArrayObject(this);
        m_pVao->create();
    }
    m_pVao->bind();
    if (m_pVbo)
        return;
    m_pVbo = new QOpenGLBuffer(QOpenGLBuffer::VertexBuffer);
    m_pVbo->create();
    m_pVbo->bind();
    m_pVbo->setUsagePattern(QOpenGLBuffer::StaticDraw);
    m_pVbo->allocate(kQuad, sizeof kQuad);
}

void CGLWndPlayer::makeVideoProgram()
{
    if (!m_pVideoProgram)
        m_pVideoProgram = makeProgram(":/shader/play.vert", ":/shader/play.frag", this);
    m_pVideoProgram->bind();
    m_pVideoProgram->setUniformValue("u_tex0", kVideoUnit);
    m_nSwitchUniform = m_pVideoProgram->uniformLocation("u_switch");
    m_nVideoUniform = m_pVideoProgram->uniformLocation("b_video");
}

void CGLWndPlayer::makeLabelProgram()
{
    if (!m_pLabelProgram)
        m_pLabelProgram = makeProgram(":/shader/mu.vert", ":/shader/mu.frag", this);
    m_pLabelProgram->bind();
    m_pLabelProgram->setUniformValue("stexMenu", kLabelUnit);
    m_pLabelProgram->setUniformValue("uBlend", kDiscardBlack);
    m_nPositionUniform = m_pLabelProgram->uniformLocation("u_position");
}

void CGLWndPlayer::makeVideoTexture()
{
    if (m_nVideoTexture == 0)
        glGenTextures(1, &m_nVideoTexture);
}

void CGLWndPlayer::setUpAttributes()
{
    m_pVao->bind();
    m_pVbo->bind();
    glVertexAttribPointer(kPositionAttribute, 3, GL_FLOAT, GL_FALSE, kStride, nullptr);
    glVertexAttribPointer(kTextureAttribute, 2, GL_FLOAT, GL_FALSE, kStride,
                          reinterpret_cast<const void*>(kTextureOffset));
    glEnableVertexAttribArray(kPositionAttribute);
    glEnableVertexAttribArray(kTextureAttribute);
}

void CGLWndPlayer::makeLabelTexture()
{
    if (!m_pLabelTexture)
        m_pLabelTexture = new QOpenGLTexture(QImage(QStringLiteral(":/image/text.png")),
                                             QOpenGLTexture::GenerateMipMaps);
    m_pLabelTexture->setWrapMode(QOpenGLTexture::ClampToEdge);
    m_pLabelTexture->setMinificationFilter(QOpenGLTexture::Linear);
    m_pLabelTexture->setMagnificationFilter(QOpenGLTexture::Linear);
}

// Not on eglfs, which makes a new context when the surface is first shown.
void CGLWndPlayer::prepare()
{
    if (isValid() || QGuiApplication::platformName() == QLatin1String("eglfs"))
        return;
    QResizeEvent firstShow(size(), size()); // makes QOpenGLWidget create its context
    QCoreApplication::sendEvent(this, &firstShow);
    m_bVideo = true; // compiles the labels' program, too
    grabFramebuffer();
    m_bVideo = false;
}

void CGLWndPlayer::slotReleaseObjects()
{
    m_bPicture = false;
    makeCurrent();
    releaseProgram(m_pVideoProgram);
    releaseProgram(m_pLabelProgram);
    if (m_nVideoTexture != 0) {
        glDeleteTextures(1, &m_nVideoTexture);
        m_nVideoTexture = 0;
    }
    destroyAndDelete(m_pVao);
    destroyAndDelete(m_pVbo);
    if (m_pLabelTexture)
        m_pLabelTexture->release();
    destroyAndDelete(m_pLabelTexture);
    doneCurrent();
}
