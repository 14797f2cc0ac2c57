// bench_list COUNT: measures the whole program with COUNT (200 or more) recordings in its list: the
// start, a key, a mark, a tap, the return to the list, and standing still. The recordings are empty
// files in a temporary folder. It prints medians and, for keys, the longest wait for the picture;
// CPU is that of the process and includes painting. Needs a display and a build with a DEVICE_ROOT.
#include "app/HeapSettings.h"
#include "bench/OwnPlayer.h"

#include <QKeyEvent>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <sys/resource.h>

namespace {

constexpr int kRounds = 60;

double cpuMs()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval& time) { return time.tv_sec * 1e3 + time.tv_usec / 1e3; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// Runs the event loop until the list has been painted.
class Painted : public QObject
{
public:
    explicit Painted(QWidget* list) { list->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        m_bPainted = m_bPainted || event->type() == QEvent::Paint;
        return false;
    }
    void wait()
    {
        QElapsedTimer clock;
        clock.start();
        while (!m_bPainted && clock.elapsed() < 60000)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void expect() { m_bPainted = false; }

private:
    bool m_bPainted = false;
};

void makeDevice(const QDir& root, int count)
{
    for (int i = 0; i < count; ++i)
        QFile(root.filePath(QStringLiteral("2024-03-05_%1.mp4").arg((i * 7919LL) % 1000003)))
            .open(QIODevice::WriteOnly);
    listOnly(root.path());
}

void click(int key)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    }
}

void tap(const QListWidget* list, int row)
{
    const QPoint at = list->visualItemRect(list->item(row)).center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list->viewport(), &event);
    }
}

void report(const char* what, Painted& painted, const std::function<void(int)>& action)
{
    std::vector<double> cpu;
    std::vector<double> waits;
    for (int i = 0; i < kRounds; ++i) {
        QElapsedTimer clock;
        clock.start();
        const double before = cpuMs();
        painted.expect();
        action(i);
        painted.wait();
        cpu.push_back(cpuMs() - before);
        waits.push_back(clock.nsecsElapsed() / 1e6);
    }
    std::sort(cpu.begin(), cpu.end());
    std::printf("%-22s CPU %6.2f ms (least %.2f), painted after %.1f ms at most\n", what,
                cpu[kRounds / 2], cpu.front(), *std::max_element(waits.begin(), waits.end()));
}

void still(int seconds)
{
    const double before = cpuMs();
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < seconds * 1000)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    std::printf("%-22s %.2f %% of a core\n", "standing still",
                (cpuMs() - before) / clock.elapsed() * 100);
}

} // namespace

int main(int argc, char** argv)
{
    QElapsedTimer clock;
    clock.start();
    keepHeapSmall();
    QApplication app(argc, argv);
    const QTemporaryDir root;
    const qint64 before = clock.elapsed();
    const double cpuBefore = cpuMs();
    makeDevice(root.path(), QApplication::arguments().value(1, QStringLiteral("10000")).toInt());
    const qint64 made = clock.elapsed() - before;
    const double cpuMade = cpuMs() - cpuBefore;
    setUpDisplay();
    setDefaultSurfaceFormat();
    CPageMain window(nullptr);
    auto* list = window.findChild<QListWidget*>();
    Painted painted(list->viewport());
    painted.wait();
    std::printf("%-22s %lld ms, CPU %.0f ms\n", "start to list", clock.elapsed() - made,
                cpuMs() - cpuMade);
    report("key, inside the page", painted,
           [](int i) { click(i % 8 < 4 ? Qt::Key_Down : Qt::Key_Up); });
    report("key that scrolls", painted, [](int) { click(Qt::Key_Down); });
    report("mark", painted, [](int) { click(Qt::Key_Return); });
    list->scrollToTop();
    report("tap", painted, [&](int i) { tap(list, i % 5); });
    QMetaObject::invokeMethod(&window, "slotPagePlayerListToPagePlayer");
    const double cpu = cpuMs();
    clock.start();
    painted.expect();
    QMetaObject::invokeMethod(&window, "slotPagePlayerToPagePlayerList");
    painted.wait();
    std::printf("%-22s %lld ms, CPU %.0f ms\n", "return to the list", clock.elapsed(),
                cpuMs() - cpu);
    still(10);
    return EXIT_SUCCESS;
}
