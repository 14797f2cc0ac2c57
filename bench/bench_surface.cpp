// What Qt alone needs to draw a full screen 30 times a second: no player that uses it needs less.
//   bench_surface window   a plain window, without OpenGL
//   bench_surface clear    a QOpenGLWidget, cleared
//   bench_surface draw     the same, drawing a 1080p texture with play.vert and play.frag
//   bench_surface upload   the same, uploading the texture each time
//   bench_surface nap      without Qt: sleeps for 10 ms at a time, as the engine's worker does
// It ends after 20 s. It is yellow, because bench/compare looks for that.
#include <QApplication>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QOpenGLWidget>
#include <QScreen>
#include <QThread>
#include <QTimer>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr int kFrames = 600;
constexpr int kStepMs = 33;
constexpr int kNaps = 2000;
constexpr unsigned long kNapMs = 10;
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

// A triangle strip over the whole viewport: x, y, s, t.
constexpr GLfloat kQuad[] = {-1, 1, 0, 0, -1, -1, 0, 1, 1, 1, 1, 0, 1, -1, 1, 1};
constexpr GLsizei kStride = 4 * sizeof(GLfloat);

class Surface : public QOpenGLWidget, protected QOpenGLFunctions
{
public:
    Surface(QWidget* parent, bool draws, bool uploads)
        : QOpenGLWidget(parent),
          m_draws(draws),
          m_uploads(uploads),
          m_pixels(draws ? size_t(kWidth) * kHeight : 0,
                   qRgb(0, 255, 255)) // RGBA in memory: red and green
    {
    }

protected:
    void initializeGL() override
    {
        initializeOpenGLFunctions();
        glClearColor(1, 1, 0, 1);
        if (!m_draws)
            return;
        m_program = std::make_unique<QOpenGLShaderProgram>();
        m_program->addShaderFromSourceFile(QOpenGLShader::Vertex, ":/shader/play.vert");
        m_program->addShaderFromSourceFile(QOpenGLShader::Fragment, ":/shader/play.frag");
        m_program->link();
        m_program->bind();
        m_program->setUniformValue("b_video", 1);
        m_program->enableAttributeArray("a_pos");
        m_program->enableAttributeArray("a_tex");
        m_program->setAttributeArray("a_pos", kQuad, 2, kStride);
        m_program->setAttributeArray("a_tex", kQuad + 2, 2, kStride);
        glGenTextures(1, &m_texture);
        glBindTexture(GL_TEXTURE_2D, m_texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        upload();
    }
    void paintGL() override
    {
        glClear(GL_COLOR_BUFFER_BIT);
        if (!m_draws)
            return;
        glBindTexture(GL_TEXTURE_2D, m_texture);
        if (m_uploads)
            upload();
        m_program->bind();
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    }

private:
    void upload()
    {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     m_pixels.data());
    }

    bool m_draws;
    bool m_uploads;
    std::vector<quint32> m_pixels;
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    GLuint m_texture = 0;
};

// Without multisampling, as the player has it on a software renderer.
void askForEs()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGLES);
    format.setVersion(2, 0);
    QSurfaceFormat::setDefaultFormat(format);
}

int nap()
{
    for (int i = 0; i < kNaps; ++i)
        QThread::msleep(kNapMs);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    if (qstrcmp(argv[argc - 1], "nap") == 0)
        return nap();
    QApplication app(argc, argv);
    const QString what = QApplication::arguments().value(1);
    askForEs();
    QWidget window;
    window.setPalette(Qt::yellow);
    window.resize(QGuiApplication::primaryScreen()->size());
    QWidget* painted = &window;
    if (what != "window") {
        painted = new Surface(&window, what != "clear", what == "upload");
        painted->setGeometry(window.rect());
    }
    int frames = 0;
    QTimer steps;
    steps.setTimerType(Qt::PreciseTimer);
    QObject::connect(&steps, &QTimer::timeout, &app, [&] {
        painted->update();
        if (++frames == kFrames)
            QApplication::quit();
    });
    window.show();
    steps.start(kStepMs);
    return QApplication::exec();
}
