// Measures the whole player in this process, with its window:
//   bench_player road FOLDER        plays every file of the folder from the list to its end
//   bench_player pace FILE          how late the engine hands frames on and the surface shows them;
//                                   a line for each frame: due, handed on, shown, in ms
//   bench_player stop FILE          how long stop, Back and the exit take while all frames are out
// Needs a display and a build with a DEVICE_ROOT. bench/compare compares it with other programs.
#include "app/HeapSettings.h"
#include "bench/OwnPlayer.h"
#include "platform/open/FrameCounters.h"
#include "platform/open/FramePool.h"
#include "platform/phymem.h"
#include "player/CPlayer.h"
#include "player/EngineClock.h"

#include <QMutex>
#include <QScreen>

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

#include <gst/app/gstappsink.h>

namespace {

void road(const QString& folder)
{
    QStringList files;
    for (const QFileInfo& info : QDir(folder).entryInfoList({"*.avi", "*.mp4"}, QDir::Files))
        files << info.filePath();
    OwnPlayer player(files);
    for (int row = 0; row < files.size(); ++row) {
        const QString name = player.list->item(row)->text();
        const unsigned exported = frameCounters().framesExported;
        const unsigned uploads = frameCounters().uploads;
        QElapsedTimer clock;
        clock.start();
        player.play(row);
        const bool returned = waitFor([&] { return player.page->isHidden(); }, 200000);
        std::printf("%-28s decoded %4u shown %4u in %6.2f s, %s\n", qPrintable(name),
                    frameCounters().framesExported - exported, frameCounters().uploads - uploads,
                    clock.elapsed() / 1000.0, returned ? "back on the list" : "NOT back");
        if (!returned)
            player.back();
    }
}

// When frames are due: records each frame's presentation time at the engine's sink, by the physical
// address that the engine hands on later.
class DueTimes
{
public:
    // Make it before the pipeline, or it misses the pipeline's sink.
    DueTimes()
    {
        gst_init(nullptr, nullptr);
        g_type_class_ref(GST_TYPE_BIN);
        g_signal_add_emission_hook(g_signal_lookup("element-added", GST_TYPE_BIN), 0, elementAdded,
                                   this, nullptr);
    }
    qint64 of(unsigned long phys) // us
    {
        const QMutexLocker lock(&m_mutex);
        return m_mapDue[phys];
    }

private:
    static gboolean elementAdded(GSignalInvocationHint*, guint, const GValue* values, gpointer self)
    {
        auto* element = static_cast<GstElement*>(g_value_get_object(&values[1]));
        if (!GST_IS_APP_SINK(element))
            return TRUE;
        GstPad* pad = gst_element_get_static_pad(element, "sink");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, arrived, self, nullptr);
        gst_object_unref(pad);
        return TRUE;
    }
    static GstPadProbeReturn arrived(GstPad*, GstPadProbeInfo* info, gpointer self)
    {
        auto* due = static_cast<DueTimes*>(self);
        GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
        const QMutexLocker lock(&due->m_mutex);
        due->m_mapDue[gst_buffer_query_phymem_block(buffer)->paddr] = GST_BUFFER_PTS(buffer) / 1000;
        return GST_PAD_PROBE_OK;
    }

    QMutex m_mutex;
    std::map<unsigned long, qint64> m_mapDue;
};

// Sits between engine and surface and records each frame's times, in us since the start.
class Pace
{
public:
    explicit Pace(CGLWndPlayer* surface) : m_surface(surface)
    {
        QObject::connect(surface, &QOpenGLWidget::frameSwapped, [this] {
            m_shown.resize(frameCounters().uploads, currentTimeUs() - start);
        });
    }
    static int receive(int format, unsigned long phys, unsigned char* virt, int width, int height,
                       void* user)
    {
        auto* pace = static_cast<Pace*>(user);
        pace->m_due.push_back(pace->m_dueTimes.of(phys));
        pace->m_handedOn.push_back(currentTimeUs() - pace->start);
        return CGLWndPlayer::OnVideoData(format, phys, virt, width, height, pace->m_surface);
    }
    void print() const; // after the engine is deleted

    qint64 start = 0;

private:
    static constexpr qint64 kLateUs = 5000;

    CGLWndPlayer* m_surface;
    DueTimes m_dueTimes;
    std::vector<qint64> m_due; // worker, as is the next one
    std::vector<qint64> m_handedOn;
    std::vector<qint64> m_shown; // GUI thread: when Qt swapped the window's buffers
};

void Pace::print() const
{
    std::vector<qint64> late;
    for (size_t i = 0; i < m_shown.size(); ++i) {
        std::printf("frame %.2f %.2f %.2f\n", m_due[i] / 1e3, m_handedOn[i] / 1e3,
                    m_shown[i] / 1e3);
        late.push_back(m_handedOn[i] - m_due[i]);
    }
    if (late.empty())
        return;
    std::sort(late.begin(), late.end());
    const auto percentile = [&](double part) {
        return late[size_t(part * (late.size() - 1))] / 1e3;
    };
    const auto onTime = std::upper_bound(late.begin(), late.end(), kLateUs);
    std::printf("decoded=%u shown=%zu first=%.1f p50=%.2f p95=%.2f max=%.2f late=%td\n",
                frameCounters().framesExported.load(), m_shown.size(), m_handedOn[0] / 1e3,
                percentile(0.5), percentile(0.95), percentile(1), late.end() - onTime);
}

void pace(const QString& file)
{
    const OwnPlayer list({file});
    waitMs(2000); // for the program to prepare the first playback
    QWidget window;
    window.resize(QGuiApplication::primaryScreen()->size());
    CGLWndPlayer surface(&window);
    surface.setGeometry(window.rect());
    surface.m_bVideo = true;
    window.show();
    waitMs(300);
    Pace pace(&surface);
    bool ended = false;
    auto engine = std::make_unique<CPlayer>(Pace::receive, &pace);
    QObject::connect(engine.get(), &CPlayer::sgPlayFinished, &window, [&] { ended = true; });
    engine->initPipeline();
    pace.start = currentTimeUs();
    engine->playFile(QFile::encodeName(QFileInfo(file).absoluteFilePath()));
    waitFor([&] { return ended; }, 200000);
    engine.reset();
    pace.print();
}

void waitPoolEmpty()
{
    waitFor([] { return frameCounters().framesOut == FramePool::kFrames; }, 5000);
}

void stop(const QString& file)
{
    QElapsedTimer clock;
    const auto report = [&](const char* what) {
        std::printf("%-22s %lld ms\n", what, static_cast<long long>(clock.elapsed()));
    };
    OwnPlayer player({file});
    player.play(0);
    for (const char* what : {"stop while playing", "stop again"}) {
        waitPoolEmpty();
        clock.start();
        player.stop();
        report(what);
        player.button(0)->click();
    }
    waitPoolEmpty();
    player.button(0)->click(); // pause
    clock.start();
    player.stop();
    report("stop while paused");
    player.back();
    player.play(0);
    waitPoolEmpty();
    clock.start();
    player.back();
    report("Back while playing");
    player.play(0);
    waitPoolEmpty();
    clock.start();
    player.close();
    report("window closed, playing");
}

} // namespace

int main(int argc, char** argv)
{
    keepHeapSmall();
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: bench_player road|pace|stop FILE\n");
        return EXIT_FAILURE;
    }
    setUpQuietly();
    const QString command = arguments[1];
    if (command == "road")
        road(arguments[2]);
    else if (command == "pace")
        pace(arguments[2]);
    else if (command == "stop")
        stop(arguments[2]);
    return EXIT_SUCCESS;
}
