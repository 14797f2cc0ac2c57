// Feeds whole files through the engine and the open platform's frame exporter, until the first
// frames were handed on, the file ended, or nothing moves. The receiver reads every byte of a
// frame. The file's size chooses whether a seek or a pause follows.
#include "fuzz/CraftedDecoder.h"
#include "player/CPlayer.h"

#include <QFile>
#include <QObject>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <numeric>

namespace {

constexpr int kEnoughFrames = 3;
constexpr long kPollNs = 500000;
constexpr long kIdleNs = 60000; // CPU time that a poll itself takes; with no more, nothing moves
constexpr int kIdlePolls = 10;  // give up after so many of these
constexpr int kMostPolls = 2000;

// Any thread.
std::atomic<int> g_frames{0};
std::atomic<bool> g_ended{false};
std::atomic<unsigned> g_sum{0}; // of all bytes, or the compiler would not read them

// Without assert(): it must hold in every build.
void require(bool holds)
{
    if (!holds)
        std::abort();
}

int receive(int format, unsigned long phys, unsigned char* virt, int width, int height, void*)
{
    require(format == 1 && phys != 0 && width > 0 && height > 0);
    require(width % 2 == 0 && height % 2 == 0);
    const size_t size = static_cast<size_t>(width) * static_cast<size_t>(height) * 3 / 2;
    g_sum += std::accumulate(virt, virt + size, 0U);
    ++g_frames;
    return 0;
}

// One engine for the whole process, as in the program.
CPlayer& engine()
{
    static CPlayer& player = *new CPlayer(receive, nullptr);
    static const bool made = [] {
        player.initPipeline();
        QObject::connect(&player, &CPlayer::sgPlayError, [] { g_ended = true; });
        QObject::connect(&player, &CPlayer::sgPlayFinished, [] { g_ended = true; });
        return true;
    }();
    require(made);
    return player;
}

// The package installs none of these, and gme, one of them, ends the process.
void removeOtherPlugins()
{
    GstRegistry* registry = gst_registry_get();
    GList* plugins = gst_registry_get_plugin_list(registry);
    for (GList* it = plugins; it; it = it->next) {
        const QByteArray package = gst_plugin_get_package(GST_PLUGIN(it->data));
        if (package.contains("Bad Plug") || package.contains("Ugly Plug"))
            gst_registry_remove_plugin(registry, GST_PLUGIN(it->data));
    }
    gst_plugin_list_free(plugins);
}

// playbin would look for sound cards at each start, which takes time.
void removeSoundDevices()
{
    GList* sinks = gst_element_factory_list_get_elements(
        GST_ELEMENT_FACTORY_TYPE_SINK | GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO, GST_RANK_MARGINAL);
    for (GList* it = sinks; it; it = it->next)
        if (!g_str_has_prefix(GST_OBJECT_NAME(it->data), "auto"))
            gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(it->data), GST_RANK_NONE);
    gst_plugin_feature_list_free(sinks);
}

long cpuTimeNs()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1000000000L + time.tv_nsec;
}

void waitForFrames(int count)
{
    int idle = 0;
    for (int polls = 0; polls < kMostPolls && idle < kIdlePolls && !g_ended; ++polls) {
        if (g_frames >= count)
            return;
        const long before = cpuTimeNs();
        const timespec nap = {0, kPollNs};
        nanosleep(&nap, nullptr);
        idle = cpuTimeNs() - before < kIdleNs ? idle + 1 : 0;
    }
}

void play(const QByteArray& path, size_t variant)
{
    constexpr void (CPlayer::*kSteps[])() = {nullptr, nullptr, &CPlayer::seekForward,
                                             &CPlayer::seekBackward, &CPlayer::playPause};
    CPlayer& player = engine();
    g_frames = 0;
    g_ended = false;
    player.playFile(path);
    waitForFrames(kEnoughFrames);
    if (const auto step = kSteps[variant % std::size(kSteps)]) {
        player.queryDuration();
        (player.*step)();
        if (step == &CPlayer::playPause)
            player.playPause();
        waitForFrames(g_frames + 1);
    }
    player.stop();
    player.waitForWorker();
}

void ignoreLine(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler(ignoreLine);
    gst_init(nullptr, nullptr);
    removeOtherPlugins();
    registerCraftedDecoder();
    removeSoundDevices();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    static const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("clip.mp4")));
    const auto length = static_cast<qint64>(size);
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    require(file.write(reinterpret_cast<const char*>(data), length) == length);
    file.close();
    play(QFile::encodeName(file.fileName()), size);
    return 0;
}
