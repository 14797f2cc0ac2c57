// Physical memory and what reads it: the made-up addresses, GStreamer's view of a block, repaired
// times, and frames that the textures must refuse.
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

class tst_video_memory : public QObject
{
    Q_OBJECT

private slots:
    void addressesAreDistinctAndFound()
    {
        std::vector<std::shared_ptr<PhysBlock>> blocks;
        QSet<uint32_t> addresses{0, 0xFFFFFFFF}; // both mean that there is none
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

    void livingBlocksKeepTheirAddress()
    {
        constexpr size_t kLarge = 64U << 20U;
        constexpr int kTwiceRound = 130; // the address space
        const auto kept = PhysBlock::make(kLarge);
        for (int i = 0; i < kTwiceRound; ++i) {
            const auto other = PhysBlock::make(kLarge);
            QVERIFY(other->physical() >= kept->physical() + kLarge ||
                    other->physical() + kLarge <= kept->physical());
        }
        QCOMPARE(PhysBlock::find(kept->physical()), kept);
    }

    void buffersTellTheirBlock()
    {
        gst_init(nullptr, nullptr);
        const auto block = PhysBlock::make(100);
        GstBuffer* buffer = gst_buffer_new();
        QVERIFY(!gst_buffer_is_phymem(buffer));
        gst_buffer_append_memory(buffer, newPhysMemory(block));
        QVERIFY(gst_buffer_is_phymem(buffer));
        QCOMPARE(gst_buffer_query_phymem_block(buffer), block->descriptor());
        gst_buffer_append_memory(buffer, gst_allocator_alloc(nullptr, 10, nullptr));
        QVERIFY(!gst_buffer_is_phymem(buffer)); // no longer in one piece
        gst_buffer_unref(buffer);
    }

    void timesRise_data()
    {
        QTest::addColumn<QVector<int>>("given"); // ms, -1: none
        QTest::addColumn<QVector<int>>("made");
        const auto row = [](const char* name, const QVector<int>& given, const QVector<int>& made) {
            QTest::newRow(name) << given << made;
        };
        row("already rising", {0, 40, 95, 120}, {0, 40, 95, 120});
        row("equal neighbours", {0, 40, 80, 80, 160}, {0, 40, 80, 120, 160});
        row("three of a kind", {0, 80, 80, 80, 120, 240}, {0, 80, 120, 160, 200, 240});
        row("missing", {0, -1, -1, 200, -1}, {0, 40, 80, 200, 240});
        row("missing from the start", {-1, -1, 2000}, {1000, 1040, 2000});
    }
    void timesRise()
    {
        QFETCH(QVector<int>, given);
        TimestampRepair repair;
        repair.reset(1000 * GST_MSECOND);
        QVector<int> times;
        for (const int time : given) {
            const GstClockTime pts = time < 0 ? GST_CLOCK_TIME_NONE : time * GST_MSECOND;
            times.append(int(repair.repaired(pts, 40 * GST_MSECOND) / GST_MSECOND));
        }
        QTEST(times, "made");
        repair.reset(0); // after a seek back earlier times are right
        QCOMPARE(repair.repaired(0, 40 * GST_MSECOND), GstClockTime(0));
    }

    void texturesRefuseBadFrames_data()
    {
        QTest::addColumn<GLuint>("format");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("lives");
        QTest::addColumn<unsigned>("uploads");
        QTest::newRow("good") << GLuint(kFormatNv12) << QSize(4, 2) << true << 1U;
        QTest::newRow("memory that has gone") << GLuint(kFormatNv12) << QSize(4, 2) << false << 0U;
        QTest::newRow("too large") << GLuint(kFormatNv12) << QSize(640, 480) << true << 0U;
        QTest::newRow("odd width") << GLuint(kFormatNv12) << QSize(3, 2) << true << 0U;
        QTest::newRow("odd height") << GLuint(kFormatNv12) << QSize(4, 1) << true << 0U;
        QTest::newRow("no size") << GLuint(kFormatPacked16) << QSize(0, 0) << true << 0U;
        QTest::newRow("another format") << GLuint(0x8FC0) << QSize(4, 2) << true << 0U;
    }
    void texturesRefuseBadFrames()
    {
        QFETCH(GLuint, format);
        QFETCH(QSize, size);
        QFETCH(bool, lives);
        QOffscreenSurface surface;
        surface.setFormat(adaptPlatformSurfaceFormat(QSurfaceFormat()));
        surface.create();
        QOpenGLContext context;
        context.setFormat(surface.format());
        QVERIFY(context.create() && context.makeCurrent(&surface) && context.isOpenGLES());
        context.functions()->glBindTexture(GL_TEXTURE_2D, 1);

        auto block = PhysBlock::make(4 * 2 * 3 / 2);
        const GLuint physical = block->physical();
        if (!lives)
            block.reset();
        hostCounters().uploads = 0;
        glTexDirectVIVMap(GL_TEXTURE_2D, size.width(), size.height(), format, nullptr, &physical);
        glTexDirectInvalidateVIV(GL_TEXTURE_2D);
        QTEST(hostCounters().uploads.load(), "uploads");
    }
};

QTEST_MAIN(tst_video_memory)
#include "tst_video_memory.moc"
