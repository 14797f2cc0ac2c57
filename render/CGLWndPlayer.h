// The video surface: draws the current frame, whole or one quarter of it, and the view labels.
//
// Thread          Runs here
// GUI thread      everything but OnVideoData()
// engine worker   OnVideoData(): stores a frame and waits until paintGL() has drawn it
//
// Lock: m_pMutex guards the pending frame and m_bNewFrame; m_pWaitCond belongs to it. It is never
// held while drawing, nor together with a lock of the engine. At most one frame is pending. The
// worker's wait ends when the frame is drawn, by wakeFrameDrawn(), when frames are refused, or when
// its QThread is asked to interrupt; then the frame is dropped, because its memory may go.
//
// The widget gets a new context when it moves to another window, and on eglfs when it is first
// shown. GL objects belong to one context: we release them before it goes and make new ones. A
// frame that waits meanwhile is drawn by the next context; the old picture is gone.
//
// Sizes in px. Needs the resources :/shader/ and :/image/text.png.
#pragma once

#include <QOpenGLFunctions>
#include <QOpenGLWidget>

class QMutex;
class QOpenGLBuffer;
class QOpenGLShaderProgram;
class QOpenGLTexture;
class QOpenGLVertexArrayObject;
class QWaitCondition;

class CGLWndPlayer : public QOpenGLWidget, protected QOpenGLFunctions
{
    Q_OBJECT

public:
    explicit CGLWndPlayer(QWidget* parent);
    ~CGLWndPlayer() override;

    // The hand-off (a VideoDataCallback); pUserData is the surface. nFormat 0: packed 16-bit, else
    // NV12. nPhysAddr 0: only pVirtAddr is known; all ones: copy the frame. Returns 0 after the
    // frame has been drawn or dropped.
    static int OnVideoData(int nFormat, unsigned long nPhysAddr, unsigned char* pVirtAddr,
                           int nWidth, int nHeight, void* pUserData);

    // 1 to 4: one quarter of the frame (front, rear, left, right); else the whole frame. Does not
    // repaint, and neither does a write to m_bVideo: call update() to show it at once.
    void setSwitch(const int& n);
    int viewMode() const { return m_nSwitch; }

    void wakeFrameDrawn(); // ends a waiting hand-off
    void forgetPicture();  // the picture is black until the next frame

    // While frames are refused, every hand-off returns at once, and its frame is not drawn.
    void refuseFrames(bool refuse);

    // Makes the context and draws once while the surface is hidden, so that the first picture does
    // not wait for the driver's compilers. Takes 0.2 s on a software renderer.
    void prepare();

protected:
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;

private slots:
    void slotReleaseObjects(); // the context is about to go

private:
    void makeQuad();
    void makeVideoProgram();
    void makeLabelProgram();
    void makeVideoTexture();
    void setUpAttributes();
    void makeLabelTexture();

    void waitFrameDrawn(); // worker; called locked
    bool hasNewFrame();
    void uploadFrame(GLenum textureUnit, GLuint texture, int width, int height,
                     unsigned char* pVirtAddr, unsigned long nPhysAddr);
    void copyFrame(int width, int height, const unsigned char* pVirtAddr);
    void drawQuad();
    void drawLabels();
    void drawViewLabel();
    void drawCentreLabels();
    void drawLabel(int index, int x, int y, int size);

    // GUI thread, made by initializeGL().
    QOpenGLShaderProgram* m_pVideoProgram = nullptr;
    QOpenGLShaderProgram* m_pLabelProgram = nullptr;
    GLuint m_nVideoTexture = 0;
    QOpenGLVertexArrayObject* m_pVao = nullptr;
    QOpenGLBuffer* m_pVbo = nullptr;
    QOpenGLTexture* m_pLabelTexture = nullptr;

    // Pending frame: under m_pMutex, or in the GUI thread while m_bNewFrame holds.
    unsigned char* m_pFrameData = nullptr;
    unsigned long m_nFramePhys = 0;
    int m_nFrameWidth = -1;
    int m_nFrameHeight = -1;
    GLenum m_eFrameFormat;

    int m_nSwitch = 0;        // GUI thread
    bool m_bNewFrame = false; // under m_pMutex

public:
    bool m_bVideo = false; // video is on; grey without labels while false; GUI thread

private:
    QMutex* m_pMutex;
    QWaitCondition* m_pWaitCond;

    bool m_bRefuse = false;  // under m_pMutex
    bool m_bPicture = false; // GUI thread: the texture holds a frame that may be shown

    // Locations of the uniforms that paintGL() sets.
    int m_nSwitchUniform = -1;
    int m_nVideoUniform = -1;
    int m_nPositionUniform = -1;
};
