// The window with both pages, driven by keys and taps.
#include "app/CPageMain.h"
#include "app/DisplaySettings.h"
#include "common/CPlayerDatas.h"
#include "common/PositionConfig.h"
#include "common/globals.h"
#include "pages/list/CPagePlayerList.h"
#include "pages/player/CPagePlayer.h"
#include "pages/player/CPagePlayerControl.h"
#include "platform/open/FrameCounters.h"
#include "platform/open/FramePool.h"
#include "render/CGLWndPlayer.h"
#include "tests/TestDevice.h"
#include "tests/comm/HubProcess.h"

#include <QtTest>
#include <QtWidgets>

#include <dlfcn.h>

#include <atomic>
#include <functional>
#include <memory>

// As if the user had been idle for longer.
struct IdleTime
{
    static void add(CPagePlayer* page, qint64 us) { page->m_nLastEventTimeUs -= us; }
};

namespace {

const QColor kGrey(18, 18, 28);
constexpr qint64 kBarStaysUs = 9999999;

// What the program writes, from any thread.
std::atomic<int> s_nEnds{0};
std::atomic<int> s_nErrors{0};
void countLine(QtMsgType, const QMessageLogContext&, const QString& line)
{
    s_nEnds += line.contains("End of stream!!!") ? 1 : 0;
    s_nErrors += line.contains("GST_MESSAGE_ERROR") ? 1 : 0;
}

// Blocks the GUI thread, so that what is queued stays queued.
bool blockUntil(const std::function<bool()>& condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < kLimitMs)
        QThread::msleep(1);
    return condition();
}

// The main window on a test device, with short names for its parts.
struct Window
{
    explicit Window(const QStringList& clips) : device(clips)
    {
        readPositionConfig();
        open();
    }
    void open()
    {
        main = std::make_unique<CPageMain>(nullptr);
        list = main->findChild<CPagePlayerList*>();
        rows = list->findChild<QListWidget*>();
        page = main->findChild<CPagePlayer*>();
        bar = page->findChild<CPagePlayerControl*>();
        surface = page->findChild<CGLWndPlayer*>();
        time = bar->findChild<QLabel*>();
        buttons = bar->findChildren<QPushButton*>();
        if (rows->count() > 0)
            QTRY_COMPARE(QApplication::focusWidget(), rows);
    }

    static void key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    void play() const // all rows; behind the last one the focus stands on Play
    {
        for (int row = 0; row < rows->count(); ++row) {
            key(Qt::Key_Return);
            key(Qt::Key_Down);
        }
        key(Qt::Key_Return);
    }
    bool shows(const QString& label) const
    {
        return QTest::qWaitFor([&] { return time->text().endsWith(label); }, kLimitMs);
    }
    bool onList() const
    {
        return QTest::qWaitFor([&] { return list->isVisible() && page->isHidden(); }, kLimitMs);
    }
    QColor colourAt(int x, int y) const { return surface->grabFramebuffer().pixelColor(x, y); }
    void hideBar() const
    {
        IdleTime::add(page, kBarStaysUs + 1);
        QTRY_VERIFY_WITH_TIMEOUT(bar->isHidden(), kLimitMs); // at the next tick
    }

    TestDevice device;
    std::unique_ptr<CPageMain> main;
    CPagePlayerList* list = nullptr;
    QListWidget* rows = nullptr;
    CPagePlayer* page = nullptr;
    CPagePlayerControl* bar = nullptr;
    CGLWndPlayer* surface = nullptr;
    QLabel* time = nullptr;
    QList<QPushButton*> buttons;
};

} // namespace

class tst_page_main : public QObject
{
    Q_OBJECT

private slots:
    void preparesTheFirstPlaybackByItself()
    {
        const Window w({});
        QTRY_VERIFY_WITH_TIMEOUT(dlopen("libgstlibav.so", RTLD_LAZY | RTLD_NOLOAD), kLimitMs);
        QVERIFY(w.surface->isValid());
    }

    void emptyListPlaysNothing()
    {
        const Window w({});
        QTRY_VERIFY(qobject_cast<QPushButton*>(QApplication::focusWidget())); // Exit
        for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Return, Qt::Key_3})  // Play
            Window::key(key);
        QVERIFY(w.page->isVisible());
        QCOMPARE(w.colourAt(20, 20), kGrey);
        QCOMPARE(w.surface->viewMode(), 0);
        w.buttons[4]->click();
        QVERIFY(w.onList());
    }

    void exitTellsTheDeviceOnceAndClosesFirst()
    {
        HubProcess hub;
        Window w({});
        QStringList exits;
        connect(w.main.get(), &CPageMain::sgAppExit,
                [&] { exits << (w.main->isHidden() ? "closed" : "open"); });
        QTRY_VERIFY(qobject_cast<QPushButton*>(QApplication::focusWidget()));
        Window::key(Qt::Key_Return);
        w.main->slotExitApp(); // an interrupt may meet it
        QCOMPARE(exits.join(' '), QStringLiteral("closed closed"));
        CPlayerDatas::getInstance()->addFile("left over");
        w.main.reset();
        QVERIFY(CPlayerDatas::getInstance()->isEmpty());
        QCOMPARE(hub.endWhenPlayerLeft().count(kAppSwitch), 1);
    }

    void playsMarkedFilesAndComesBack()
    {
        const Window w({"quads.mp4", "名 mit Ümlaut.mp4"});
        w.page->slotPrepare(); // which the playback overtakes
        w.play();
        QVERIFY(w.page->isVisible() && w.list->isHidden());
        w.page->slotHidePagePlayerControl(); // too early, as the page has just been entered
        QVERIFY(w.bar->isVisible());
        QCOMPARE(QApplication::focusWidget(), w.buttons[0]);
        QVERIFY(w.shows("/00:01"));
        const auto picture = [](const QIcon& icon) { return icon.pixmap(38).toImage(); };
        QCOMPARE(picture(w.buttons[0]->icon()), picture(QIcon(":/image/pause.png")));
        w.key(Qt::Key_2);
        w.buttons[0]->click(); // paused
        w.buttons[0]->click();
        QVERIFY(w.shows("00:01/00:02")); // the second file follows by itself
        QCOMPARE(w.surface->viewMode(), 0);
        QVERIFY(w.colourAt(20, 20) != kGrey);
        w.device.add("long.mp4"); // the list shows it when it comes back
        QVERIFY(w.onList());
        QCOMPARE(w.rows->count(), 3);
        QCOMPARE(QApplication::focusWidget(), w.rows);
        QVERIFY(CPlayerDatas::getInstance()->isEmpty());
    }

    void failedFileLeavesTheIdlePage()
    {
        const Window w({"long.mp4", "silent.mp4"});
        QFile::remove(w.device.path("long.mp4")); // gone since it was listed
        w.play();                                 // the second file does not follow by itself
        QTRY_VERIFY_WITH_TIMEOUT(!w.surface->m_bVideo, kLimitMs);
        QVERIFY(w.page->isVisible());
        QCOMPARE(w.time->text(), QStringLiteral("0:00:00/0:00:00"));
        QCOMPARE(w.colourAt(20, 20), kGrey);

        w.key(Qt::Key_Left); // from play/pause round to Back
        w.key(Qt::Key_Return);
        QVERIFY(w.onList());
        w.key(Qt::Key_End);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Down, Qt::Key_Return})
            w.key(key);
        QVERIFY(w.shows("/00:02"));
    }

    // Even if one of its frames is on its way to the screen.
    void stoppedFileShowsNoMore()
    {
        const Window w({"quads.mp4"});
        w.play();
        QTRY_VERIFY_WITH_TIMEOUT(w.colourAt(20, 20).red() > 150, kLimitMs);
        QVERIFY(blockUntil([] { return frameCounters().framesOut == FramePool::kFrames; }));
        QThread::msleep(200); // the next frame is due meanwhile and waits
        w.buttons[1]->click();
        w.surface->m_bVideo = true;
        QCOMPARE(w.colourAt(20, 20), QColor(Qt::black));
    }

    void lateReportsTouchNothing()
    {
        qInstallMessageHandler(countLine);
        const Window w({"damaged.mp4", "odd.avi", "silent.mp4"});
        w.play();
        QVERIFY(blockUntil([] { return s_nErrors > 0; }));
        w.page->slotPlayInMultiFileMode(); // before the errors arrive
        const unsigned drawn = frameCounters().uploads;
        QTRY_COMPARE_WITH_TIMEOUT(frameCounters().uploads - drawn, 5U, kLimitMs);
        QVERIFY(w.shows("/00:01")); // 0.5 s
        QVERIFY(blockUntil([] { return s_nEnds > 0; }));
        w.buttons[1]->click(); // before the end arrives
        QTest::qWait(100);
        QVERIFY(!w.surface->m_bVideo);
        qInstallMessageHandler(nullptr);
    }

    void viewShowsAtOnceWhilePaused()
    {
        const Window w({"quads.mp4"});
        w.key(Qt::Key_3); // no file is loaded
        w.play();
        QTRY_VERIFY_WITH_TIMEOUT(w.colourAt(20, 20).red() > 150, kLimitMs);
        w.key(Qt::Key_Return); // pause
        w.hideBar();
        QSignalSpy painted(w.surface, SIGNAL(frameSwapped()));
        QVERIFY(QTest::qWaitFor([&] { return !painted.wait(300); },
                                kLimitMs)); // frames in flight have passed
        w.key(Qt::Key_3);
        QVERIFY(painted.wait(kLimitMs));
        QCOMPARE(w.surface->viewMode(), 3);
        QVERIFY(w.colourAt(20, 20).blue() > 150);
        QString views;
        for (int digit = 0; digit <= 9; ++digit) {
            w.surface->setSwitch(4);
            w.key(Qt::Key(Qt::Key_0 + digit));
            views += QString::number(w.surface->viewMode());
        }
        QCOMPARE(views, QStringLiteral("0123400000"));
        QVERIFY(QTest::qWaitFor([&] { return !painted.wait(300); }, kLimitMs));
        w.buttons[1]->click(); // as if the engine had stopped behind the hidden bar
        QVERIFY(painted.wait(kLimitMs));
        QCOMPARE(w.colourAt(20, 20), kGrey);
    }

    void tapsChooseAView()
    {
        const Window w({"long.mp4"});
        w.play();
        w.hideBar();
        const QPoint lowerRight(w.page->width() / 2, w.page->height() / 2);
        const QPoint upperLeft = lowerRight - QPoint(1, 1);
        const QPoint onBar(w.page->width() - 20, w.page->height() - 5); // its background
        QString views;
        for (const QPoint& tap : {lowerRight, lowerRight, upperLeft, upperLeft, onBar, onBar}) {
            QTest::mouseClick(w.page->childAt(tap), Qt::LeftButton, {},
                              w.page->childAt(tap)->mapFrom(w.page, tap));
            views += QString::number(w.surface->viewMode());
        }
        QCOMPARE(views, QStringLiteral("040104")); // the first only brings the bar back
        QCOMPARE(w.page->childAt(onBar), w.bar);   // in front of the picture
    }

    void keysOnlyBringTheBarBack()
    {
        const Window w({"long.mp4"});
        w.play();
        w.key(Qt::Key_Right); // Stop has the focus: what a key must not do now
        QSignalSpy stops(w.bar, SIGNAL(sgCmdStop()));
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Left, Qt::Key_Escape}) {
            w.hideBar();
            for (const Qt::Key digit : {Qt::Key_0, Qt::Key_9, Qt::Key_2})
                w.key(digit);
            QVERIFY(w.bar->isHidden());
            QCOMPARE(w.surface->viewMode(), 2);
            w.key(key);
            QVERIFY(w.bar->isVisible());
            QCOMPARE(QApplication::focusWidget(), w.buttons[1]);
        }
        QCOMPARE(stops.count(), 0);
    }

    // After 10 s, the activity comes before the tick that would hide the bar.
    void activityKeepsTheBar()
    {
        const Window w({"long.mp4"});
        w.play();
        const std::function<void()> activities[] = {
            [&] { w.key(Qt::Key_Left); },
            [&] { QTest::keyPress(w.page, Qt::Key_2); },
            [&] { QTest::keyRelease(w.page, Qt::Key_2); },
            [&] { QTest::mousePress(w.surface, Qt::LeftButton); },
            [&] { QTest::mouseRelease(w.surface, Qt::LeftButton); },
            [&] { w.page->slotKeyEventUpdate(), IdleTime::add(w.page, kBarStaysUs - 500000); },
            [] {}};
        QString visible;
        for (const auto& act : activities) {
            IdleTime::add(w.page, kBarStaysUs + 1);
            act();
            w.page->slotHidePagePlayerControl();
            visible += w.bar->isVisible() ? 'v' : 'h';
        }
        QCOMPARE(visible, QStringLiteral("vvvvvvh"));
    }

    void buttonsSeekAndStop()
    {
        const Window w({"long.mp4"});
        w.play();
        QVERIFY(w.shows("/01:20"));
        auto* slider = w.bar->findChild<QSlider*>();
        for (const int seconds : {34, 68}) {
            w.buttons[3]->click();
            QTRY_VERIFY_WITH_TIMEOUT(slider->value() >= seconds, kLimitMs);
        }
        w.buttons[2]->click();
        QTRY_VERIFY_WITH_TIMEOUT(slider->value() >= 34 && slider->value() < 68, kLimitMs);
        w.buttons[1]->click();
        QCOMPARE(slider->value(), 0);
        w.buttons[0]->click(); // the same file again
        QVERIFY(w.shows("/01:20"));
        w.buttons[4]->click();
        QVERIFY(w.onList() && !w.surface->m_bVideo);
        QVERIFY(!w.page->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly)->isActive());
        QVERIFY(frameCounters().framesOut < FramePool::kFrames / 2); // it does not play on
    }

    void displayAndMarginsCount()
    {
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::BlankCursor);
        QCOMPARE(QApplication::style()->pixelMetric(QStyle::PM_SmallIconSize), 16);
        QCOMPARE(QApplication::font().pixelSize(), 20);
        QCOMPARE(QApplication::font().family(), QFontDatabase::applicationFontFamilies(0).first());
        QCOMPARE(QSurfaceFormat::defaultFormat().renderableType(), QSurfaceFormat::OpenGLES);
        Window w({});
        w.main.reset();
        w.device.write(DevicePaths::kPositionConfig,
                       "EGL_MARGIN=10,20,30,40\nEGL_PADDING=1,2,3,4\n");
        readPositionConfig();
        w.open();
        QCOMPARE(w.main->geometry(), QGuiApplication::primaryScreen()->geometry());
        QCOMPARE(w.list->geometry(), w.main->rect());
        QCOMPARE(w.page->geometry(), QRect(11, 22, gScreenW - 44, gScreenH - 66));
        QCOMPARE(w.bar->geometry(), QRect(0, gScreenH - 66 - 80, gScreenW - 44, 80));
        w.list->hide();
        QCOMPARE(w.main->grab(QRect(0, 0, 1, 1)).toImage().pixelColor(0, 0), QColor(Qt::black));
        w.device.write(DevicePaths::kPositionConfig, "EGL_MARGIN=0,0,0,0\nEGL_PADDING=0,0,0,0\n");
        readPositionConfig();
    }
};

int main(int argc, char** argv)
{
    qputenv("QT_FONT_DPI", "192");
    ignoreScreenDensity();
    QApplication app(argc, argv);
    QDirIterator font("/usr/share/fonts", {"*.tt?"}, QDir::Files, QDirIterator::Subdirectories);
    QFile::remove(DevicePaths::kFont); // a link, if the last run has crashed: never write to it
    QDir().mkpath(QFileInfo(DevicePaths::kFont).path());
    QFile::link(font.next(), DevicePaths::kFont);
    setUpDisplay();
    setDefaultSurfaceFormat();
    tst_page_main test;
    const int failed = QTest::qExec(&test, argc, argv);
    QFile::remove(DevicePaths::kFont);
    return failed;
}

#include "tst_page_main.moc"
