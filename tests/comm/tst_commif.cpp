// The stand-in of the communication library against the real hub.
#include "platform/host/commif/PacketSocket.h"
#include "platform/libcommif.h"
#include "tests/Rows.h"
#include "tests/comm/HubProcess.h"
#include "tests/comm/PacketBuilder.h"

#include <QSemaphore>
#include <QtTest>

#include <sys/socket.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <future>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr unsigned kAlreadyOpen = 2;
constexpr unsigned kBadArgument = 3;
constexpr unsigned kNotConnected = 4;
constexpr unsigned kQueueFull = 5;

std::string runtimeFile(const char* name)
{
    return qgetenv("XDG_RUNTIME_DIR").toStdString() + '/' + name;
}

unsigned errorOf(int result)
{
    return result == 0 ? 0 : KvrComm_GetInnerErrorCode();
}

unsigned send(const QByteArray& bytes, int endpoint = 1)
{
    const auto length = static_cast<unsigned>(bytes.size());
    return errorOf(KvrComm_SendMsg(endpoint, bytes.constData(), length));
}

// Counts what is delivered and keeps the callback until it may leave.
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

} // namespace

class tst_commif : public QObject
{
    Q_OBJECT

private slots:
    void refuses()
    {
        QCOMPARE(send(packet(1)), kNotConnected);
        QCOMPARE(errorOf(KvrComm_Init(1, nullptr, nullptr)), kBadArgument);
        HubProcess hub;
        Receiver receiver;
        QCOMPARE(receiver.open(), 0U);
        QCOMPARE(receiver.open(), kAlreadyOpen);
        QCOMPARE(send(packet(1), 2), kBadArgument);
        QCOMPARE(send(QByteArray()), kBadArgument);
        QCOMPARE(send(QByteArray(kMaxPacketBytes + 1, 'x')), kBadArgument);
        QCOMPARE(send(packet(7, item(5, "\x0a\xbc") + item(6, u32(9))) + "\xff"), 0U);
        QCOMPARE(send("\xff"), 0U);
        QCOMPARE(KvrComm_GetInnerErrorCode(), kBadArgument); // the last failure stays
        QVERIFY(hub.waitFor("player connected\nreceived type=7 tag=5 bytes=0abc tag=6 value=9\n"
                            "received unreadable bytes=ff\n"));
    }

    void hubDoesNotRead()
    {
        HubProcess hub;
        hub.stop();
        Receiver receiver;
        QCOMPARE(receiver.open(), 0U);
        hub.type("exit-request"); // for whoever is there when it is read
        int sent = 0;
        while (send(packet(1)) == 0 && sent < 100000)
            ++sent;
        QCOMPARE(KvrComm_GetInnerErrorCode(), kQueueFull);
        QCOMPARE(KvrComm_IsReady(), 0);
        hub.signal(SIGCONT);
        QTRY_COMPARE_WITH_TIMEOUT(hub.output().count("received type=1\n"), sent, kLimitMs);
        QVERIFY(KvrComm_IsReady() != 0);
        QVERIFY(receiver.has(1));
    }

    // The link closes with packets unread, which resets the connection; what the player said last
    // must reach the hub all the same.
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
        QCOMPARE(send(packet(1)), 0U);
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

    // No packet follows, and the link can be set up again; the program's signals are not taken.
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

    // What it sent before is delivered, sending fails meanwhile, and the next hub is found, over
    // the file that the crash left behind.
    void hubKilledDuringCallback()
    {
        HubProcess hub({"flood 10"});
        Receiver receiver;
        QCOMPARE(receiver.open(), 0U);
        QVERIFY(receiver.has(1));
        QVERIFY(hub.waitFor("sent 10 of 10"));
        hub.end(SIGKILL);
        QCOMPARE(KvrComm_IsReady(), 0);
        QCOMPARE(send(packet(1)), kNotConnected);
        receiver.leave.release(100);
        QVERIFY(receiver.has(10));
        HubProcess next({"exit-request"});
        QVERIFY(receiver.has(11));
        QVERIFY(KvrComm_IsReady() != 0);
        QCOMPARE(send(packet(1)), 0U);
        QVERIFY(next.waitFor("received type=1\n"));
    }

    void hubCommandLine_data()
    {
        columns<QStringList, int>({"arguments", "status"});
        row("help", QStringList("--help"), 0);
        row("no command", QStringList("nonsense"), 2);
        row("half a byte", QStringList("raw 0a0"), 2);
        row("a number and more", QStringList("flood 1x"), 2);
        row("beyond 32 bits", QStringList("exit-request 0x100000000"), 2);
        row("no such folder", QStringList{"--socket", "/dev/null/socket"}, 1);
        row("another hub listens", QStringList(), 1);
        row("input ends", QStringList{"--socket", runtimeFile("free").c_str()}, 0);
    }

    void hubCommandLine()
    {
        QFETCH(QStringList, arguments);
        HubProcess first;
        QProcess hub;
        hub.start(HUB, arguments);
        hub.closeWriteChannel();
        QVERIFY(hub.waitForFinished(kLimitMs));
        QTEST(hub.exitCode(), "status");
    }

    void listensOnlyOverStaleSocket()
    {
        QFile file(runtimeFile("file").c_str());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!listenAt(runtimeFile("file")).isValid());
        QVERIFY(file.exists());
        const FileDescriptor listener = listenAt(runtimeFile("busy"));
        std::vector<FileDescriptor> callers; // in the end, more than it lets wait
        do
            callers.push_back(connectTo(runtimeFile("busy")));
        while (callers.back().isValid());
        QVERIFY(!listenAt(runtimeFile("busy")).isValid());

        // Clearing the longest one's place for each would cost more than all the rest.
        const FileDescriptor other(accept(listener.get(), nullptr, nullptr));
        PacketBytes packet;
        QCOMPARE(sendPacket(other, "short", 5), 0);
        QVERIFY(receivePacket(callers.front(), packet) == Received::Packet);
        QVERIFY(packet.capacity() < kMaxPacketBytes);
    }

    // Over and over, each over the file of one that crashed: whoever listens is the one reached.
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

private:
    RuntimeFolder m_folder;
};

QTEST_GUILESS_MAIN(tst_commif)
#include "tst_commif.moc"
