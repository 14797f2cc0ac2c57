#include "render/CGLWndPlayer.h"

#include "platform/direct_texture.h"

#include <QMutex>
#include <QMutexLocker>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>
#include <QThread>
#include <QWaitCondition>

#include <array>
#include <cstring>

namespace {

constexpr quint32 kNoPhysAddr = 0;
constexpr quint32 kCopyWanted = 0xFFFFFFFF;
constexpr quint32 kPhysUnused = 0xFFFFFFFF;     // tells the driver to map by virtual address
constexpr quintptr kLogicalUnused = 0xFFFFFFC0; // tells it to map by physical address
constexpr int kPlanes = 3;

// A waiting hand-off looks this often whether its thread is to quit.
constexpr unsigned long kInterruptionPollMs = 20;

constexpr int kFirstQuarter = 1;
constexpr int kLastQuarter = 4;

// Labels, in px: four small ones around the centre, or one in the upper right corner.
constexpr int kSmallLabel = 30;
constexpr int kLargeLabel = 50;
constexpr int kLabelGap = 10;

size_t pixelsOf(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height);
}

} // namespace

CGLWndPlayer::CGLWndPlayer(QWidget* parent)
    : QOpenGLWidget(parent),
      m_eFrameFormat(kFormatPacked16),
      m_pMutex(new QMutex),
      m_pWaitCond(new QWaitCondition)
{
}

CGLWndPlayer::~CGLWndPlayer()
{
    if (context())
        disconnect(context(), nullptr, this, nullptr); // QOpenGLWidget deletes it after us
    slotReleaseObjects();
    delete m_pWaitCond;
    delete m_pMutex;
}

int CGLWndPlayer::OnVideoData(int nFormat, unsigned long nPhysAddr, unsigned char* pVirtAddr,
                              int nWidth, int nHeight, void* pUserData)
{
    auto* surface = static_cast<CGLWndPlayer*>(pUserData);
    const QMutexLocker lock(surface->m_pMutex);
    if (surface->m_bRefuse)
        return 0;
    surface->m_nFrameWidth = nWidth;
    surface->m_nFrameHeight = nHeight;
    surface->m_pFrameData = pVirtAddr;
    surface->m_nFramePhys = nPhysAddr;
    surface->m_eFrameFormat = nFormat == 0 ? kFormatPacked16 : kFormatNv12;
    surface->m_bNewFrame = true;
    QMetaObject::invokeMethod(surface, "update", Qt::QueuedConnection);
    surface->waitFrameDrawn();
    return 0;
}

void CGLWndPlayer::waitFrameDrawn()
{
    while (m_bNewFrame && !QThread::currentThread()->isInterruptionRequested())
        m_pWaitCond->wait(m_pMutex, kInterruptionPollMs);
    m_bNewFrame = false; // interrupted: the caller releases the frame now
}

void CGLWndPlayer::wakeFrameDrawn()
{
    const QMutexLocker lock(m_pMutex);
    m_bNewFrame = false;
    m_pWaitCond->wakeAll();
}

void CGLWndPlayer::refuseFrames(bool refuse)
{
    const QMutexLocker lock(m_pMutex);
    m_bRefuse = refuse;
    m_bNewFrame = false;
    m_pWaitCond->wakeAll();
}

void CGLWndPlayer::setSwitch(const int& n)
{
    m_nSwitch = n;
}

void CGLWndPlayer::forgetPicture()
{
    m_bPicture = false;
}

void CGLWndPlayer::resizeGL(int w, int h)
{
    glViewport(0, 0, w, h);
}

void CGLWndPlayer::paintGL()
{
    glClear(GL_COLOR_BUFFER_BIT);
    m_pVideoProgram->bind();
    m_pVideoProgram->setUniformValue(m_nSwitchUniform, m_nSwitch);
    m_pVideoProgram->setUniformValue(m_nVideoUniform, static_cast<GLint>(m_bVideo));
    glActiveTexture(GL_TEXTURE0);
    const bool isNew = hasNewFrame();
    if (isNew) {
        uploadFrame(GL_TEXTURE0, m_nVideoTexture, m_nFrameWidth, m_nFrameHeight, m_pFrameData,
                    m_nFramePhys);
        m_bPicture = true;
    }
    // Texture 0 is sampled as black.
    glBindTexture(GL_TEXTURE_2D, m_bPicture ? m_nVideoTexture : 0);
    drawQuad();
    if (isNew)
        wakeFrameDrawn();
    if (m_bVideo)
        drawLabels();
}

// While a frame is new, the worker waits and leaves the pending frame's members alone.
bool CGLWndPlayer::hasNewFrame()
{
    const QMutexLocker lock(m_pMutex);
    return m_bNewFrame;
}

void CGLWndPlayer::uploadFrame(GLenum textureUnit, GLuint texture, int width, int height,
                               unsigned char* pVirtAddr, unsigned long nPhysAddr)
{
    glActiveTexture(textureUnit);
    glBindTexture(GL_TEXTURE_2D, texture);
    // Physical addresses are 32 bits wide, whatever unsigned long is here.
    const auto phys = static_cast<quint32>(nPhysAddr);
    if (phys == kNoPhysAddr) {
        GLvoid* logical = pVirtAddr;
        const GLuint unused = kPhysUnused;
        glTexDirectVIVMap(GL_TEXTURE_2D, width, height, m_eFrameFormat, &logical, &unused);
    } else if (phys == kCopyWanted) {
        copyFrame(width, height, pVirtAddr);
    } else {
        auto* logical = reinterpret_cast<GLvoid*>(kLogicalUnused);
        const GLuint physical = phys;
        glTexDirectVIVMap(GL_TEXTURE_2D, width, height, m_eFrameFormat, &logical, &physical);
    }
    glTexDirectInvalidateVIV(GL_TEXTURE_2D);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

void CGLWndPlayer::copyFrame(int width, int height, const unsigned char* pVirtAddr)
{
    std::array<GLvoid*, kPlanes> planes = {};
    glTexDirectVIV(GL_TEXTURE_2D, width, height, m_eFrameFormat, planes.data());
    const size_t pixels = pixelsOf(width, height);
    if (!planes[0]) // the GPU refuses this size
        return;
    if (m_eFrameFormat == kFormatPacked16) {
        std::memcpy(planes[0], pVirtAddr, pixels * 2);
    } else if (m_eFrameFormat == kFormatNv12) {
        std::memcpy(planes[0], pVirtAddr, pixels);
        std::memcpy(planes[1], pVirtAddr + pixels, pixels / 2);
    }
}

void CGLWndPlayer::drawQuad()
{
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void CGLWndPlayer::drawLabels()
{
    glActiveTexture(GL_TEXTURE1);
    m_pLabelTexture->bind();
    m_pLabelProgram->bind();
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (m_nSwitch >= kFirstQuarter && m_nSwitch <= kLastQuarter)
        drawViewLabel();
    else
        drawCentreLabels();
    glDisable(GL_BLEND);
    glViewport(0, 0, width(), height());
}

void CGLWndPlayer::drawViewLabel()
{
    constexpr int kInset = kLargeLabel + kLabelGap;
    drawLabel(m_nSwitch - kFirstQuarter, width() - kInset, height() - kInset, kLargeLabel);
}

// Each label is in that corner of its view that is nearest to the centre.
void CGLWndPlayer::drawCentreLabels()
{
    const int left = width() / 2 - kLabelGap - kSmallLabel;
    const int right = width() / 2 + kLabelGap;
    const int upper = height() / 2 + kLabelGap;
    const int lower = height() / 2 - kLabelGap - kSmallLabel;
    drawLabel(0, left, upper, kSmallLabel);
    drawLabel(1, right, upper, kSmallLabel);
    drawLabel(2, left, lower, kSmallLabel);
    drawLabel(3, right, lower, kSmallLabel);
}

// OpenGL counts x and y from the lower left corner.
void CGLWndPlayer::drawLabel(int index, int x, int y, int size)
{
    glViewport(x, y, size, size);
    m_pLabelProgram->setUniformValue(m_nPositionUniform, index);
    drawQuad();
}
