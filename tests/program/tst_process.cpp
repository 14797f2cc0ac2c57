// The program as a process: driven by real keys, and how it exits.
#include "tests/Rows.h"
#include "tests/TestDevice.h"
#include "tests/comm/HubProcess.h"

#include <QtTest>

#include <csignal>
#include <memory>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int kLongestLine = 2048; // bytes, of what Qt prints

class Program : public Child
{
public:
    explicit Program(const QStringList& arguments = {}, const QString& errorFile = {})
        : Child(PROGRAM, arguments, errorFile)
    {
    }

    // Its window has the keyboard focus.
    bool takesKeys()
    {
        const QString test =
            "until [ \"$(xdotool getwindowfocus getwindowpid)\" = %1 ]; do sleep 0.05; done";
        const QStringList wait{QString::number(kLimitMs / 1000), "sh", "-c", test.arg(id())};
        return prints("path from cfg file:") && QProcess::execute("timeout", wait) == 0;
    }
    static void key(const char* names)
    {
        QProcess::execute("xdotool", QStringList{"key"} + QString(names).split(' '));
    }
};

} // namespace

class tst_process : public QObject
{
    Q_OBJECT

private slots:
    void playsAndLeavesByKeys_data()
    {
        columns<QStringList, QByteArray, QByteArray>({"arguments", "markAndPlay", "exit"});
        row("all keys", QStringList(), QByteArray("Return Down Return"), QByteArray("Up Return"));
        row("two keys", QStringList({"-platform", "xcb", "--twokeymode=on"}), QByteArray("2 1 2"),
            QByteArray("1 1 1 2"));
    }
    void playsAndLeavesByKeys()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, markAndPlay);
        QFETCH(QByteArray, exit);
        const TestDevice device({"silent.mp4"});
        TestDevice::write(DevicePaths::kPositionConfig, "EGL_MARGIN=1,2,3,4\n");
        HubProcess hub({"exit-request"}); // which the device cannot force
        Program program(arguments);
        QVERIFY(program.prints("Margin: L T R B = 1   2   3   4"));
        QVERIFY(program.takesKeys());
        QVERIFY(hub.waitFor("sent 1 of 1"));
        Program::key(markAndPlay);
        QVERIFY(program.prints("slotPagePlayerListToPagePlayer() ..."));
        QVERIFY(program.prints("End of stream!!!"));
        QVERIFY(program.prints("slotPagePlayerToPagePlayerList() ..."));
        QVERIFY(program.prints("-------ItemCount 1"));
        Program::key(exit);
        QVERIFY(program.prints("communication exit successfully."));
        QVERIFY(program.ended());
        QCOMPARE(program.end(0), 0);
        QVERIFY(!program.output().contains("signal"));
        QVERIFY(!program.output().contains("QOpenGLShader")); // it complains of what it cannot draw
        QCOMPARE(hub.endWhenPlayerLeft().count(kAppSwitch), 1);
    }

    void saysWhatIsMissing_data()
    {
        columns<QString, QStringList, int, QByteArray>({"command", "arguments", "status", "line"});
        row("OpenGL", QString(PROGRAM), QStringList({"-platform", "minimal"}), 69,
            QByteArray("'minimal' cannot draw with OpenGL"));
        row("descriptors", QString("prlimit"), QStringList({"--nofile=16", PROGRAM}), 71,
            QByteArray("needs 32 file descriptors"));
    }
    void saysWhatIsMissing()
    {
        QFETCH(QString, command);
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QByteArray, line);
        Child program(command, arguments);
        QVERIFY(program.ended());
        QCOMPARE(program.end(0), status);
        QVERIFY(program.output().contains(line));
    }

    void tellsTheServiceManagerThatItIsAlive()
    {
        const TestDevice device;
        sockaddr_un address = {AF_UNIX, {}};
        qstrncpy(address.sun_path, qPrintable(device.path("notify")), sizeof address.sun_path);
        const int manager = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        QCOMPARE(bind(manager, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        qputenv("NOTIFY_SOCKET", address.sun_path);
        qputenv("WATCHDOG_USEC", "600000");
        Program program;
        qunsetenv("NOTIFY_SOCKET");
        qunsetenv("WATCHDOG_USEC");
        char text[100] = {};
        const auto told = [&] { return recv(manager, text, sizeof text, 0) > 0; };
        QVERIFY(QTest::qWaitFor(told, kLimitMs) && QTest::qWaitFor(told, kLimitMs));
        QCOMPARE(text, "WATCHDOG=1");
        program.signal(SIGINT);
        QVERIFY(program.ended());
        close(manager);
    }

    void leavesOnInterrupt_data()
    {
        // keys: pressed on the list
        // moment: what is printed when the interrupt is sent
        columns<QByteArray, QByteArray, int>({"keys", "moment", "times"});
        const QByteArray play = "Return Down Return";
        row("start-up", QByteArray(), QByteArray("path from cfg file:"), 1);
        row("no hub: a retry is due", QByteArray(), QByteArray("failed. errno=1."), 1);
        row("list", QByteArray("Down"), QByteArray(), 1);
        row("page just switching", play, QByteArray("ListToPagePlayer() ..."), 1);
        row("playing", play, QByteArray("CPlayer::stop() end ..."), 1);
        row("paused", play + " Return", QByteArray("CPlayer::stop() end ..."), 1);
        row("ten in a row", play, QByteArray("CPlayer::stop() end ..."), 10);
    }
    void leavesOnInterrupt()
    {
        QFETCH(QByteArray, keys);
        QFETCH(QByteArray, moment);
        QFETCH(int, times);
        const TestDevice device({"long.mp4"});
        std::unique_ptr<HubProcess> hub;
        if (!moment.contains("errno"))
            hub = std::make_unique<HubProcess>();
        Program program;
        if (!keys.isEmpty()) {
            QVERIFY(program.takesKeys());
            Program::key(keys);
        }
        QVERIFY(program.prints(moment));
        program.signal(SIGPIPE); // which it outlives
        for (int i = 0; i < times; ++i)
            program.signal(SIGINT);
        QVERIFY(program.ended());
        QCOMPARE(program.end(0), 0);
        QVERIFY(program.output().contains("catch a signal no=2.\n"));
        if (hub)
            QCOMPARE(hub->endWhenPlayerLeft().count(kAppSwitch), 1);
    }

    // Qt tells so much of its plugins that a full pipe stops the program in the middle of its
    // start.
    void leavesOnInterruptWhileQtStarts()
    {
        const TestDevice device;
        const QString fifo = device.path("errors");
        QCOMPARE(mkfifo(qPrintable(fifo), S_IRWXU), 0);
        const int errors = open(qPrintable(fifo), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const int room = fcntl(errors, F_SETPIPE_SZ, 4096);
        qputenv("QT_DEBUG_PLUGINS", "1");
        Program program({}, fifo);
        qunsetenv("QT_DEBUG_PLUGINS");
        int waiting = 0;
        QTRY_VERIFY_WITH_TIMEOUT(
            ioctl(errors, FIONREAD, &waiting) == 0 && waiting > room - kLongestLine, kLimitMs);
        program.signal(SIGINT);
        fcntl(errors, F_SETPIPE_SZ, 1 << 20); // room for the rest
        QVERIFY(program.ended());
        QCOMPARE(program.end(0), 0);
        close(errors);
    }
};

QTEST_GUILESS_MAIN(tst_process)
#include "tst_process.moc"
