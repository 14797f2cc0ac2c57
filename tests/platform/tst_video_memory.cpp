// Physical memory and what reads it: the made-up addresses, GStreamer's view of a block, repaired
// times, and the textures that take their pixels from it.
#include "platform/SurfaceFormat.h"
#include "platform/host/HostCounters.h"
#include "platform/host/PhysBlock.h"
#include "platform/host/PhysMemory.h"
#include "platform/host/TimestampRepair.h"
#include "render/direct_texture.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QSet>
#include <QTest>

#include <cstring>

namespace {

constexpr int kWidth = 4;
constexpr int kHeight = 2;
constexpr GLuint kAllOnes = 0xFFFFFFFF;

// Grey NV12 of one brightness.
std::shared_ptr<PhysBlock> greyBlock(int luma)
{
    auto block = PhysBlock::make(kWidth * kHeight * 3 / 2);
    std::memset(block->data(), 128, block->size());
    std::memset(block->data(), luma, kWidth * kHeight);
    return block;
}

} // namespace

class tst_video_memory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void addressesAreDistinctAndFound();
    void livingBlocksKeepTheirAddress();
    void buffersTellTheirBlock();
    void timesRise_data();
    void timesRise();
    void texturesChangeWhenTold();
    void badFramesLeaveTheTexture_data();
    void badFramesLeaveTheTexture();

private:
    int textureBrightness();

    QOffscreenSurface m_Surface;
    QOpenGLContext m_Context;
    GLuint m_nTexture = 0;
};

void tst_video_memory::initTestCase()
{
    gst_init(nullptr, nullptr);
    const QSurfaceFormat format = adaptPlatformSurfaceFormat(QSurfaceFormat());
    m_Surface.setFormat(format);
    m_Surface.create();
    m_Context.setFormat(format);
    QVERIFY(m_Context.create() && m_Context.makeCurrent(&m_Surface));
    QVERIFY(m_Context.isOpenGLES());
    m_Context.functions()->glGenTextures(1, &m_nTexture);
    m_Context.functions()->glBindTexture(GL_TEXTURE_2D, m_nTexture);
}

void tst_video_memory::cleanupTestCase()
{
    m_Context.functions()->glDeleteTextures(1, &m_nTexture);
}

void tst_video_memory::addressesAreDistinctAndFound()
{
    std::vector<std::shared_ptr<PhysBlock>> blocks;
    QSet<uint32_t> addresses{0, kAllOnes}; // both mean that there is none
    for (size_t size = 1; size < 1'000'000; size = size * 3 + 1) {
        blocks.push_back(PhysBlock::make(size));
        addresses.insert(blocks.back()->physical());
        QCOMPARE(PhysBlock::find(blocks.back()->physical()), blocks.back());
    }
    QCOMPARE(addresses.size(), int(blocks.size()) + 2);
    const uint32_t gone = blocks.back()->physical();
    blocks.pop_back();
    QVERIFY(!PhysBlock::find(gone));
}

void tst_video_memory::livingBlocksKeepTheirAddress()
{
    constexpr size_t kLarge = 64U << 20U;
    constexpr int kMoreThanFit = 130; // twice round the address space
    const auto kept = PhysBlock::make(kLarge);
    for (int i = 0; i < kMoreThanFit; ++i) {
        const auto other = PhysBlock::make(kLarge);
        QVERIFY(other);
        QVERIFY(other->physical() >= kept->physical() + kLarge ||
                other->physical() + kLarge <= kept->physical());
    }
    QCOMPARE(PhysBlock::find(kept->physical()), kept);
}

void tst_video_memory::buffersTellTheirBlock()
{
    const auto block = greyBlock(16);
    GstBuffer* buffer = gst_buffer_new();
    QVERIFY(!gst_buffer_is_phymem(buffer));
    gst_buffer_append_memory(buffer, newPhysMemory(block));
    QVERIFY(gst_buffer_is_phymem(buffer));
    QCOMPARE(gst_buffer_query_phymem_block(buffer)->paddr, (unsigned long)block->physical());
    QCOMPARE(gst_buffer_query_phymem_block(buffer)->vaddr, block->data());
    gst_buffer_append_memory(buffer, gst_allocator_alloc(nullptr, 10, nullptr));
    QVERIFY(!gst_buffer_is_phymem(buffer)); // no longer in one piece
    gst_buffer_unref(buffer);
}

void tst_video_memory::timesRise_data()
{
    QTest::addColumn<QVector<qint64>>("given"); // ms, -1: none
    QTest::addColumn<QVector<qint64>>("made");
    const auto row = [](const char* name, QVector<qint64> given, QVector<qint64> made) {
        QTest::newRow(name) << std::move(given) << std::move(made);
    };
    row("already rising", {0, 40, 95, 120}, {0, 40, 95, 120});
    row("equal neighbours", {0, 40, 80, 80, 160}, {0, 40, 80, 120, 160});
    row("three of a kind", {0, 80, 80, 80, 120, 240}, {0, 80, 120, 160, 200, 240});
    row("missing", {0, -1, -1, 200, -1}, {0, 40, 80, 200, 240});
    row("missing from the start", {-1, -1, 2000}, {1000, 1040, 2000});
    row("falling", {80, 40, 120, 160}, {80, 120, 160, 200});
}

void tst_video_memory::timesRise()
{
    QFETCH(QVector<qint64>, given);
    QFETCH(QVector<qint64>, made);
    TimestampRepair repair;
    repair.reset(1000 * GST_MSECOND);
    QVector<qint64> times;
    for (const qint64 time : given) {
        const GstClockTime pts = time < 0 ? GST_CLOCK_TIME_NONE : GstClockTime(time) * GST_MSECOND;
        times.append(qint64(repair.repaired(pts, 40 * GST_MSECOND) / GST_MSECOND));
    }
    QCOMPARE(times, made);
    repair.reset(0); // after a seek back earlier times are right
    QCOMPARE(repair.repaired(0, 40 * GST_MSECOND), GstClockTime(0));
}

// Of the texture's last pixel; -1: it cannot be read.
int tst_video_memory::textureBrightness()
{
    QOpenGLFunctions* gl = m_Context.functions();
    GLuint buffer = 0;
    gl->glGenFramebuffers(1, &buffer);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, buffer);
    gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_nTexture, 0);
    unsigned char pixel[4] = {};
    if (gl->glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE)
        gl->glReadPixels(kWidth - 1, kHeight - 1, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    gl->glDeleteFramebuffers(1, &buffer);
    return pixel[3] == 255 ? pixel[1] : -1;
}

void tst_video_memory::texturesChangeWhenTold()
{
    const auto block = greyBlock(16);
    const GLuint physical = block->physical();
    glTexDirectVIVMap(GL_TEXTURE_2D, kWidth, kHeight, kFormatNv12, nullptr, &physical);
    glTexDirectInvalidateVIV(GL_TEXTURE_2D);
    QCOMPARE(textureBrightness(), 0);
    std::memset(block->data(), 235, kWidth * kHeight);
    QCOMPARE(textureBrightness(), 0);
    glTexDirectInvalidateVIV(GL_TEXTURE_2D);
    QCOMPARE(textureBrightness(), 255);
}

void tst_video_memory::badFramesLeaveTheTexture_data()
{
    QTest::addColumn<GLuint>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("lives");
    QTest::newRow("memory that has gone") << GLuint(kFormatNv12) << QSize(4, 2) << false;
    QTest::newRow("larger than its memory") << GLuint(kFormatNv12) << QSize(640, 480) << true;
    QTest::newRow("odd width") << GLuint(kFormatNv12) << QSize(3, 2) << true;
    QTest::newRow("odd height") << GLuint(kFormatNv12) << QSize(4, 1) << true;
    QTest::newRow("no size") << GLuint(kFormatPacked16) << QSize(0, 0) << true;
    QTest::newRow("another format") << GLuint(0x8FC0) << QSize(4, 2) << true;
}

void tst_video_memory::badFramesLeaveTheTexture()
{
    QFETCH(GLuint, format);
    QFETCH(QSize, size);
    QFETCH(bool, lives);
    texturesChangeWhenTold(); // white now
    auto block = greyBlock(16);
    const GLuint physical = block->physical();
    if (!lives)
        block.reset();
    const unsigned uploads = hostCounters().uploads;
    glTexDirectVIVMap(GL_TEXTURE_2D, size.width(), size.height(), format, nullptr, &physical);
    glTexDirectInvalidateVIV(GL_TEXTURE_2D);
    QCOMPARE(hostCounters().uploads.load(), uploads);
    QCOMPARE(textureBrightness(), 255);
}

QTEST_MAIN(tst_video_memory)
#include "tst_video_memory.moc"
