// Physical memory and what fills it: the made-up addresses, pictures of odd sizes, the pool of
// frames and repaired times.
#include "platform/host/FrameCopy.h"
#include "platform/host/FramePool.h"
#include "platform/host/PhysBlock.h"
#include "platform/host/TimestampRepair.h"
#include "tests/Rows.h"

#include <QTest>

#include <chrono>
#include <future>

class tst_video_memory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }
    void livingBlocksKeepTheirAddress()
    {
        constexpr size_t kLarge = 64U << 20U;
        constexpr int kTwiceRound = 130; // the address space
        const auto kept = PhysBlock::make(kLarge);
        uint32_t gone = 0;
        for (int i = 0; i < kTwiceRound; ++i) {
            const auto other = PhysBlock::make(kLarge - i);
            gone = other->physical();
            QVERIFY(gone != 0 && gone != 0xFFFFFFFF); // both mean that there is none
            QVERIFY(gone >= kept->physical() + kLarge || gone + kLarge <= kept->physical());
        }
        QCOMPARE(PhysBlock::find(kept->physical()), kept);
        QVERIFY(!PhysBlock::find(gone));
    }

    void oddSizesAreRoundedUp()
    {
        for (const GstVideoFormat format : {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_NV12}) {
            GstVideoInfo info;
            gst_video_info_set_format(&info, format, 3, 3);
            GstBuffer* buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
            const auto put = [&](int plane, int row, const char* text) {
                gst_buffer_fill(buffer, info.offset[plane] + row * info.stride[plane], text,
                                strlen(text));
            };
            put(0, 0, "abc");
            put(0, 1, "def");
            put(0, 2, "ghi");
            const bool planar = format == GST_VIDEO_FORMAT_I420;
            put(1, 0, planar ? "UX" : "UVXY");
            put(1, 1, planar ? "ux" : "uvxy");
            if (planar) {
                put(2, 0, "VY");
                put(2, 1, "vy");
            }
            GstVideoFrame frame;
            QVERIFY(gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ));
            QByteArray tight(24, '-');
            copyAsTightNv12(frame, reinterpret_cast<unsigned char*>(tight.data()));
            QCOMPARE(tight, QByteArray("abccdeffghiighiiUVXYuvxy"));
            gst_video_frame_unmap(&frame);
            gst_buffer_unref(buffer);
        }
    }

    // Whoever shows it; paused for as long as it takes, and a flush makes an end of it.
    void lastFrameIsWaitedFor()
    {
        using namespace std::chrono_literals;
        const auto pool = std::make_shared<FramePool>();
        const auto wait = [&pool](std::chrono::milliseconds patience) {
            return std::async(std::launch::async,
                              [pool, patience] { return pool->waitUntilShown(patience, 0ms); });
        };
        pool->setActive(true);
        GstMemory* frame = pool->take(8);
        auto first = wait(50ms);
        QVERIFY(first.wait_for(200ms) == std::future_status::timeout);
        pool->setPlaying(true);
        QVERIFY(first.get());
        auto second = wait(30s);
        QVERIFY(second.wait_for(50ms) == std::future_status::timeout);
        pool->setFlushing(true);
        QVERIFY(!second.get());
        pool->setFlushing(false);
        QVERIFY(wait(30s).wait_for(5s) == std::future_status::ready);
        gst_memory_unref(frame);
    }

    void timesRise_data()
    {
        // given: ms, -1: none
        using Times = QVector<int>;
        columns<Times, Times, int>({"given", "made", "longest"});
        row("already rising", Times{0, 40, 95, 120}, Times{0, 40, 95, 120}, 55);
        row("equal neighbours", Times{0, 40, 80, 80, 160}, Times{0, 40, 80, 120, 160}, 40);
        row("missing", Times{0, -1, -1, 200, -1}, Times{0, 40, 80, 200, 240}, 120);
        row("missing from the start", Times{-1, -1, 2000}, Times{1000, 1040, 2000}, 960);
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
        QTEST(int(repair.longestStep() / GST_MSECOND), "longest");
        repair.reset(0); // after a seek back earlier times are right
        QCOMPARE(repair.repaired(0, 40 * GST_MSECOND), GstClockTime(0));
    }
};

QTEST_GUILESS_MAIN(tst_video_memory)
#include "tst_video_memory.moc"
