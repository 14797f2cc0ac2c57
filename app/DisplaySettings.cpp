#include "app/DisplaySettings.h"

#include "common/DevicePaths.h"
#include "common/globals.h"
#include "platform/SurfaceFormat.h"

#include <QApplication>
#include <QCursor>
#include <QFont>
#include <QFontDatabase>
#include <QOpenGLContext>
#include <QScreen>

#include <cstdio>

namespace {

constexpr int kFontPixelSize = 20;
constexpr int kDepthBits = 8;
constexpr int kStencilBits = 8;
constexpr int kSamples = 4;

void readScreenSize()
{
    const QRect desktop = QGuiApplication::primaryScreen()->virtualGeometry();
    gScreenW = desktop.width();
    gScreenH = desktop.height();
}

void loadApplicationFont()
{
    const QString path = QString::fromLocal8Bit(DevicePaths::kFont);
    const int id = QFontDatabase::addApplicationFont(path);
    if (id == -1)
        return;
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (families.isEmpty())
        return;
    QFont font(families.first());
    font.setPixelSize(kFontPixelSize);
    QApplication::setFont(font);
}

} // namespace

void ignoreScreenDensity()
{
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
}

void setUpDisplay()
{
    QApplication::setOverrideCursor(QCursor(Qt::BlankCursor));
    readScreenSize();
    loadApplicationFont();
}

void setDefaultSurfaceFormat()
{
    QSurfaceFormat format;
    format.setDepthBufferSize(kDepthBits);
    format.setStencilBufferSize(kStencilBits);
    format.setSamples(kSamples);
    QSurfaceFormat::setDefaultFormat(adaptPlatformSurfaceFormat(format));
}

bool canDrawWithOpenGl()
{
    QOpenGLContext context;
    if (context.create())
        return true;
    std::fprintf(stderr,
                 "quadplayer: platform '%s' cannot draw with OpenGL, which the video needs\n",
                 qPrintable(QGuiApplication::platformName()));
    return false;
}
