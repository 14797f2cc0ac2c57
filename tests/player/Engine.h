// The engine, and a record of everything it hands on and reports.
#pragma once

#include "player/CPlayer.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <climits>
#include <memory>

constexpr int kLimitMs = QP_LIMIT_MS;
constexpr int kNever = INT_MAX;
constexpr qint64 kSecond = 1000000000;

inline QByteArray clip(const QString& name)
{
    return QFile::encodeName(QDir(QStringLiteral(CLIP_DIR)).absoluteFilePath(name));
}

struct Clock : QElapsedTimer
{
    Clock() { start(); }
};

// The signals come from several threads. This object is their context, so the test's thread counts
// them.
struct Engine : QObject
{
    Engine()
    {
        connect(player.get(), &CPlayer::sgSendPlayingState, this, [this](bool playing, bool pause) {
            states << QStringLiteral("%1%2").arg(int(playing)).arg(int(pause));
        });
        connect(player.get(), &CPlayer::sgRestartPlay, this, [this] { states << "restart"; });
        connect(player.get(), &CPlayer::sgPlayFinished, this, [this] { ++finished; });
        connect(player.get(), &CPlayer::sgPlayError, this, [this] { ++errors; });
        connect(player.get(), &CPlayer::sgUpdateData, this, [this] { ++updates; });
        player->initPipeline();
    }

    // From frame `holdFrom` on, keeps the worker waiting, as a surface does that is never painted.
    static int receive(int format, unsigned long phys, unsigned char* virt, int width, int height,
                       void* user)
    {
        auto* engine = static_cast<Engine*>(user);
        engine->valid = engine->valid && format == 1 && phys != 0 && height % 2 == 0;
        engine->width = width;
        engine->rising = engine->rising && virt[0] > engine->brightness;
        engine->brightness = virt[0];
        if (width == 4)
            std::copy_n(virt, 24, engine->bytes);
        ++engine->frames;
        while (engine->frames >= engine->holdFrom &&
               !QThread::currentThread()->isInterruptionRequested())
            QThread::msleep(1);
        return 0;
    }

    bool starts(const QString& file)
    {
        player->playFile(clip(file));
        return QTest::qWaitFor([this] { return frames > 0; }, kLimitMs);
    }

    std::atomic<int> frames{0};
    std::atomic<int> width{0};
    std::atomic<int> brightness{0}; // of the first pixel
    std::atomic<bool> rising{true};
    std::atomic<bool> valid{true};
    std::atomic<int> holdFrom{kNever};
    char bytes[25] = {}; // of a picture of four pixels by four
    std::unique_ptr<CPlayer> player = std::make_unique<CPlayer>(receive, this);
    QStringList states;
    int finished = 0;
    int errors = 0;
    int updates = 0;
};
