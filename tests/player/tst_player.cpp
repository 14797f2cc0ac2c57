// The engine against real clips.
#include "player/CPlayer.h"

#include "platform/host/FramePool.h"
#include "platform/host/HostCounters.h"
#include "tests/Rows.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

namespace {

constexpr int kLimitMs = QP_LIMIT_MS;
constexpr qint64 kSecond = 1000000000;

QByteArray clip(const QString& name)
{
    return QFile::encodeName(QStringLiteral(CLIP_DIR "/") + name);
}

// An engine with everything it hands on and reports. Its signals come from several threads; with
// this object as context they are counted on the test's own.
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
        player->initPipeline(); // later calls do nothing
    }

    // Keeps the worker waiting where it is told to, as a surface does that is never painted.
    static int receive(int format, unsigned long phys, unsigned char* virt, int width, int height,
                       void* user)
    {
        auto* engine = static_cast<Engine*>(user);
        engine->valid = engine->valid && format == 1 && phys != 0 && height % 2 == 0;
        engine->width = width;
        engine->firstBytes = qFromUnaligned<quint32>(virt);
        ++engine->frames;
        while (engine->hold && !QThread::currentThread()->isInterruptionRequested())
            QThread::msleep(1);
        return 0;
    }

    bool playsTo(qint64 ns) const
    {
        return QTest::qWaitFor([&] { return player->queryPosition() >= ns; }, kLimitMs);
    }

    std::atomic<int> frames{0};
    std::atomic<int> width{0};
    std::atomic<quint32> firstBytes{0};
    std::atomic<bool> valid{true};
    std::atomic<bool> hold{false};
    std::unique_ptr<CPlayer> player = std::make_unique<CPlayer>(receive, this);
    QStringList states;
    int finished = 0;
    int errors = 0;
    int updates = 0;
};

} // namespace

class tst_player : public QObject
{
    Q_OBJECT

private slots:
    void idleEngineReportsNothing()
    {
        Engine e;
        QTest::ignoreMessage(QtDebugMsg,
                             "+++ CPlayer::stop() start ...m_bPlaying= false  m_bPause= false");
        QTest::ignoreMessage(QtDebugMsg, "+++ CPlayer::stop() end ...");
        e.player->stop();
        e.player->seekForward();
        e.player->seekBackward();
        QCOMPARE(e.states, QStringList());
        QCOMPARE(e.player->queryPosition(), -1);
    }

    void reportsEachChangeOnce()
    {
        Engine e;
        e.player->playFile(clip("long.mp4"));
        QTRY_VERIFY_WITH_TIMEOUT(e.frames > 0, kLimitMs);
        e.player->playPause();
        e.player->playPause();
        e.player->playFile(clip("long.mp4")); // a file that plays is paused, not restarted
        QTest::ignoreMessage(QtDebugMsg,
                             "+++ CPlayer::stop() start ...m_bPlaying= true  m_bPause= true");
        e.player->stop();
        e.player->stop();
        QCOMPARE(e.states.join(' '), QStringLiteral("restart 10 11 10 11 00"));
        QVERIFY(!e.player->isPlaying());
    }

    void playsToTheEnd_data()
    {
        columns<QString, int, int, int>({"file", "frames", "width", "atLeastMs"});
        row("H.264 with sound", "talking.mp4", 75, 320, 2800);
        row("silent, paced by the engine alone", "silent.mp4", 60, 320, 1900);
        row("equal timestamps of neighbours", "bframes.avi", 50, 320, 1500);
        row("odd size", "odd.avi", 8, 54, 700);
        row("one pixel", "tiny.avi", 10, 2, 900);
        row("another size midway", "resized.mp4", 50, 160, 1900);
        row("umlauts, blanks and Chinese", QString::fromUtf8("名 mit Ümlaut.mp4"), 60, 320, 1900);
    }

    void playsToTheEnd()
    {
        QFETCH(QString, file);
        QFETCH(int, frames);
        QFETCH(int, width);
        QFETCH(int, atLeastMs);
        Engine e;
        for (int round = 1; round <= 2; ++round) { // the second from NULL, not from READY
            QElapsedTimer clock;
            clock.start();
            e.player->playFile(clip(file));
            QTRY_COMPARE_WITH_TIMEOUT(e.finished, round, kLimitMs);
            QVERIFY2(clock.elapsed() >= atLeastMs, qPrintable(QString::number(clock.elapsed())));
            QCOMPARE(e.updates, round * frames); // none is still to come
            QVERIFY(e.player->isPlaying());
            e.player->stop();
        }
        QCOMPARE(e.frames.load(), 2 * frames);
        QCOMPARE(e.width.load(), width);
        QVERIFY(e.valid);
        QCOMPARE(e.errors, 0);
        if (file == "tiny.avi") // the brightness of red, its only pixel repeated
            QCOMPARE(e.firstBytes.load(), 0x51515151U);
    }

    void reportsWhatCannotPlay_data()
    {
        columns<QString>({"file"});
        row("missing", "no such file.mp4");
        row("empty", "empty.mp4");
        row("text", "notvideo.mp4");
        row("damaged", "damaged.mp4");
        row("number sign in the name", "a#b.mp4");
    }

    void reportsWhatCannotPlay()
    {
        QFETCH(QString, file);
        Engine e;
        e.player->playFile(clip(file));
        QTRY_VERIFY_WITH_TIMEOUT(e.errors > 0, kLimitMs);
        e.player->stop();
        QCOMPARE(e.states.join(' '), QStringLiteral("restart 10 00"));

        e.player->playFile(clip("silent.mp4")); // and the engine is fit for the next file
        const int frames = e.frames;
        QTRY_VERIFY_WITH_TIMEOUT(e.frames > frames, kLimitMs);
    }

    void pausedTimeDoesNotPass()
    {
        constexpr int kPausedMs = 600;
        Engine e;
        QElapsedTimer clock;
        clock.start();
        e.player->playFile(clip("talking.mp4"));
        QVERIFY(e.playsTo(kSecond / 2));
        e.player->playPause();
        const qint64 stoodAt = e.player->queryPosition();
        QTest::qWait(kPausedMs); // time passes: that is what is tested
        QCOMPARE(e.player->queryPosition(), stoodAt);
        e.player->playPause();
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
        QVERIFY2(clock.elapsed() >= 2800 + kPausedMs, qPrintable(QString::number(clock.elapsed())));
    }

    // The end waits in the platform for the last frame; that wait outlasts the pause.
    void aPauseDoesNotLoseTheEnd()
    {
        Engine e;
        e.player->playFile(clip("odd.avi"));
        QTRY_VERIFY_WITH_TIMEOUT(e.updates > 0, kLimitMs);
        e.player->playPause();
        QTRY_COMPARE_WITH_TIMEOUT(e.updates, FramePool::kFrames, kLimitMs);
        QVERIFY(!QTest::qWaitFor([&] { return e.finished > 0; }, 300));
        e.player->playPause();
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
    }

    void seeks_data()
    {
        // steps: f and b, from the start; the long clip lasts 80 s
        columns<QString, QString, int>({"file", "steps", "lands"});
        row("forward", "long.mp4", "f", 34);
        row("forward twice", "long.mp4", "ff", 68);
        row("past the end: one second before it", "long.mp4", "fff", 79);
        row("back and forth", "long.mp4", "ffb", 34);
        row("back in the first 34 s: to the start", "long.mp4", "b", 0);
        row("no second long: to the start", "odd.avi", "f", 0);
    }

    void seeks()
    {
        QFETCH(QString, file);
        QFETCH(QString, steps);
        QFETCH(int, lands);
        Engine e;
        e.player->playFile(clip(file));
        QTRY_VERIFY_WITH_TIMEOUT(e.frames > 0 && e.player->queryDuration() > 0, kLimitMs);
        for (const QChar& step : steps) {
            const int before = e.frames;
            if (step == 'f')
                e.player->seekForward();
            else
                e.player->seekBackward();
            // Frames that are decoded before the engine takes any again are lost; just before the
            // end, on a busy machine, that can be all of them.
            QTRY_VERIFY_WITH_TIMEOUT(
                (e.frames > before && e.player->queryPosition() >= 0) || e.finished > 0, kLimitMs);
        }
        // The position runs ahead of the picture by the frames in flight, at 10 to the second, and
        // each step may have played a little before the next.
        const double position = static_cast<double>(e.player->queryPosition()) / kSecond;
        QVERIFY2(position >= lands - 0.1 && position < lands + 12,
                 qPrintable(QString::number(position)));
        QCOMPARE(e.errors, 0);
    }

    // While every frame is out and the hand-off does not end, no operation waits for a frame.
    void waitsForNoFrame_data()
    {
        columns<QString, bool>({"file", "paused"});
        row("playing", "long.mp4", false);
        row("paused", "long.mp4", true);
        row("playing, with sound", "talking.mp4", false);
        row("paused, with sound", "talking.mp4", true);
    }

    void waitsForNoFrame()
    {
        QFETCH(QString, file);
        QFETCH(bool, paused);
        Engine e;
        e.hold = true;
        e.player->playFile(clip(file));
        qint64 longestMs = 0;
        for (void (CPlayer::*operation)() :
             {&CPlayer::seekForward, &CPlayer::seekBackward, &CPlayer::stop}) {
            QTRY_COMPARE_WITH_TIMEOUT(hostCounters().framesOut.load(), FramePool::kFrames,
                                      kLimitMs);
            if (paused)
                e.player->playPause();
            QElapsedTimer clock;
            clock.start();
            (e.player.get()->*operation)();
            longestMs = std::max(longestMs, clock.elapsed());
            if (paused && e.player->isPlaying())
                e.player->playPause();
        }
        // Generous: sanitizers, and other work on the machine.
        QVERIFY2(longestMs < 2000, qPrintable(QString::number(longestMs)));
    }

    void endsAtAnyMoment_data()
    {
        columns<QString>({"moment"});
        for (const char* moment :
             {"idle", "just started", "playing", "paused", "hand-off never drawn",
              "end without the last frame", "after the end"})
            row(moment, moment);
    }

    void endsAtAnyMoment()
    {
        QFETCH(QString, moment);
        const bool toTheEnd = moment.contains("end");
        Engine e;
        e.hold = (moment == "hand-off never drawn" || moment == "end without the last frame");
        if (moment != "idle")
            e.player->playFile(clip(toTheEnd ? "odd.avi" : "long.mp4"));
        if (toTheEnd)
            QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
        else if (moment != "idle" && moment != "just started")
            QTRY_VERIFY_WITH_TIMEOUT(e.frames > 0, kLimitMs);
        if (moment == "paused")
            e.player->playPause();
        QElapsedTimer clock;
        clock.start();
        QTest::ignoreMessage(QtDebugMsg, "++ CPlayer::slotProcessSample() quit ...");
        e.player.reset();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(hostCounters().framesOut.load(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_player)
#include "tst_player.moc"
