// The engine against real clips.
#include "player/CPlayer.h"

#include "platform/host/FramePool.h"
#include "platform/host/HostCounters.h"
#include "tests/player/FrameLog.h"

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

// An engine with everything it reports. Its signals come from several threads; with this object as
// context they are counted on the test's own.
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

    bool playsTo(qint64 ns) const
    {
        return QTest::qWaitFor([&] { return player->queryPosition() >= ns; }, kLimitMs);
    }

    FrameLog log;
    std::unique_ptr<CPlayer> player = std::make_unique<CPlayer>(FrameLog::receive, &log);
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
    void idleEngineReportsNothing();
    void reportsEachChangeOnce();
    void playsToTheEnd_data();
    void playsToTheEnd();
    void reportsWhatCannotPlay_data();
    void reportsWhatCannotPlay();
    void pausedTimeDoesNotPass();
    void aPauseDoesNotLoseTheEnd();
    void seeks_data();
    void seeks();
    void endsAtAnyMoment_data();
    void endsAtAnyMoment();
};

void tst_player::idleEngineReportsNothing()
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

void tst_player::reportsEachChangeOnce()
{
    Engine e;
    e.player->playFile(clip("long.mp4"));
    QTRY_VERIFY_WITH_TIMEOUT(e.log.frames() > 0, kLimitMs);
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

void tst_player::playsToTheEnd_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("frames");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("atLeastMs");
    QTest::newRow("H.264 with sound") << "talking.mp4" << 75 << QSize(320, 240) << 2800;
    QTest::newRow("silent, paced by the engine alone")
        << "silent.mp4" << 60 << QSize(320, 240) << 1900;
    QTest::newRow("equal timestamps of neighbours")
        << "bframes.avi" << 50 << QSize(320, 240) << 1500;
    QTest::newRow("odd size") << "odd.avi" << 8 << QSize(54, 42) << 700;
    QTest::newRow("one pixel") << "tiny.avi" << 10 << QSize(2, 2) << 900;
    QTest::newRow("another size midway") << "resized.mp4" << 50 << QSize(160, 120) << 1900;
    QTest::newRow("umlauts, blanks and Chinese")
        << QString::fromUtf8("名 mit Ümlaut.mp4") << 60 << QSize(320, 240) << 1900;
}

void tst_player::playsToTheEnd()
{
    QFETCH(QString, file);
    QFETCH(int, frames);
    QFETCH(QSize, size);
    QFETCH(int, atLeastMs);
    Engine e;
    for (int round = 1; round <= 2; ++round) { // the second run starts from NULL, not from READY
        QElapsedTimer clock;
        clock.start();
        e.player->playFile(clip(file));
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, round, kLimitMs);
        QVERIFY2(clock.elapsed() >= atLeastMs, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(e.updates, round * frames); // none is still to come
        QVERIFY(e.player->isPlaying());
        e.player->stop();
    }
    QCOMPARE(e.log.frames(), 2 * frames);
    QCOMPARE(e.log.size(), size);
    QVERIFY(e.log.valid());
    QCOMPARE(e.errors, 0);
    if (file == "tiny.avi") // red in BT.601 of limited range, its only pixel repeated
        QCOMPARE(e.log.bytes().toHex(), QByteArray("515151515af0"));
}

void tst_player::reportsWhatCannotPlay_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("missing") << "no such file.mp4";
    QTest::newRow("empty") << "empty.mp4";
    QTest::newRow("text") << "notvideo.mp4";
    QTest::newRow("damaged") << "damaged.mp4";
    QTest::newRow("number sign in the name") << "a#b.mp4";
}

void tst_player::reportsWhatCannotPlay()
{
    QFETCH(QString, file);
    Engine e;
    e.player->playFile(clip(file));
    QTRY_VERIFY_WITH_TIMEOUT(e.errors > 0, kLimitMs);
    e.player->stop();
    QCOMPARE(e.states.join(' '), QStringLiteral("restart 10 00"));

    e.player->playFile(clip("silent.mp4")); // and the engine is fit for the next file
    const int frames = e.log.frames();
    QTRY_VERIFY_WITH_TIMEOUT(e.log.frames() > frames, kLimitMs);
}

void tst_player::pausedTimeDoesNotPass()
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
void tst_player::aPauseDoesNotLoseTheEnd()
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

void tst_player::seeks_data()
{
    QTest::addColumn<QString>("steps"); // f and b, from the start of a clip of 80 s
    QTest::addColumn<int>("lands");
    QTest::newRow("forward") << "f" << 34;
    QTest::newRow("forward twice") << "ff" << 68;
    QTest::newRow("past the end: one second before it") << "fff" << 79;
    QTest::newRow("back and forth") << "ffb" << 34;
    QTest::newRow("back in the first 34 s: to the start") << "b" << 0;
}

void tst_player::seeks()
{
    QFETCH(QString, steps);
    QFETCH(int, lands);
    Engine e;
    e.player->playFile(clip("long.mp4"));
    QTRY_VERIFY_WITH_TIMEOUT(e.log.frames() > 0 && e.player->queryDuration() > 0, kLimitMs);
    for (const QChar& step : steps) {
        const int before = e.log.frames();
        if (step == 'f')
            e.player->seekForward();
        else
            e.player->seekBackward();
        // Frames that are decoded before the engine takes any again are lost; just before the
        // end, on a busy machine, that can be all of them.
        QTRY_VERIFY_WITH_TIMEOUT((e.log.frames() > before && e.player->queryPosition() >= 0) ||
                                     e.finished > 0,
                                 kLimitMs);
    }
    // The position runs ahead of the picture by the frames in flight, at 10 to the second, and each
    // step may have played a little before the next.
    const double position = static_cast<double>(e.player->queryPosition()) / kSecond;
    QVERIFY2(position >= lands - 0.1 && position < lands + 12,
             qPrintable(QString::number(position)));
    QCOMPARE(e.errors, 0);
}

void tst_player::endsAtAnyMoment_data()
{
    QTest::addColumn<QString>("moment");
    for (const char* moment : {"idle", "just started", "playing", "paused", "hand-off never drawn",
                               "end without the last frame", "after the end"})
        QTest::newRow(moment) << moment;
}

void tst_player::endsAtAnyMoment()
{
    QFETCH(QString, moment);
    const bool toTheEnd = moment.contains("end");
    Engine e;
    e.log.hold(moment == "hand-off never drawn" || moment == "end without the last frame");
    if (moment != "idle")
        e.player->playFile(clip(toTheEnd ? "odd.avi" : "long.mp4"));
    if (toTheEnd)
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
    else if (moment != "idle" && moment != "just started")
        QTRY_VERIFY_WITH_TIMEOUT(e.log.frames() > 0, kLimitMs);
    if (moment == "paused")
        e.player->playPause();
    QElapsedTimer clock;
    clock.start();
    QTest::ignoreMessage(QtDebugMsg, "++ CPlayer::slotProcessSample() quit ...");
    e.player.reset();
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(hostCounters().framesOut.load(), 0);
}

QTEST_GUILESS_MAIN(tst_player)
#include "tst_player.moc"
