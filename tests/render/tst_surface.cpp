// The video surface: pixels of every view, and the hand-off.
#include "platform/SurfaceFormat.h"
#include "platform/host/PhysBlock.h"
#include "render/CGLWndPlayer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QtTest>

#include <memory>
#include <vector>

namespace {

constexpr int kLimitMs = 10000;
constexpr QSize kSurface(320, 240);
constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr unsigned long kCopy = 0xFFFFFFFF;

struct Colour
{
    const char* name;
    unsigned char y, u, v;
};

// By quarter: front, rear, left, right. BT.601, limited range.
constexpr Colour kQuarters[] = {
    {"red", 81, 90, 240}, {"green", 145, 54, 34}, {"blue", 41, 240, 110}, {"white", 235, 128, 128}};

const Colour& colourAt(int x, int y)
{
    return kQuarters[(y < kHeight / 2 ? 0 : 2) + (x < kWidth / 2 ? 0 : 1)];
}

std::vector<unsigned char> nv12Frame()
{
    std::vector<unsigned char> frame;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            frame.push_back(colourAt(x, y).y);
    for (int y = 0; y < kHeight; y += 2)
        for (int x = 0; x < kWidth; x += 2) {
            frame.push_back(colourAt(x, y).u);
            frame.push_back(colourAt(x, y).v);
        }
    return frame;
}

std::vector<unsigned char> packedFrame()
{
    std::vector<unsigned char> frame;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const Colour& colour = colourAt(x, y);
            frame.push_back(colour.y);
            frame.push_back(x % 2 == 0 ? colour.u : colour.v);
        }
    return frame;
}

QString nameOf(const QColor& colour)
{
    const auto high = [](int part) { return part > 170 ? '1' : part < 85 ? '0' : '?'; };
    const QString bits = QString("%1%2%3")
                             .arg(high(colour.red()))
                             .arg(high(colour.green()))
                             .arg(high(colour.blue()));
    const QHash<QString, QString> names = {
        {"100", "red"}, {"010", "green"}, {"001", "blue"}, {"111", "white"}, {"000", "black"}};
    return names.value(bits, colour.name());
}

// The middle of each quarter of the picture, from the upper left to the lower right.
QString quartersOf(const QImage& picture)
{
    QStringList names;
    for (const QPoint& at : {QPoint(80, 60), QPoint(240, 60), QPoint(80, 180), QPoint(240, 180)})
        names << nameOf(picture.pixelColor(at));
    names.removeDuplicates();
    return names.join(' ');
}

// How many pixels of an area differ from its corner: 0 where no label stands.
int drawnIn(const QImage& picture, const QRect& area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += picture.pixel(x, y) != picture.pixel(area.topLeft()) ? 1 : 0;
    return count;
}

// A hand-off on a thread of its own, as the engine makes it.
class HandOff
{
public:
    HandOff(CGLWndPlayer& surface, int format, unsigned long phys, unsigned char* data)
        : m_thread(QThread::create([=, &surface] {
              CGLWndPlayer::OnVideoData(format, phys, data, kWidth, kHeight, &surface);
          }))
    {
        m_thread->start();
    }
    ~HandOff()
    {
        m_thread->requestInterruption();
        m_thread->wait();
    }
    bool ends() const
    {
        return QTest::qWaitFor([this] { return m_thread->isFinished(); }, kLimitMs);
    }
    bool waits() const // a wait that ends at once would show within this time
    {
        return !QTest::qWaitFor([this] { return m_thread->isFinished(); }, 200);
    }
    void interrupt() { m_thread->requestInterruption(); }

private:
    std::unique_ptr<QThread> m_thread;
};

} // namespace

class tst_surface : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void greyWithoutVideo();
    void drawsEachView_data();
    void drawsEachView();
    void labelsStandInTheirCorners();
    void viewChangesWithoutNewFrame();
    void forgottenPictureIsBlack();
    void hiddenHandOffEndsWhenShown();
    void handOffEndsWhenWoken();
    void interruptedHandOffIsNotDrawn();

private:
    QImage picture() { return m_surface->grabFramebuffer(); }
    void drawFrame(int format, unsigned long phys, unsigned char* data)
    {
        QVERIFY(HandOff(*m_surface, format, phys, data).ends());
    }

    std::unique_ptr<QWidget> m_window;
    CGLWndPlayer* m_surface = nullptr;
    std::vector<unsigned char> m_nv12;
    std::vector<unsigned char> m_packed = packedFrame();
};

void tst_surface::init()
{
    m_nv12 = nv12Frame();
    m_window = std::make_unique<QWidget>();
    m_window->resize(kSurface);
    m_surface = new CGLWndPlayer(m_window.get());
    m_surface->setGeometry(QRect(QPoint(0, 0), kSurface));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get(), kLimitMs));
}

void tst_surface::cleanup()
{
    m_window.reset();
}

void tst_surface::greyWithoutVideo()
{
    QCOMPARE(picture().pixelColor(5, 5), QColor(18, 18, 28));
    drawFrame(1, 0, m_nv12.data()); // released although it is not shown
    const QImage grey = picture();
    QCOMPARE(grey.pixelColor(80, 60), QColor(18, 18, 28));
    QCOMPARE(drawnIn(grey, grey.rect()), 0); // and no label
}

void tst_surface::drawsEachView_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("view");
    QTest::addColumn<QString>("shows");
    const char* shows[] = {"red green blue white", "red", "green", "blue", "white",
                           "red green blue white"};
    for (int view = 0; view <= 5; ++view)
        QTest::addRow("NV12 by physical address, view %d", view)
            << 1 << "physical" << view << shows[view];
    for (const int format : {0, 1, 7}) {
        const char* layout = format == 0 ? "packed" : "NV12";
        QTest::addRow("%s by virtual address, format %d", layout, format)
            << format << "virtual" << 0 << shows[0];
        QTest::addRow("%s copied, format %d", layout, format) << format << "copy" << 2 << shows[2];
    }
}

void tst_surface::drawsEachView()
{
    QFETCH(int, format);
    QFETCH(QString, path);
    QFETCH(int, view);
    QFETCH(QString, shows);
    std::vector<unsigned char>& frame = format == 0 ? m_packed : m_nv12;
    const auto block = PhysBlock::make(frame.size());
    std::copy(frame.begin(), frame.end(), block->data());

    m_surface->m_bVideo = true;
    m_surface->setSwitch(view);
    if (path == "physical")
        drawFrame(format, block->physical(), nullptr);
    else
        drawFrame(format, path == "copy" ? kCopy : 0, frame.data());
    QCOMPARE(quartersOf(picture()), shows);
}

void tst_surface::labelsStandInTheirCorners()
{
    m_surface->m_bVideo = true;
    std::fill(m_nv12.begin(), m_nv12.begin() + kWidth * kHeight, 16); // black: labels are plain
    std::fill(m_nv12.begin() + kWidth * kHeight, m_nv12.end(), 128);
    drawFrame(1, 0, m_nv12.data());
    QImage whole = picture();
    const QRect small[] = {
        {120, 80, 30, 30}, {170, 80, 30, 30}, {120, 130, 30, 30}, {170, 130, 30, 30}};
    int drawn = 0;
    for (const QRect& label : small) {
        QVERIFY(drawnIn(whole, label) > 50);
        drawn += drawnIn(whole, label);
    }
    QCOMPARE(drawnIn(whole, whole.rect()), drawn); // nothing anywhere else

    QList<QImage> large;
    for (int view = 1; view <= 4; ++view) {
        m_surface->setSwitch(view);
        const QImage one = picture();
        large << one.copy(260, 10, 50, 50);
        QVERIFY(drawnIn(large.last(), large.last().rect()) > 100);
        QCOMPARE(drawnIn(one, one.rect()), drawnIn(large.last(), large.last().rect()));
        QCOMPARE(large.indexOf(large.last()), view - 1); // each view has a label of its own
    }
}

void tst_surface::viewChangesWithoutNewFrame()
{
    m_surface->m_bVideo = true;
    drawFrame(1, 0, m_nv12.data());
    m_surface->setSwitch(4);
    QCOMPARE(quartersOf(picture()), QStringLiteral("white"));
    m_surface->m_bVideo = false;
    QCOMPARE(picture().pixelColor(80, 60), QColor(18, 18, 28));
}

void tst_surface::forgottenPictureIsBlack()
{
    m_surface->m_bVideo = true;
    drawFrame(1, 0, m_nv12.data());
    m_surface->forgetPicture();
    QCOMPARE(quartersOf(picture()), QStringLiteral("black"));
    drawFrame(1, 0, m_nv12.data());
    QCOMPARE(quartersOf(picture()), QStringLiteral("red green blue white"));
}

void tst_surface::hiddenHandOffEndsWhenShown()
{
    m_window->hide();
    const HandOff handOff(*m_surface, 1, 0, m_nv12.data());
    QVERIFY(handOff.waits());
    m_window->show();
    m_surface->update();
    QVERIFY(handOff.ends());
}

void tst_surface::handOffEndsWhenWoken()
{
    m_window->hide();
    const HandOff handOff(*m_surface, 1, 0, m_nv12.data());
    QVERIFY(handOff.waits());
    m_surface->wakeFrameDrawn();
    QVERIFY(handOff.ends());
}

void tst_surface::interruptedHandOffIsNotDrawn()
{
    m_surface->m_bVideo = true;
    m_window->hide();
    HandOff handOff(*m_surface, 1, 0, m_nv12.data());
    QVERIFY(handOff.waits());
    handOff.interrupt();
    QVERIFY(handOff.ends());
    m_nv12 = {}; // what the engine does with the frame's memory
    m_window->show();
    QCOMPARE(quartersOf(picture()), QStringLiteral("black"));
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(adaptPlatformSurfaceFormat(QSurfaceFormat()));
    tst_surface test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_surface.moc"
