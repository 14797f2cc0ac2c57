// Draws what the four cameras of a car would see on a drive, and writes it to standard output as
// raw I420 frames with a 2 x 2 picture: front, rear, left, right. Each picture is a function of the
// time, so every run makes the same ones.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QVector>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <libyuv.h>

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
constexpr int kFps = 25;
constexpr int kStartOfDay = 7 * 3600 + 30 * 60; // the clocks in the pictures start at half past 7
constexpr QRectF kView(0, 0, kWidth / 2.0, kHeight / 2.0);

// A camera 1.4 m above the ground; lengths in metres, the picture's unit is the pixel.
constexpr double kHorizon = 150;
constexpr double kFocal = 300;
constexpr double kCameraHeight = 1.4;
constexpr double kFarAway = 250;

struct Scene
{
    const char* name;
    QRgb skyTop, skyLow, hills, ground, road, paint;
    double speed; // metres per second
};

const Scene kScenes[] = {
    {"motorway", 0x3f86c9, 0xc7e2f2, 0x6f93a0, 0x7fa650, 0x585c60, 0xf4f4f0, 31},
    {"town", 0x8c98a4, 0xd9dcdc, 0x8d8f8a, 0x9c978a, 0x4d4f52, 0xf0eee4, 11},
    {"night", 0x060912, 0x1d2740, 0x0c1220, 0x10180f, 0x24262b, 0xb9b48c, 22},
    {"country", 0x5aa0d8, 0xf3ead2, 0x7c9a6a, 0xb7a552, 0x6a645c, 0xf8f4e8, 19},
    {"evening", 0x3b3f78, 0xf0a46a, 0x55405f, 0x6a6a48, 0x48444c, 0xf2dcb8, 15},
};

QPointF project(double across, double up, double away)
{
    return {kView.center().x() + kFocal * across / away,
            kHorizon + kFocal * (kCameraHeight - up) / away};
}

void drawUpright(QPainter& p, double across, double away, double width, double low, double high)
{
    p.drawRect(
        QRectF(project(across - width / 2, high, away), project(across + width / 2, low, away)));
}

void drawStripe(QPainter& p, double across, double width, double nearEnd, double farEnd)
{
    const double from = std::max(nearEnd, 1.0);
    if (farEnd > from) {
        p.drawConvexPolygon(QPolygonF(
            {project(across - width / 2, 0, from), project(across + width / 2, 0, from),
             project(across + width / 2, 0, farEnd), project(across - width / 2, 0, farEnd)}));
    }
}

void drawTree(QPainter& p, QRgb leaves, double across, double away)
{
    p.setBrush(QColor(leaves).darker(220));
    drawUpright(p, across, away, 0.5, 0, 2.5);
    p.setBrush(QColor(leaves).darker(150));
    p.drawEllipse(project(across, 4.5, away), kFocal * 2.0 / away, kFocal * 2.6 / away);
}

void drawHouse(QPainter& p, QRgb walls, double across, double away)
{
    p.setBrush(QColor(walls));
    drawUpright(p, across, away, 8, 0, 4);
    p.setBrush(QColor(walls).darker(170));
    p.drawConvexPolygon(QPolygonF({project(across - 4.5, 4, away), project(across + 4.5, 4, away),
                                   project(across, 7, away)}));
    drawUpright(p, across - 2, away, 1.4, 1.2, 2.8);
    drawUpright(p, across + 2, away, 1.4, 1.2, 2.8);
}

void drawCar(QPainter& p, QRgb body, QRgb lamps, double across, double away)
{
    p.setBrush(QColor(body));
    drawUpright(p, across, away, 1.8, 0.25, 0.95);
    p.setBrush(QColor(body).darker(160));
    drawUpright(p, across, away, 1.4, 0.95, 1.5);
    p.setBrush(QColor(lamps));
    drawUpright(p, across - 0.7, away, 0.3, 0.6, 0.8);
    drawUpright(p, across + 0.7, away, 0.3, 0.6, 0.8);
}

void drawBackground(QPainter& p, const Scene& scene, double drift)
{
    QLinearGradient sky(0, 0, 0, kHorizon);
    sky.setColorAt(0, scene.skyTop);
    sky.setColorAt(1, scene.skyLow);
    p.fillRect(kView, QColor(scene.ground));
    p.fillRect(QRectF(0, 0, kView.width(), kHorizon), sky);
    QPolygonF hills;
    hills << QPointF(kView.width(), kHorizon) << QPointF(0, kHorizon);
    for (double x = 0; x <= kView.width(); x += 8) {
        const double at = (x + drift) / 90;
        hills << QPointF(x, kHorizon - 22 - 12 * std::sin(at) - 7 * std::sin(2.3 * at + 1));
    }
    p.setBrush(QColor(scene.hills));
    p.drawPolygon(hills);
}

// Draws the road ahead. `travelled` grows for the front camera and shrinks for the rear one.
void drawRoad(QPainter& p, const Scene& scene, double travelled)
{
    constexpr double kTreeGap = 20;
    constexpr double kDashGap = 12;
    const double firstTree = kTreeGap - std::fmod(travelled, kTreeGap);
    for (double away = firstTree + 8 * kTreeGap; away > 3; away -= kTreeGap) {
        drawTree(p, scene.ground, -11, away);
        drawTree(p, scene.ground, 12, away + kTreeGap / 2);
    }
    p.setBrush(QColor(scene.road));
    drawStripe(p, 0, 10.5, 1, kFarAway);
    p.setBrush(QColor(scene.paint));
    drawStripe(p, -5, 0.2, 1, kFarAway);
    drawStripe(p, 5, 0.2, 1, kFarAway);
    for (double away = -std::fmod(travelled, kDashGap); away < 120; away += kDashGap) {
        drawStripe(p, -1.75, 0.15, away, away + 4);
        drawStripe(p, 1.75, 0.15, away, away + 4);
    }
}

using DrawSight = void (*)(QPainter&, QRgb, double, double);

// Draws what passes by beside the road; the nearer it is, the faster it passes.
void drawRoadside(QPainter& p, const Scene& scene, double travelled, DrawSight drawSight,
                  QRgb colour)
{
    const auto passBy = [&](double away, double gap, const auto& draw) {
        const double reach = kView.width() / 2 * away / kFocal + 4;
        const double first = std::fmod(travelled, gap) - gap * std::ceil(2 * reach / gap);
        for (double across = first; across < reach; across += gap) {
            draw(across, away);
        }
    };
    passBy(40, 14, [&](double x, double away) { drawTree(p, scene.ground, x, away); });
    passBy(22, 17, [&](double x, double away) { drawSight(p, colour, x, away); });
    p.setBrush(QColor(scene.road));
    p.drawRect(QRectF(QPointF(0, project(0, 0, 7).y()), kView.bottomRight()));
    p.setBrush(QColor(scene.paint));
    passBy(5, 9, [&](double x, double away) { drawUpright(p, x, away, 3, 0, 0.06); });
    passBy(8, 4, [&](double x, double away) { drawUpright(p, x, away, 0.12, 0, 0.8); });
    p.drawRect(
        QRectF(QPointF(0, project(0, 0.8, 8).y()), QPointF(kView.width(), project(0, 0.5, 8).y())));
}

void drawTimeCode(QPainter& p, const char* camera, int frame)
{
    const int second = kStartOfDay + frame / kFps;
    const QRectF band(kView.width() / 2 - 170, 12, 340, 32);
    p.fillRect(band, QColor(0, 0, 0, 140));
    p.setPen(Qt::white);
    p.drawText(band, Qt::AlignCenter,
               QString::asprintf("%s  %02d:%02d:%02d:%02d", camera, second / 3600, second / 60 % 60,
                                 second % 60, frame % kFps));
    p.setPen(Qt::NoPen);
}

void drawCamera(QPainter& p, const Scene& scene, int camera, int frame)
{
    constexpr double kLongWay = 100000; // keeps fmod() positive for the cameras that look back
    const double seconds = frame / double(kFps);
    const double ahead = scene.speed * seconds;
    const double back = kLongWay - ahead;
    const double sway = 40 * std::sin(seconds / 5);
    const double across = 0.3 * std::sin(seconds / 2);
    switch (camera) {
    case 0:
        drawBackground(p, scene, sway);
        drawRoad(p, scene, ahead);
        drawCar(p, 0xb8bcc0, 0xd02020, across, 16 + 5 * std::sin(seconds / 3));
        break;
    case 1:
        drawBackground(p, scene, 300 - sway);
        drawRoad(p, scene, back);
        drawCar(p, 0x2c5f9e, 0xfff3c0, -across, 11 + 3 * std::sin(seconds / 4));
        break;
    case 2:
        drawBackground(p, scene, 3 * ahead);
        drawRoadside(p, scene, back, drawTree, scene.ground);
        break;
    default:
        drawBackground(p, scene, -3 * ahead);
        drawRoadside(p, scene, ahead, drawHouse, scene.paint);
    }
}

void drawFrame(QPainter& p, const Scene& scene, int frame)
{
    const char* const names[] = {"FRONT", "REAR", "LEFT", "RIGHT"};
    for (int camera = 0; camera < 4; ++camera) {
        p.resetTransform();
        p.translate(camera % 2 * kView.width(), camera / 2 * kView.height());
        p.setClipRect(kView);
        drawCamera(p, scene, camera, frame);
        drawTimeCode(p, names[camera], frame);
    }
}

bool writeFrame(const QImage& image)
{
    static QVector<uint8_t> planes(kWidth * kHeight * 3 / 2);
    uint8_t* y = planes.data();
    uint8_t* u = y + kWidth * kHeight;
    uint8_t* v = u + kWidth * kHeight / 4;
    libyuv::ARGBToI420(image.constBits(), image.bytesPerLine(), y, kWidth, u, kWidth / 2, v,
                       kWidth / 2, kWidth, kHeight);
    return fwrite(planes.constData(), planes.size(), 1, stdout) == 1;
}

int record(const Scene& scene, int seconds)
{
    QImage image(kWidth, kHeight, QImage::Format_RGB32);
    QPainter p(&image);
    QFont font = p.font();
    font.setPixelSize(24);
    p.setFont(font);
    p.setPen(Qt::NoPen);
    p.setRenderHint(QPainter::Antialiasing);
    for (int frame = 0; frame < seconds * kFps; ++frame) {
        drawFrame(p, scene, frame);
        if (!writeFrame(image)) {
            return EXIT_FAILURE;
        }
        if (frame % (5 * kFps) == 0) {
            fprintf(stderr, "\r  %-9s %3d of %d s", scene.name, frame / kFps, seconds);
        }
    }
    fprintf(stderr, "\r  %-9s %3d of %d s\n", scene.name, seconds, seconds);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "minimal:enable_fonts"); // text needs fonts, not a display
    QGuiApplication app(argc, argv);
    for (const Scene& scene : kScenes) {
        if (argc == 3 && strcmp(argv[1], scene.name) == 0 && atoi(argv[2]) > 0) {
            return record(scene, atoi(argv[2]));
        }
    }
    fprintf(stderr, "usage: recorder SCENE SECONDS > FRAMES.i420, where SCENE is one of\n");
    for (const Scene& scene : kScenes) {
        fprintf(stderr, "  %s\n", scene.name);
    }
    return EXIT_FAILURE;
}
