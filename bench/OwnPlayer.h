// The whole player inside a program that measures it, and what that program asks of its process.
// GUI thread. Needs a build with a DEVICE_ROOT.
#pragma once

#include "app/CPageMain.h"
#include "app/DisplaySettings.h"
#include "common/DevicePaths.h"
#include "pages/player/CPagePlayer.h"
#include "pages/player/CPagePlayerControl.h"
#include "render/CGLWndPlayer.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <memory>

// Handles events until the condition holds. The timer ends each wait; processEvents() with a time
// limit would spin. It also leaves objects of deleteLater() to exec(), so we delete them here.
inline bool waitFor(const std::function<bool()>& condition, int limitMs)
{
    constexpr int kTickMs = 10;
    QElapsedTimer clock;
    clock.start();
    QTimer ticks;
    ticks.start(kTickMs);
    while (!condition() && clock.elapsed() < limitMs) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return condition();
}

inline void waitMs(int ms)
{
    waitFor([] { return false; }, ms);
}

// After the QApplication, before an OwnPlayer.
inline void setUpQuietly()
{
    setUpDisplay();
    setDefaultSurfaceFormat();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

inline double residentMegabytes()
{
    QFile status("/proc/self/status");
    status.open(QIODevice::ReadOnly);
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.simplified().split(' ')[1].toDouble() / 1024;
    return 0;
}

inline int entries(const char* folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size();
}

// Makes this folder the root of the recordings.
inline void listOnly(const QString& root)
{
    QDir().mkpath(QFileInfo(DevicePaths::kSystemConfig).path());
    QFile config(DevicePaths::kSystemConfig);
    config.open(QIODevice::WriteOnly);
    config.write(root.toLocal8Bit());
}

// The player, with these files as its only recordings.
class OwnPlayer
{
public:
    explicit OwnPlayer(const QStringList& files)
    {
        for (const QString& file : files)
            QFile::link(QFileInfo(file).absoluteFilePath(),
                        m_root.filePath(QFileInfo(file).fileName()));
        listOnly(m_root.path());
        m_window = std::make_unique<CPageMain>(nullptr);
        page = m_window->findChild<CPagePlayer*>();
        list = m_window->findChild<QListWidget*>();
        surface = page->findChild<CGLWndPlayer*>();
        bar = page->findChild<CPagePlayerControl*>();
        waitMs(300);
    }
    void mark(int row) { list->item(row)->setCheckState(Qt::Checked); }
    void playMarked() { list->parentWidget()->findChild<QPushButton*>()->click(); }
    void play(int row)
    {
        mark(row);
        playMarked();
    }
    QPushButton* button(int index) { return bar->findChildren<QPushButton*>()[index]; }
    void stop() { button(1)->click(); }
    void back() { bar->findChildren<QPushButton*>().last()->click(); }
    void close() { m_window.reset(); }

    CPagePlayer* page = nullptr;
    QListWidget* list = nullptr;
    CGLWndPlayer* surface = nullptr;
    CPagePlayerControl* bar = nullptr;

private:
    QTemporaryDir m_root;
    std::unique_ptr<CPageMain> m_window;
};
