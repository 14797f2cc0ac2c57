// Physical memory: the made-up addresses, GStreamer's view of a block, and repaired times.
#include "platform/host/PhysBlock.h"
#include "platform/host/PhysMemory.h"
#include "platform/host/TimestampRepair.h"

#include <QSet>
#include <QTest>

namespace {
constexpr uint32_t kAllOnes = 0xFFFFFFFF;
} // namespace

class tst_video_memory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }
    void addressesAreDistinctAndFound();
    void livingBlocksKeepTheirAddress();
    void buffersTellTheirBlock();
    void timesRise_data();
    void timesRise();
};

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
    const auto block = PhysBlock::make(12);
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

QTEST_GUILESS_MAIN(tst_video_memory)
#include "tst_video_memory.moc"
