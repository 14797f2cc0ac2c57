// The engine against real clips.
#include "platform/open/FrameCounters.h"
#include "platform/open/FramePool.h"
#include "tests/Rows.h"
#include "tests/player/Engine.h"

#include <QTcpServer>
#include <QtEndian>

#include <sys/stat.h>

namespace {

QByteArray number(int value)
{
    const auto bytes = qToBigEndian(quint32(value));
    return QByteArray(reinterpret_cast<const char*>(&bytes), sizeof bytes);
}

QByteArray atom(const char* name, const QByteArray& content)
{
    return number(content.size() + 8) + name + content;
}

// A QuickTime file without tracks that sends the player to another address.
QByteArray redirectTo(const QByteArray& url)
{
    const QByteArray reference = number(0) + "url " + number(url.size() + 1) + url + '\0';
    return atom("ftyp", "qt  ") + atom("moov", atom("rmra", atom("rmda", atom("rdrf", reference))));
}

} // namespace

class tst_player : public QObject
{
    Q_OBJECT

private slots:
    void reportsEachChangeOnce()
    {
        Engine e;
        QTest::ignoreMessage(QtDebugMsg,
                             "+++ CPlayer::stop() start ...m_bPlaying= false  m_bPause= false");
        QTest::ignoreMessage(QtDebugMsg, "+++ CPlayer::stop() end ...");
        e.player->stop(); // idle, so these three do nothing
        e.player->seekForward();
        e.player->seekBackward();
        QCOMPARE(e.player->queryPosition(), -1);
        QCOMPARE(e.player->queryDuration(), -1);
        QVERIFY(e.starts("long.mp4"));
        QTest::ignoreMessage(QtDebugMsg,
                             "+++ CPlayer::stop() start ...m_bPlaying= true  m_bPause= false");
        e.player->stop();
        e.player->playPause();
        e.player->playPause();
        e.player->playPause();
        e.player->playFile(clip("long.mp4")); // a file that plays is paused, not restarted
        e.player->stop();
        e.player->stop();
        QCOMPARE(e.states.join(' '), QStringLiteral("restart 10 00 restart 10 11 10 11 00"));
        QVERIFY(!e.player->isPlaying());
    }

    void playsToTheEnd_data()
    {
        columns<QString, int, int, int>({"file", "frames", "width", "lastsMs"});
        row("H.264 with sound", "talking.mp4", 50, 320, 2000);
        row("equal timestamps of neighbours", "bframes.avi", 25, 320, 1000);
        row("odd size", "odd.avi", 5, 54, 500);
        row("nine pixels", "tiny.avi", 10, 4, 1000);
        row("another size midway", "resized.mp4", 26, 160, 1040);
    }
    void playsToTheEnd()
    {
        QFETCH(QString, file);
        QFETCH(int, frames);
        QFETCH(int, width);
        QFETCH(int, lastsMs);
        Engine e;
        const Clock clock;
        e.player->playFile(clip(file));
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
        QVERIFY2(clock.elapsed() >= lastsMs - 10, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(e.updates, frames); // the end comes after the last frame
        QCOMPARE(e.frames.load(), frames);
        QVERIFY(e.player->isPlaying());
        QCOMPARE(e.width.load(), width);
        QVERIFY(e.valid);
        QVERIFY(e.rising || width != 4);
        QCOMPARE(e.bytes, width == 4 ? "JbccdeffghiighiiUVXYuvxy" : ""); // edges are repeated
        QCOMPARE(e.errors, 0);
    }

    void reportsWhatCannotPlay_data()
    {
        columns<QString>({"file"});
        row("missing", "no such file.mp4");
        row("text", "notvideo.mp4");
        row("damaged", "damaged.mp4");
        row("number sign in the name", "a#b.mp4");
        row("folder", "/tmp");
        row("device", "/dev/zero");
        row("FIFO", "fifo");
        row("none chosen", "");
    }
    void reportsWhatCannotPlay()
    {
        QFETCH(QString, file);
        Engine e;
        mkfifo(clip("fifo"), 0600);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("ERROR \\.\\.  [A-Z][^/]+$"));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("file .*" + file + " : [^ ].+$"));
        file.isEmpty() ? e.player->playPause() : e.player->playFile(clip(file));
        QTRY_VERIFY_WITH_TIMEOUT(e.errors > 0, kLimitMs);
        QCOMPARE(e.finished, 0);
        e.player->playPause(); // keys may come before the error is dealt with
        e.player->playPause();
        e.player->stop();
        QCOMPARE(e.states.join(' '), QStringLiteral("restart 10 11 10 00"));

        // The engine can play the next file, whatever its name.
        e.player->playFile(clip(QString::fromUtf8("名 mit Ümlaut.mp4")));
        const int frames = e.frames;
        QTRY_VERIFY_WITH_TIMEOUT(e.frames > frames, kLimitMs);
    }

    // Each file is called .mp4 and names another recording, on the disk or at a server.
    void opensTheChosenFileOnly_data()
    {
        const QByteArray hls = "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n@\n#EXT-X-ENDLIST\n";
        const QByteArray ges =
            "<ges version='0.7'><project><ressources><asset id='@' "
            "extractable-type-name='GESUriClip' properties='p, supported-formats=(int)4, "
            "duration=(guint64)1000000000;'/></ressources><timeline><track caps='video/x-raw(ANY)' "
            "track-type='4' track-id='0'/><layer priority='0'><clip id='0' asset-id='@' "
            "type-name='GESUriClip' layer-priority='0' track-types='4' start='0' inpoint='0' "
            "duration='1000000000' rate='0'/></layer></timeline></project></ges>";
        columns<QByteArray, bool>({"text", "remote"});
        for (const bool remote : {false, true}) {
            row(remote ? "redirect to a server" : "redirect to a file", QByteArray(), remote);
            row(remote ? "HLS from a server" : "HLS from a file", hls, remote);
            row(remote ? "timeline from a server" : "timeline from a file", ges, remote);
        }
    }
    void opensTheChosenFileOnly()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, remote);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QByteArray other =
            remote ? "http://127.0.0.1:" + QByteArray::number(server.serverPort()) + "/x.mp4"
                   : "file://" + clip("silent.mp4");
        QTemporaryFile file(QDir::tempPath() + "/XXXXXX.mp4");
        QVERIFY(file.open());
        file.write(text.isEmpty() ? redirectTo(other) : text.replace('@', other));
        file.close();
        Engine e;
        e.player->playFile(QFile::encodeName(file.fileName()));
        QTRY_VERIFY_WITH_TIMEOUT(e.errors > 0, kLimitMs);
        QCOMPARE(e.frames.load(), 0);
        QVERIFY(!server.hasPendingConnections());
        QVERIFY(!remote || !gst_element_make_from_uri(GST_URI_SRC, other, nullptr, nullptr));
    }

    // Many times, because GStreamer loses an error only if one thread is faster than another.
    void losesNoError()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(atom("ftyp", "qt  ") + QByteArray::fromHex("70000000") + "what is this?");
        file.close();
        for (int i = 0; i < 50; ++i) {
            Engine e;
            e.player->playFile(QFile::encodeName(file.fileName()));
            QTRY_VERIFY_WITH_TIMEOUT(e.errors > 0, kLimitMs);
        }
    }

    // A silent clip, because sound would set the pace.
    void pausedTimeDoesNotPass()
    {
        constexpr int kPausedMs = 700;
        constexpr int kAheadMs = FramePool::kFrames * 1000 / 30; // position before picture
        Engine e;
        const Clock clock;
        e.player->playFile(clip("silent.mp4"));
        QTRY_VERIFY_WITH_TIMEOUT(e.player->queryPosition() >= kSecond / 2, kLimitMs);
        e.player->playPause();
        const qint64 stoodAt = e.player->queryPosition();
        QTest::qWait(kPausedMs); // time passes: that is what is tested
        QCOMPARE(e.player->queryPosition(), stoodAt);
        e.player->playPause();
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
        QVERIFY2(clock.elapsed() >= 2000 + kPausedMs - kAheadMs - 50,
                 qPrintable(QString::number(clock.elapsed())));
    }

    // The platform holds the end back until the last frame has been shown for its duration, also
    // over a pause.
    void theEndWaitsForTheLastFrame()
    {
        constexpr int kLastFrame = 5; // of odd.avi
        Engine e;
        e.holdFrom = kLastFrame;
        e.player->playFile(clip("odd.avi"));
        QTRY_COMPARE_WITH_TIMEOUT(e.frames.load(), kLastFrame, kLimitMs);
        e.player->playPause();
        QVERIFY(!QTest::qWaitFor([&] { return e.finished > 0; }, 200));
        e.player->playPause();
        QVERIFY(!QTest::qWaitFor([&] { return e.finished > 0; }, 600));
        QCOMPARE(e.updates, kLastFrame - 1);
        const Clock clock;
        e.holdFrom = kNever;
        QTRY_COMPARE_WITH_TIMEOUT(e.finished, 1, kLimitMs);
        QVERIFY2(clock.elapsed() >= 100, qPrintable(QString::number(clock.elapsed())));
    }

    // After each seek and a pause, more frames come than were in flight.
    void goesOnAfterSeeks()
    {
        Engine e;
        QVERIFY(e.starts("long.mp4"));
        for (void (CPlayer::*step)() : {&CPlayer::seekForward, &CPlayer::seekForward,
                                        &CPlayer::seekBackward, &CPlayer::playPause}) {
            (e.player.get()->*step)();
            if (step == &CPlayer::playPause)
                e.player->playPause();
            const int frames = e.frames + FramePool::kFrames + 1;
            QTRY_VERIFY_WITH_TIMEOUT(e.frames >= frames, kLimitMs);
        }
        // The position runs ahead of the picture by the frames in flight, at 10 to the second.
        const double position = static_cast<double>(e.player->queryPosition()) / kSecond;
        QVERIFY2(position >= 34 && position < 46, qPrintable(QString::number(position)));
        QCOMPARE(e.errors, 0);
    }

    // No operation waits for a frame, although all frames are out and the hand-off does not end. A
    // seek drops the stored frames. A stop leaves the hand-off's frame and appsink's last one.
    void waitsForNoFrame_data()
    {
        columns<QString, bool>({"file", "paused"});
        row("playing", "long.mp4", false);
        row("paused", "long.mp4", true);
        row("playing, at the end", "odd.avi", false);
        row("paused, with sound", "talking.mp4", true);
    }
    void waitsForNoFrame()
    {
        QFETCH(QString, file);
        QFETCH(bool, paused);
        for (void (CPlayer::*operation)() :
             {&CPlayer::seekForward, &CPlayer::seekBackward, &CPlayer::stop}) {
            Engine e;
            e.holdFrom = 1;
            QVERIFY(e.starts(file));
            QTRY_COMPARE_WITH_TIMEOUT(frameCounters().framesOut.load(), FramePool::kFrames,
                                      kLimitMs);
            if (paused)
                e.player->playPause();
            const unsigned exported = frameCounters().framesExported;
            const Clock clock;
            (e.player.get()->*operation)();
            // Generous: sanitizers, and other work on the machine.
            QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
            if (e.player->isPlaying()) {
                QTRY_VERIFY_WITH_TIMEOUT(frameCounters().framesExported > exported, kLimitMs);
                e.holdFrom = paused ? kNever : 1; // what was stored before the seek would come now
                QVERIFY(!QTest::qWaitFor([&e] { return e.frames > 1; }, 100));
                continue;
            }
            QCOMPARE(frameCounters().framesOut.load(), 2);
            const std::unique_ptr<QThread> surface(QThread::create([&e] {
                QThread::msleep(100);
                e.holdFrom = kNever;
            }));
            surface->start();
            e.player->waitForWorker();
            QCOMPARE(frameCounters().framesOut.load(), 1);
            surface->wait();
        }
    }

    void endsAtAnyMoment_data()
    {
        columns<QString, bool, int>({"file", "toTheEnd", "holdFrom"});
        row("just started", "long.mp4", false, kNever);
        row("after the end", "odd.avi", true, kNever);
        row("hand-off never drawn", "long.mp4", false, 1);
        row("end without the last frame", "odd.avi", true, 2);
    }
    void endsAtAnyMoment()
    {
        QFETCH(QString, file);
        QFETCH(bool, toTheEnd);
        QFETCH(int, holdFrom);
        Engine e;
        e.holdFrom = holdFrom;
        e.player->playFile(clip(file));
        QTRY_VERIFY_WITH_TIMEOUT(e.frames >= holdFrom || holdFrom == kNever, kLimitMs);
        QTRY_VERIFY_WITH_TIMEOUT(e.finished == 1 || !toTheEnd, kLimitMs);
        const Clock clock;
        QTest::ignoreMessage(QtDebugMsg, "++ CPlayer::slotProcessSample() quit ...");
        e.player.reset();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(frameCounters().framesOut.load(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_player)
#include "tst_player.moc"
