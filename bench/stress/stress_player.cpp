// Long runs of the whole player in its own process. Each prints one line and ends non-zero on a
// fault:
//   stress_player damaged FOLDER SEED   plays each clip of the folder for 6 s at most and stops it,
//                                       a third of them at a random moment
//   stress_player cycles FILE COUNT     Play and Back, again and again: nothing grows; with
//                                       GST_TRACERS=leaks GStreamer's objects are counted, too,
//                                       but the memory is the tracer's
//   stress_player hour MINUTES FILE...  the files in turn, all of 25 frames a second: every frame
//                                       is shown, and none of them later and later
// Needs a display and a build with a DEVICE_ROOT.
#include "app/HeapSettings.h"
#include "bench/OwnPlayer.h"
#include "common/CPlayerDatas.h"
#include "platform/open/FrameCounters.h"

#include <QMap>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include <gst/gst.h>

namespace {

int g_faults = 0;

template <typename... Values> void fault(const char* format, Values... values)
{
    ++g_faults;
    std::printf(format, values...);
    std::printf("\n");
    std::fflush(stdout);
}

qint64 timeOf(const std::function<void()>& action)
{
    QElapsedTimer clock;
    clock.start();
    action();
    return clock.elapsed();
}

// Prints all threads and ends the process if the event loop stands still.
class Watchdog
{
public:
    Watchdog()
    {
        QObject::connect(&m_ticks, &QTimer::timeout, [this] { m_alive = true; });
        m_ticks.start(100);
        std::thread([this] {
            for (;;) {
                m_alive = false;
                std::this_thread::sleep_for(std::chrono::seconds(30));
                if (!m_alive)
                    std::abort();
            }
        }).detach();
    }

private:
    QTimer m_ticks;
    std::atomic<bool> m_alive{false};
};

// How playing a clip ended.
const char* fate(OwnPlayer& player)
{
    if (player.page->isHidden())
        return "ended";
    if (!player.surface->m_bVideo)
        return "error";
    const unsigned shown = frameCounters().uploads;
    return waitFor([&] { return frameCounters().uploads > shown; }, 5000) ? "plays on" : "HANGS";
}

void damaged(const QString& folder, unsigned seed)
{
    constexpr int kLimitMs = 6000;
    constexpr int kStopLimitMs = 200;
    QStringList files;
    for (const QFileInfo& info : QDir(folder).entryInfoList({"*.avi", "*.mp4"}, QDir::Files))
        files << info.filePath();
    OwnPlayer player(files);
    std::mt19937 random(seed);
    QMap<QString, int> fates;
    qint64 longestStop = 0;
    for (int row = 0; row < files.size(); ++row) {
        const QString name = player.list->item(row)->text();
        const int limit = random() % 3 == 0 ? int(random() % 1000) : kLimitMs;
        const auto rests = [&] { return player.page->isHidden() || !player.surface->m_bVideo; };
        player.play(row);
        waitFor(rests, limit);
        const QString end = limit < kLimitMs && !rests() ? "interrupted" : fate(player);
        ++fates[end];
        if (end == "HANGS")
            fault("%s neither shows anything nor gives up", qPrintable(name));
        const qint64 stopped = timeOf([&] { player.stop(); });
        longestStop = std::max(longestStop, stopped);
        if (stopped > kStopLimitMs)
            fault("%s (%s) took %lld ms to stop", qPrintable(name), qPrintable(end), stopped);
        if (!player.page->isHidden())
            player.back();
    }
    QStringList counts;
    for (auto it = fates.cbegin(); it != fates.cend(); ++it)
        counts << QStringLiteral("%1 %2").arg(it.value()).arg(it.key());
    std::printf("%d clips, seed %u: %s; longest stop %lld ms; %d faults\n", int(files.size()), seed,
                qPrintable(counts.join(", ")), longestStop, g_faults);
}

// GStreamer 1.22 leaves a volume element and its pads behind for each file with sound; a bare
// playbin does, too.
bool isLeftVolume(const GValue* object)
{
    if (!G_VALUE_HOLDS_OBJECT(object))
        return false;
    const auto type = [](gpointer instance) { return QByteArray(G_OBJECT_TYPE_NAME(instance)); };
    auto* instance = g_value_get_object(object);
    return type(instance) == "GstVolume" || (GST_IS_PAD(instance) && GST_OBJECT_PARENT(instance) &&
                                             type(GST_OBJECT_PARENT(instance)) == "GstVolume");
}

// The number of objects that GStreamer's leaks tracer sees alive; 0 without the tracer. Its list is
// never freed: freeing it would release references that it does not hold.
int gstreamerObjects()
{
    int count = 0;
    GList* tracers = gst_tracing_get_active_tracers();
    for (GList* it = tracers; it; it = it->next) {
        GstStructure* alive = nullptr;
        g_signal_emit_by_name(it->data, "get-live-objects", &alive);
        const GValue* list = gst_structure_get_value(alive, "live-objects-list");
        for (guint i = 0; i < gst_value_list_get_size(list); ++i) {
            const GstStructure* entry = gst_value_get_structure(gst_value_list_get_value(list, i));
            count += isLeftVolume(gst_structure_get_value(entry, "object")) ? 0 : 1;
        }
    }
    g_list_free_full(tracers, gst_object_unref);
    return count;
}

struct Usage
{
    int threads = entries("/proc/self/task");
    int descriptors = entries("/proc/self/fd");
    double memory = residentMegabytes();

    bool levelWith(const Usage& first) const
    {
        const double growth = qEnvironmentVariableIsSet("GST_TRACERS") ? 50 : 5;
        return threads <= first.threads && descriptors <= first.descriptors &&
               memory <= first.memory + growth;
    }
};

void cycles(const QString& file, int count)
{
    constexpr int kWarmUp = 20;
    constexpr int kLookEvery = 50;
    OwnPlayer player({file});
    Usage first;
    Usage last;
    int objects = 0;
    for (int i = 1; i <= count; ++i) {
        const unsigned shown = frameCounters().uploads;
        player.play(0);
        if (!waitFor([&] { return frameCounters().uploads > shown + 5; }, 20000))
            fault("cycle %d shows nothing", i);
        player.back();
        if (i == kWarmUp) {
            waitMs(2000);
            objects = gstreamerObjects();
            first = Usage();
        } else if (i > kWarmUp && (i % kLookEvery == 0 || i == count)) {
            waitFor([&] { return (last = Usage()).levelWith(first); }, 5000);
            if (!last.levelWith(first))
                fault("cycle %d: %d threads, %d descriptors, %.1f MB", i, last.threads,
                      last.descriptors, last.memory);
        }
    }
    const int objectsNow = gstreamerObjects();
    if (objectsNow > objects)
        fault("GStreamer's objects: %d after the first %d cycles, then %d", objects, kWarmUp,
              objectsNow);
    std::printf("%d cycles: threads %d to %d, descriptors %d to %d, GStreamer objects %d to %d, "
                "%.1f MB to %.1f MB; %d faults\n",
                count, first.threads, last.threads, first.descriptors, last.descriptors, objects,
                objectsNow, first.memory, last.memory, g_faults);
}

constexpr double kRate = 25;

// The times at which the file's frames were shown, in ms.
class Shown
{
public:
    Shown(OwnPlayer& player, std::function<void(const QString&, std::vector<double>)> fileEnded)
        : m_fileEnded(std::move(fileEnded))
    {
        m_clock.start();
        QObject::connect(player.surface, &QOpenGLWidget::frameSwapped, [this] { look(); });
    }
    void endFile()
    {
        if (!m_times.empty())
            m_fileEnded(m_file, m_times);
        m_times.clear();
    }

private:
    void look()
    {
        const unsigned uploads = frameCounters().uploads;
        if (uploads == m_uploads)
            return;
        const QString file = CPlayerDatas::getInstance()->currentFile();
        if (file != m_file)
            endFile();
        m_file = file;
        m_times.resize(m_times.size() + uploads - m_uploads, m_clock.nsecsElapsed() / 1e6);
        m_uploads = uploads;
    }

    const std::function<void(const QString&, std::vector<double>)> m_fileEnded;
    QElapsedTimer m_clock;
    QString m_file;
    unsigned m_uploads = frameCounters().uploads;
    std::vector<double> m_times;
};

// Median lateness of the file's last second, compared with its most punctual frame.
double driftAtEnd(const std::vector<double>& times)
{
    std::vector<double> late;
    for (size_t i = 0; i < times.size(); ++i)
        late.push_back(times[i] - times[0] - 1000 * double(i) / kRate);
    const double best = *std::min_element(late.begin(), late.end());
    const auto median = late.end() - int(kRate) / 2;
    std::nth_element(late.end() - int(kRate), median, late.end());
    return *median - best;
}

void hour(double minutes, const QStringList& files)
{
    constexpr double kDriftLimitMs = 50;
    constexpr double kGrowth = 5;
    OwnPlayer player(files);
    size_t played = 0;
    size_t frames = 0;
    double drift = 0;
    const auto check = [&](const QString& file, const std::vector<double>& times) {
        ++played;
        frames += times.size();
        if (times.size() < 2 * kRate)
            return fault("file %zu, %s, showed %zu frames", played, qPrintable(file), times.size());
        const double late = driftAtEnd(times);
        drift = std::max(drift, late);
        if (late >= kDriftLimitMs)
            fault("file %zu, %s, ends %.1f ms late", played, qPrintable(file), late);
    };
    Shown shown(player, check);
    QElapsedTimer clock;
    clock.start();
    double memory = 0;
    double most = 0;
    const unsigned uploads = frameCounters().uploads;
    const unsigned exported = frameCounters().framesExported;
    for (int round = 1; round == 1 || clock.elapsed() < minutes * 60000; ++round) {
        for (int row = 0; row < files.size(); ++row)
            player.mark(row);
        player.playMarked();
        if (!waitFor([&] { return player.page->isHidden(); }, 90000 * int(files.size())))
            fault("round %d does not end", round), player.back();
        shown.endFile();
        most = std::max(most, residentMegabytes());
        if (round == 1)
            memory = most;
    }
    const unsigned lost = (frameCounters().framesExported - exported) - unsigned(frames);
    if (lost != 0 || frameCounters().uploads - uploads != frames)
        fault("%u frames were not shown", lost);
    if (most > memory + kGrowth)
        fault("memory grew from %.1f MB to %.1f MB", memory, most);
    std::printf("%.1f minutes: %zu files, %zu frames shown, %u lost; largest drift %.1f ms; "
                "%.1f MB, at most %.1f MB; %d faults\n",
                clock.elapsed() / 60000.0, played, frames, lost, drift, memory, most, g_faults);
}

} // namespace

int main(int argc, char** argv)
{
    keepHeapSmall();
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: stress_player damaged FOLDER SEED | cycles FILE COUNT | "
                             "hour MINUTES FILE...\n");
        return EXIT_FAILURE;
    }
    setUpQuietly();
    const Watchdog watchdog;
    const QString command = arguments[1];
    if (command == "damaged")
        damaged(arguments[2], arguments.value(3, "1").toUInt());
    else if (command == "cycles")
        cycles(arguments[2], arguments.value(3, "50").toInt());
    else if (command == "hour")
        hour(arguments[2].toDouble(), arguments.mid(3));
    return g_faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
