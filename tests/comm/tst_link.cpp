// The link, the library below it, and the real hub at the other end.
#include "comm/CInnerCommunication.h"
#include "platform/libcommif.h"
#include "platform/open/commif/PacketSocket.h"
#include "platform/open/commif/SocketPath.h"
#include "tests/Rows.h"
#include "tests/comm/HubProcess.h"

#include <QtTest>

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

// A packet as 16-bit numbers: its type and the count of bytes that follow, then for each item its
// tag, the count of its value's bytes, and the lower and the upper half of the value.
QByteArray words(const QVector<quint16>& numbers)
{
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * 2};
}
const QByteArray kEmptyPacket = words({1, 0});

constexpr unsigned kBadArgument = 3;
constexpr unsigned kNotConnected = 4;

std::string runtimeFile(const char* name)
{
    return qgetenv("XDG_RUNTIME_DIR").toStdString() + '/' + name;
}

qint64 cpuTimeMs(pid_t process)
{
    clockid_t clock;
    timespec time = {};
    clock_getcpuclockid(process, &clock);
    clock_gettime(clock, &time);
    return time.tv_sec * 1000 + time.tv_nsec / 1000000;
}

unsigned errorOf(int result)
{
    return result == 0 ? 0 : KvrComm_GetInnerErrorCode();
}

unsigned send(const QByteArray& bytes)
{
    const auto length = static_cast<unsigned>(bytes.size());
    return errorOf(KvrComm_SendMsg(1, bytes.constData(), length));
}

// Counts packets, and holds the callback until `leave` lets it return.
struct Receiver
{
    ~Receiver()
    {
        leave.release(100000);
        KvrComm_Exit();
    }
    unsigned open() { return errorOf(KvrComm_Init(1, receive, this)); }
    bool has(int count) const
    {
        return QTest::qWaitFor([&] { return packets >= count; }, kLimitMs) && packets == count;
    }
    static void receive(void* context, void*, unsigned)
    {
        auto* self = static_cast<Receiver*>(context);
        ++self->packets;
        self->leave.acquire();
        self->atLast();
    }

    std::atomic<int> packets{0};
    QSemaphore leave;
    std::function<void()> atLast = [] {};
};

// Not Qt's containers: the thread sanitizer does not see their reference counts.
using Lines = std::vector<std::string>;

const std::string kSuccess = "inner communication init success.";
const std::string kFailure = "inner communication init failed. errno=1.";
const std::string kClosed = "inner communication exit successfully.";

std::mutex s_lock;
Lines s_lines; // debug lines of all threads since the last takeLines()

void keepLine(QtMsgType, const QMessageLogContext&, const QString& line)
{
    const std::lock_guard<std::mutex> lock(s_lock);
    s_lines.push_back(line.toStdString());
}
Lines takeLines()
{
    const std::lock_guard<std::mutex> lock(s_lock);
    return std::exchange(s_lines, {});
}

// A link that its owner closes in time. Counts exit requests on the delivery thread.
struct Link
{
    Link()
    {
        QObject::connect(&comm, &CInnerCommunication::sgAppExit, [this] { ++requests; });
    }
    ~Link() { comm.exitInnerComm(); }
    QTimer* timer() const { return comm.findChild<QTimer*>(); }

    std::atomic<int> requests{0};
    CInnerCommunication comm;
};

} // namespace

class tst_link : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        takeLines();
        qInstallMessageHandler(keepLine);
    }
    void cleanup() { qInstallMessageHandler(nullptr); }
    // Must be the first test, as a process reports five failures only. A link that is not up sends
    // and closes nothing.
    void lateHub()
    {
        Link link;
        QCOMPARE(link.timer()->interval(), 1000);
        QVERIFY(!link.timer()->isActive());
        link.timer()->setInterval(10);
        QSignalSpy retries(link.timer(), SIGNAL(timeout()));
        link.comm.initInnerComm();
        QVERIFY(!link.comm.isInited());
        QTRY_VERIFY_WITH_TIMEOUT(retries.count() >= 6, kLimitMs);
        link.comm.slotAppSwitch();
        link.comm.exitInnerComm();
        QCOMPARE(KvrComm_GetInnerErrorCode(), 1U);
        QCOMPARE(takeLines(), (Lines{kFailure, kFailure, kFailure, kFailure, kFailure}));

        HubProcess hub;
        QTRY_VERIFY_WITH_TIMEOUT(link.comm.isInited(), kLimitMs);
        QVERIFY(!link.timer()->isActive());
        QCOMPARE(takeLines(), Lines{kSuccess});
        link.comm.initInnerComm(); // the library refuses, without a report
        KvrComm_Exit();
        QVERIFY(!link.comm.isInited());
        QCOMPARE(takeLines(), Lines());
    }

    void receive_data()
    {
        columns<QByteArray, int, bool>({"bytes", "requests", "headError"});
        const QByteArray request = words({3, 4, 8, 0});
        const QByteArray filler = words({2, 65535, 9, 65523}) + QByteArray(65523, 'x');
        row("exit request", words({2, 16, 1, 4, 8, 0}) + request, 1, false);
        row("all but the exit bit", words({2, 8, 3, 4, 0xFFF7, 0xFFFF}), 0, false);
        row("all bits set", words({2, 8, 3, 4, 0xFFFF, 0xFFFF}), 1, false);
        row("short value between requests", words({2, 22}) + request + words({3, 2, 8}) + request,
            1, false);
        row("two requests", words({2, 16}) + request + request, 2, false);
        row("request at an odd address, and a rest", words({2, 14, 9, 1}) + 'x' + request + 'y', 1,
            false);
        row("type 1", words({1, 8}) + request, 0, false);
        row("cut inside the value", words({2, 8, 3, 4, 8}), 0, true);
        row("value longer than its packet", words({2, 6, 3, 4, 8}), 0, false);
        row("empty", QByteArray(), 0, true);
        row("as long as packets can be", filler + request, 1, false);
        row("longer: dropped", filler + request + 'x', 0, false);
    }
    // An exit request follows each packet. Once it is there, the packet has been processed.
    void receive()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, requests);
        QFETCH(bool, headError);
        HubProcess hub;
        Link link;
        link.comm.initInnerComm();
        QVERIFY(hub.waitFor("player connected"));
        hub.type("raw " + bytes.toHex().toUpper());
        hub.type("exit-request");
        QTRY_COMPARE_WITH_TIMEOUT(hub.output().count("sent 1 of 1"), 2, kLimitMs);
        QTRY_VERIFY_WITH_TIMEOUT(link.requests > requests, kLimitMs);
        QCOMPARE(link.requests.load(), requests + 1);
        QCOMPARE(takeLines().size(), headError ? 2U : 1U); // the first says that the link is up
    }

    // The stopped hub finds the player, its message and SIGTERM all at once.
    void appSwitch()
    {
        const QString place = QString::fromStdString(runtimeFile("elsewhere"));
        HubProcess hub({"--socket", place});
        hub.stop();
        qputenv("QUADPLAYER_LINK", place.toLocal8Bit());
        {
            Link link;
            link.comm.initInnerComm();
            link.comm.slotAppSwitch();
        }
        qunsetenv("QUADPLAYER_LINK");
        QCOMPARE(takeLines(), (Lines{kSuccess, kClosed}));
        hub.signal(SIGTERM);
        QCOMPARE(hub.end(SIGCONT), 0);
        QVERIFY(!QFile::exists(place));
        QCOMPARE(Child(HUB, {"--unknown"}).end(0), 2);
        QCOMPARE(hub.output().count(kAppSwitch), 1);
        QCOMPARE(hub.output().count("received"), 1);
    }

    // The link closes with packets unread, which resets the connection. The player's last message
    // must reach the hub nevertheless.
    void exitWaitsForCallback()
    {
        HubProcess hub;
        Receiver receiver;
        receiver.atLast = [&] { receiver.open(); };
        QCOMPARE(receiver.open(), 0U);
        QVERIFY(hub.waitFor("player connected"));
        hub.type("flood 010");
        QVERIFY(hub.waitFor("sent 10 of 10"));
        QVERIFY(receiver.has(1));
        hub.stop();
        QCOMPARE(send(kEmptyPacket), 0U);
        const auto exiting = std::async(std::launch::async, KvrComm_Exit);
        const bool closing = QTest::qWaitFor([] { return KvrComm_IsReady() == 0; }, kLimitMs);
        const bool waits = exiting.wait_for(0s) == std::future_status::timeout;
        receiver.leave.release();
        exiting.wait();
        hub.signal(SIGCONT);
        QVERIFY(closing);
        QVERIFY(waits);
        QCOMPARE(receiver.packets.load(), 1);
        QVERIFY(hub.waitFor("player left"));
        QCOMPARE(hub.output().count("received type=1\n"), 1);
    }

    // No packet follows, and the link can be set up again. The thread blocks the program's signals.
    void exitInsideCallback()
    {
        HubProcess hub({"flood 0x7D0"});
        Receiver receiver;
        sigset_t mask;
        receiver.atLast = [&] {
            if (receiver.packets > 1)
                return;
            pthread_sigmask(SIG_BLOCK, nullptr, &mask);
            KvrComm_Exit();
        };
        QCOMPARE(receiver.open(), 0U);
        receiver.leave.release(3000);
        QVERIFY(hub.waitFor("player left"));
        QVERIFY(receiver.has(1));
        QCOMPARE(receiver.open(), 0U);
        QCOMPARE(sigismember(&mask, SIGINT), 1);
        hub.type("flood 2000");
        QVERIFY(receiver.has(2001));
        QVERIFY(hub.waitFor("sent 2000 of 2000"));
        QCOMPARE(hub.output().count("player left"), 1);
    }

    // The packets that it sent are delivered, and sending fails. The next hub replaces the socket
    // file of the killed one, and the link finds it.
    void hubKilledDuringCallback()
    {
        HubProcess hub({"flood 10"});
        Receiver receiver;
        QCOMPARE(receiver.open(), 0U);
        QVERIFY(receiver.has(1));
        QVERIFY(hub.waitFor("sent 10 of 10"));
        hub.end(SIGKILL);
        QCOMPARE(KvrComm_IsReady(), 0);
        QCOMPARE(send(kEmptyPacket), kNotConnected);
        receiver.leave.release(100);
        QVERIFY(receiver.has(10));
        HubProcess next({"exit-request"});
        QVERIFY(receiver.has(11));
        QVERIFY(KvrComm_IsReady() != 0);
        QCOMPARE(send(QByteArray()), kBadArgument);
        QCOMPARE(send(kEmptyPacket + '?'), 0U);
        QVERIFY(next.waitFor("received type=1 and 1 more\n"));
        next.typeLast("exit-request");
        QVERIFY(receiver.has(12));
    }

    void emptyVariablesNameNoSocket()
    {
        const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
        qputenv("QUADPLAYER_LINK", "");
        QCOMPARE(commSocketPath(), runtimeFile("quadplayer-commif.sock"));
        qputenv("XDG_RUNTIME_DIR", "");
        const std::string path = commSocketPath();
        qunsetenv("QUADPLAYER_LINK");
        qputenv("XDG_RUNTIME_DIR", runtime);
        const std::string user = std::to_string(geteuid());
        QCOMPARE(path, "/tmp/quadplayer-" + user + "/quadplayer-commif.sock");
    }

    // A caller that the hub has no descriptor for stays in its queue: the hub must not spin.
    // Without a prompt, it reads nothing of what is typed.
    void callerWithoutDescriptor()
    {
        HubProcess hub({"--no-prompt"});
        hub.typeLast("quit");
        const auto id = static_cast<pid_t>(hub.id());
        rlimit enough;
        prlimit(id, RLIMIT_NOFILE, nullptr, &enough);
        const rlimit none = {4, enough.rlim_max}; // it has more than four open
        prlimit(id, RLIMIT_NOFILE, &none, nullptr);
        const FileDescriptor caller = connectTo(runtimeFile("quadplayer-commif.sock"));
        const qint64 before = cpuTimeMs(id);
        QTest::qWait(500);
        QVERIFY(cpuTimeMs(id) - before < 100);
        QCOMPARE(hub.output().count("player connected"), 0);
        prlimit(id, RLIMIT_NOFILE, &enough, nullptr);
        QVERIFY(hub.waitFor("player connected"));
    }

    void listensOnlyOverStaleSocket()
    {
        QFile file(runtimeFile("file").c_str());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!listenAt(runtimeFile("file")).isValid());
        QVERIFY(file.exists());
        const FileDescriptor listener = listenAt(runtimeFile("busy"));
        std::vector<FileDescriptor> callers; // until the queue is full
        do
            callers.push_back(connectTo(runtimeFile("busy")));
        while (callers.back().isValid());
        QVERIFY(!listenAt(runtimeFile("busy")).isValid());

        // A buffer of the greatest length for each short packet would cost too much time.
        const FileDescriptor other(accept(listener.get(), nullptr, nullptr));
        PacketBytes packet;
        QCOMPARE(sendPacket(other, "short", 5), 0);
        QVERIFY(receivePacket(callers.front(), packet) == Received::Packet);
        QVERIFY(packet.capacity() < kMaxPacketBytes);
    }

    // All threads replace the same stale socket file. Whoever listens must be the one reached.
    void manyListenAtOnce()
    {
        std::atomic<int> reached{0};
        std::atomic<int> lost{0};
        const auto compete = [&, path = runtimeFile("many")] {
            for (int i = 0; i < 1000; ++i) {
                const FileDescriptor listener = listenAt(path);
                const FileDescriptor caller = connectTo(path);
                const FileDescriptor heard(accept(listener.get(), nullptr, nullptr));
                if (listener.isValid())
                    ++(heard.isValid() ? reached : lost);
            }
        };
        std::thread others[] = {std::thread(compete), std::thread(compete), std::thread(compete)};
        compete();
        for (std::thread& other : others)
            other.join();
        QVERIFY(reached > 0);
        QCOMPARE(lost.load(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_link)
#include "tst_link.moc"
