// The video surface: pixels of every view, the hand-off, and the pictures that are compiled in.
#include "platform/SurfaceFormat.h"
#include "platform/open/FrameCounters.h"
#include "platform/open/copied/PhysBlock.h"
#include "platform/open/imported/DmabufFrame.h"
#include "player/CPlayer.h"
#include "render/CGLWndPlayer.h"
#include "tests/Rows.h"

#include <QBitmap>
#include <QtTest>

#include <memory>
#include <vector>

#include <gst/allocators/gstdmabuf.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr int kLimitMs = QP_LIMIT_MS;
constexpr int kWidth = 64;
constexpr int kHeight = 192; // more rows than are uploaded at once
constexpr int kPixels = kWidth * kHeight;
constexpr unsigned long kCopy = 0xFFFFFFFF;

using Bytes = std::vector<unsigned char>;

// Y, U and V of red, green, blue and white: front, rear, left and right. BT.601, limited range.
constexpr unsigned char kQuarters[][3] = {
    {81, 90, 240}, {145, 54, 34}, {41, 240, 110}, {235, 128, 128}};

Bytes frameOf(int format, int height = kHeight)
{
    const bool packed = format == 0;
    const int pixels = kWidth * height;
    Bytes frame(packed ? pixels * 2 : pixels * 3 / 2);
    for (int at = 0; at < pixels; ++at) {
        const int x = at % kWidth;
        const int y = at / kWidth;
        const auto& yuv = kQuarters[(y < height / 2 ? 0 : 2) + (x < kWidth / 2 ? 0 : 1)];
        frame[packed ? at * 2 : at] = yuv[0];
        frame[packed ? at * 2 + 1 : pixels + y / 2 * kWidth + x] = yuv[1 + x % 2];
    }
    return frame;
}

// The NV12 frame as an open decoder delivers it: in DMABUFs, with padded rows. A descriptor of
// memory has all of a DMABUF that is needed where EGL cannot import it.
std::shared_ptr<PhysFrame> dmabufFrameOf(const Bytes& frame, bool oneForEachPlane)
{
    constexpr int kStride = kWidth + 32;
    constexpr size_t kLuma = kStride * kHeight;
    GstAllocator* allocator = gst_dmabuf_allocator_new();
    GstBuffer* buffer = gst_buffer_new();
    std::vector<size_t> sizes{kLuma * 3 / 2};
    if (oneForEachPlane)
        sizes = {kLuma, kLuma / 2};
    for (const size_t size : sizes) {
        const int fd = memfd_create("planes", MFD_CLOEXEC);
        if (ftruncate(fd, static_cast<off_t>(size)) == 0)
            gst_buffer_append_memory(buffer, gst_dmabuf_allocator_alloc(allocator, fd, size));
    }
    gst_object_unref(allocator);
    for (size_t row = 0; row < kHeight * 3 / 2; ++row)
        gst_buffer_fill(buffer, row * kStride, &frame[row * kWidth], kWidth);
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0, kLuma};
    gint strides[GST_VIDEO_MAX_PLANES] = {kStride, kStride};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, kWidth,
                                   kHeight, 2, offsets, strides);
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_NV12, kWidth, kHeight);
    std::shared_ptr<PhysFrame> wrapped = DmabufFrame::make(buffer, *frameLayoutOf(buffer, info));
    gst_buffer_unref(buffer);
    wrapped->setStream(1);
    return wrapped;
}

// Which label, white on black, fills the area; -1: none. With another label or size, the average
// pixel differs by at least 30 levels of brightness.
int labelIn(const QImage& area)
{
    const QImage labels(":/image/text.png");
    const int side = labels.height();
    for (int index = 0; index < 4; ++index) {
        const QImage label = labels.copy(index * side, 0, side, side).scaled(area.size());
        int off = 0;
        for (int at = 0; at < area.width() * area.height(); ++at) {
            const QPoint pixel(at % area.width(), at / area.width());
            off += qAbs(qRed(area.pixel(pixel)) - qAlpha(label.pixel(pixel)));
        }
        if (off < area.width() * area.height() * 10)
            return index;
    }
    return -1;
}

// The pixels that differ from the upper left one: the labels, on a plain picture.
QRegion drawnIn(const QImage& picture)
{
    return QPixmap::fromImage(picture).createMaskFromColor(picture.pixelColor(0, 0));
}

// A hand-off on its own thread, as the engine's worker does it.
struct HandOff
{
    HandOff(CGLWndPlayer* surface, int format, unsigned long phys, unsigned char* data,
            int height = kHeight)
        : thread(QThread::create(CGLWndPlayer::OnVideoData, format, phys, data, kWidth, height,
                                 surface))
    {
        thread->start();
    }
    ~HandOff()
    {
        thread->requestInterruption();
        thread->wait();
    }
    bool ends(int limitMs = kLimitMs) const
    {
        return QTest::qWaitFor([this] { return thread->isFinished(); }, limitMs);
    }

    std::unique_ptr<QThread> thread;
};

} // namespace

class tst_surface : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        QCOMPARE(QDir(":/image").entryList().size(), 26);
        QSurfaceFormat::setDefaultFormat(adaptPlatformSurfaceFormat(QSurfaceFormat()));
    }
    void init()
    {
        m_nv12 = frameOf(1);
        m_window = std::make_unique<QWidget>();
        m_window->resize(320, 240);
        m_surface = new CGLWndPlayer(m_window.get());
        m_surface->resize(320, 240);
        m_surface->m_bVideo = true;
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get(), kLimitMs));
    }
    void cleanup() { m_window.reset(); }

    void drawsEachView_data()
    {
        columns<int, QString, int, QString>({"format", "path", "view", "expected"});
        const char* letters[] = {"rgbw", "rrrr", "gggg", "bbbb", "wwww", "rgbw"};
        for (int view = 0; view <= 5; ++view)
            QTest::addRow("view %d", view) << 1 << "physical" << view << letters[view];
        for (const int format : {0, 1, 7})
            for (const char* path : {"physical", "virtual", "copy"})
                QTest::addRow("format %d, %s", format, path) << format << path << 0 << letters[0];
        for (const char* path : {"DMABUF", "DMABUFs"})
            QTest::addRow("%s", path) << 1 << path << 0 << letters[0];
    }
    void drawsEachView()
    {
        QFETCH(int, format);
        QFETCH(QString, path);
        QFETCH(int, view);
        Bytes frame = frameOf(format);
        const auto block = PhysBlock::make(frame.size());
        std::copy(frame.begin(), frame.end(), block->data());
        std::shared_ptr<PhysFrame> found = block;
        if (path.startsWith("DMABUF")) {
            found = dmabufFrameOf(frame, path == "DMABUFs");
            QTest::ignoreMessage(QtDebugMsg,
                                 QRegularExpression("^frames: copied .no (EGL|extension).$"));
        }
        const bool physical = path != "virtual" && path != "copy";
        const unsigned long address = physical ? found->physical() : path == "copy" ? kCopy : 0;
        m_surface->setSwitch(view);
        QVERIFY(HandOff(m_surface, format, address, physical ? nullptr : frame.data()).ends());
        QTEST(shows(), "expected");
    }

    void nextFrameMayHaveAnotherHeight()
    {
        drawFrame();
        for (const int height : {kHeight / 2, kHeight}) {
            Bytes frame = frameOf(1, height);
            QVERIFY(HandOff(m_surface, 1, 0, frame.data(), height).ends());
            QCOMPARE(shows(), QStringLiteral("rgbw"));
        }
    }

    // One pixel of the frame is five wide here. Between two of them colours mix, at the edges not.
    void scalesSmoothly()
    {
        drawFrame();
        const QImage shown = picture();
        for (const int x : {159, 160})
            QVERIFY(shown.pixelColor(x, 60).red() > 60 && shown.pixelColor(x, 60).green() > 60);
        QVERIFY(shown.pixelColor(0, 60).green() < 10 && shown.pixelColor(60, 0).blue() < 10);
        m_surface->resize(49, 240); // less than the frame
        const QColor middle = picture().pixelColor(24, 60);
        QVERIFY(middle.red() > 60 && middle.green() > 60);
    }

    // From the file to the screen: bars with three quarters of red, green and blue, or nothing.
    void showsTheColoursRecorded_data()
    {
        QTest::addColumn<QString>("file");
        for (const char* file :
             {"1:3.mp4", "1:4.mp4", "1:6.mp4", "2:3.mp4", "2:4.mp4", "2:6.mp4", "Y444.mp4",
              "I420_10LE.mp4", "interlaced.mp4", "jpeg-I420.avi", "jpeg-Y42B.avi", "jpeg-Y444.avi",
              "unmarked-sd.avi", "unmarked-hd.avi"})
            row(file, QStringLiteral(CLIP_DIR "/bars-") + file);
    }
    void showsTheColoursRecorded()
    {
        QFETCH(QString, file);
        const unsigned before = frameCounters().uploads;
        CPlayer player(CGLWndPlayer::OnVideoData, m_surface);
        player.initPipeline();
        player.playFile(QFile::encodeName(file));
        QTRY_VERIFY_WITH_TIMEOUT(frameCounters().uploads > before, kLimitMs);
        const QImage shown = picture();
        int off = 0;
        for (int bar = 0; bar < 7; ++bar) {
            const QColor is = shown.pixelColor(23 + 320 * bar / 7, 60);
            off = qMax(off, qAbs(is.red() - (bar % 4 < 2 ? 191 : 0)));
            off = qMax(off, qAbs(is.green() - (bar < 4 ? 191 : 0)));
            off = qMax(off, qAbs(is.blue() - (bar % 2 == 0 ? 191 : 0)));
        }
        QVERIFY2(off <= 4, qPrintable(QString::number(off)));
    }

    // Nothing is read of a block that is too short or has been freed.
    void badBlocksAreNotRead()
    {
        auto block = PhysBlock::make(kPixels * 3 / 2 - 1);
        const unsigned long address = block->physical();
        memset(block->data(), 255, block->size());
        for (int i = 0; i < 2; ++i) {
            QVERIFY(HandOff(m_surface, 1, address, nullptr).ends());
            QCOMPARE(shows(), QStringLiteral("kkkk"));
            block.reset();
        }
    }

    void labelsStandInTheirCorners()
    {
        std::fill(m_nv12.begin(), m_nv12.begin() + kPixels, 16); // black: labels are plain
        std::fill(m_nv12.begin() + kPixels, m_nv12.end(), 128);
        drawFrame();
        const QImage whole = picture();
        QRegion drawn = drawnIn(whole);
        QList<int> labels;
        for (const QPoint& corner : {QPoint(120, 80), {170, 80}, {120, 130}, {170, 130}}) {
            const QRect area(corner, QSize(30, 30));
            labels << labelIn(whole.copy(area));
            drawn -= area;
        }
        QVERIFY(drawn.isEmpty()); // nothing anywhere else

        for (int view = 1; view <= 4; ++view) {
            m_surface->setSwitch(view);
            const QImage one = picture();
            const QRect area(260, 10, 50, 50);
            labels << labelIn(one.copy(area));
            QVERIFY((drawnIn(one) - area).isEmpty());
        }
        QCOMPARE(labels, QList<int>({0, 1, 2, 3, 0, 1, 2, 3}));
    }

    void changesWithoutNewFrame()
    {
        drawFrame();
        m_surface->setSwitch(4);
        QCOMPARE(shows(), QStringLiteral("wwww"));
        m_surface->forgetPicture();
        QCOMPARE(shows(), QStringLiteral("kkkk"));
        m_surface->m_bVideo = false;
        drawFrame(); // released although it is not shown
        QCOMPARE(picture().pixelColor(80, 60), QColor(18, 18, 28));
        QVERIFY(drawnIn(picture()).isEmpty()); // and no label
    }

    // The next context draws the frame that waits during the change.
    void survivesChangesOfItsContext()
    {
        const auto other = std::make_unique<QWidget>();
        other->resize(320, 240);
        other->show();
        for (int change = 0; change < 6; ++change) {
            const HandOff handOff(m_surface, 1, 0, m_nv12.data());
            m_surface->setParent(change % 2 == 0 ? other.get() : m_window.get());
            m_surface->show();
            QVERIFY(handOff.ends());
        }
        QCOMPARE(shows(), QStringLiteral("rgbw"));
        labelsStandInTheirCorners();
    }

    void preparesItselfWhileHidden()
    {
        m_surface = new CGLWndPlayer(m_window.get());
        m_surface->resize(320, 240);
        m_surface->prepare();
        QVERIFY(m_surface->isValid());
        const QOpenGLContext* prepared = m_surface->context();
        m_surface->m_bVideo = true;
        m_surface->show();
        drawFrame();
        QCOMPARE(m_surface->context(), prepared);
        QCOMPARE(shows(), QStringLiteral("rgbw"));
    }

    void hiddenHandOffEnds_data()
    {
        columns<QString, QString>({"by", "expected"});
        row("shown again", "show", "rgbw");
        row("woken", "wake", "kkkk");
        row("interrupted", "interrupt", "kkkk");
        row("refused", "refuse", "kkkk");
    }
    void hiddenHandOffEnds()
    {
        QFETCH(QString, by);
        m_window->hide();
        const HandOff handOff(m_surface, 1, 0, m_nv12.data());
        QVERIFY(!handOff.ends(200)); // a wait that ends at once would show within this time
        if (by == "wake")
            m_surface->wakeFrameDrawn();
        else if (by == "interrupt")
            handOff.thread->requestInterruption();
        else if (by == "refuse")
            m_surface->refuseFrames(true);
        m_window->show();
        if (by == "show")
            m_surface->update(); // showing alone does not repaint what was painted before
        QVERIFY(handOff.ends());
        if (by == "refuse") {
            QVERIFY(HandOff(m_surface, 1, kCopy, nullptr).ends()); // never read
            m_surface->refuseFrames(false);
        }
        m_nv12 = {}; // what the engine does with the frame's memory
        QTEST(shows(), "expected");
    }

private:
    QImage picture() { return m_surface->grabFramebuffer(); }
    void drawFrame() { QVERIFY(HandOff(m_surface, 1, 0, m_nv12.data()).ends()); }
    // The middle of each quarter of the picture, from the upper left to the lower right.
    QString shows()
    {
        QString letters;
        const QImage shown = picture();
        for (const QPoint& at : {QPoint(80, 60), {240, 60}, {80, 180}, {240, 180}}) {
            const QColor colour = shown.pixelColor(at);
            const int bits = (colour.red() > 170 ? 4 : 0) + (colour.green() > 170 ? 2 : 0) +
                             (colour.blue() > 170 ? 1 : 0);
            letters += "kbgcrmyw"[bits];
        }
        return letters;
    }

    std::unique_ptr<QWidget> m_window;
    CGLWndPlayer* m_surface = nullptr;
    Bytes m_nv12;
};

QTEST_MAIN(tst_surface)
#include "tst_surface.moc"
