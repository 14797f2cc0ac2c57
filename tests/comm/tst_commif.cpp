// The stand-in of the communication library against the real hub.
#include "platform/host/commif/PacketSocket.h"
#include "platform/libcommif.h"
#include "tests/comm/HubProcess.h"
#include "tests/comm/PacketBuilder.h"

#include <QSemaphore>
#include <QtTest>

#include <sys/socket.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace {

constexpr unsigned kQueueFull = 5;

// Counts what is delivered and keeps the callback until it may leave.
struct Receiver
{
    bool open() { return KvrComm_Init(1, receive, this) == 0; }
    static void receive(void* context, void*, unsigned)
    {
        auto* self = static_cast<Receiver*>(context);
        ++self->packets;
        self->leave.acquire();
    }

    std::atomic<int> packets{0};
    QSemaphore leave;
};

bool send(const QByteArray& bytes)
{
    return KvrComm_SendMsg(1, bytes.constData(), static_cast<unsigned>(bytes.size())) == 0;
}

} // namespace

class tst_commif : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { KvrComm_Exit(); }
    void hubDoesNotRead()
    {
        HubProcess hub;
        Receiver receiver;
        QVERIFY(receiver.open());
        QVERIFY(hub.waitFor("player connected"));
        hub.signal(SIGSTOP);
        int sent = 0;
        while (send(packet(1)) && sent < 100000)
            ++sent;
        QCOMPARE(KvrComm_GetInnerErrorCode(), kQueueFull);
        QCOMPARE(KvrComm_IsReady(), 0);
        hub.signal(SIGCONT);
        QTRY_COMPARE_WITH_TIMEOUT(hub.output().count("received type=1\n"), sent, kLimitMs);
        QVERIFY(KvrComm_IsReady() != 0);
    }

    // The link closes with packets unread, which resets the connection; what the player said last
    // must reach the hub all the same.
    void exitWaitsForCallback()
    {
        HubProcess hub;
        Receiver receiver;
        QVERIFY(receiver.open());
        QVERIFY(hub.waitFor("player connected"));
        hub.type("flood 010");
        QVERIFY(hub.waitFor("sent 10 of 10"));
        QTRY_COMPARE_WITH_TIMEOUT(receiver.packets.load(), 1, kLimitMs);
        hub.signal(SIGSTOP);
        QVERIFY(send(packet(1)));
        std::atomic<bool> exited{false};
        std::thread exiting([&] {
            KvrComm_Exit();
            exited = true;
        });
        const bool closing = QTest::qWaitFor([] { return KvrComm_IsReady() == 0; }, kLimitMs);
        const bool waits = !exited;
        receiver.leave.release();
        exiting.join();
        hub.signal(SIGCONT);
        QVERIFY(closing);
        QVERIFY(waits);
        QCOMPARE(receiver.packets.load(), 1);
        QVERIFY(hub.waitFor("player left"));
        QCOMPARE(hub.output().count("received type=1\n"), 1);
    }

    // Clearing the longest one's place for each would cost more than the rest of its way.
    void packetTakesItsOwnLength()
    {
        int ends[2];
        QCOMPARE(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
        const FileDescriptor from(ends[0]);
        const FileDescriptor to(ends[1]);
        QCOMPARE(sendPacket(from, "short", 5), 0);
        PacketBytes packet;
        QVERIFY(receivePacket(to, packet) == Received::Packet);
        QCOMPARE(packet.size(), size_t(5));
        QVERIFY(packet.capacity() < kMaxPacketBytes);
    }

    // Over and over, each over the file of one that crashed: whoever listens is the one reached.
    void manyListenAtOnce()
    {
        const QTemporaryDir folder;
        const std::string path = folder.filePath("socket").toStdString();
        std::atomic<int> reached{0};
        std::atomic<int> lost{0};
        const auto compete = [&] {
            for (int i = 0; i < 2500; ++i) {
                const FileDescriptor listener = listenAt(path);
                const FileDescriptor caller = connectTo(path);
                const int heard = accept(listener.get(), nullptr, nullptr);
                if (listener.isValid())
                    ++(FileDescriptor(heard).isValid() ? reached : lost);
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
