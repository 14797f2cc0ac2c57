// The stand-in of the communication library against the real hub.
#include "comm/libcommif.h"
#include "tests/comm/HubProcess.h"
#include "tests/comm/PacketBuilder.h"

#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <csignal>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr unsigned kNoHub = 1;
constexpr unsigned kAlreadyOpen = 2;
constexpr unsigned kBadArgument = 3;
constexpr unsigned kNotConnected = 4;
constexpr unsigned kQueueFull = 5;
constexpr int kLongest = 4 + 65535;

// Qt's shared containers hide their reference counts from the thread sanitizer; these do not.
using Packets = std::vector<std::string>;

// Keeps what is delivered; `during` runs inside the callback.
class Receiver
{
public:
    static void receive(void* context, void* data, unsigned length)
    {
        auto* self = static_cast<Receiver*>(context);
        if (self->during)
            self->during();
        const std::lock_guard<std::mutex> lock(self->m_lock);
        self->m_packets.emplace_back(static_cast<const char*>(data), length);
    }
    bool open() { return KvrComm_Init(1, receive, this) == 0; }
    Packets packets()
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        return m_packets;
    }

    std::function<void()> during;

private:
    std::mutex m_lock;
    Packets m_packets;
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
    void withoutHub();
    void wrongCalls();
    void deliver_data();
    void deliver();
    void print_data();
    void print();
    void hubComesBack();
    void hubDoesNotRead();
    void exitInsideCallback();
    void exitWaitsForCallback();
    void exitDuringFlood();
    void oneHubPerSocket();
    void otherFileAtThePath();

private:
    RuntimeFolder m_folder;
};

void tst_commif::withoutHub()
{
    Receiver receiver;
    QVERIFY(!receiver.open());
    QCOMPARE(KvrComm_GetInnerErrorCode(), kNoHub);
    QCOMPARE(KvrComm_IsReady(), 0);
    QVERIFY(!send(packet(1)));
    QCOMPARE(KvrComm_GetInnerErrorCode(), kNotConnected);
    KvrComm_Exit();
}

void tst_commif::wrongCalls()
{
    HubProcess hub;
    Receiver receiver;
    QVERIFY(KvrComm_Init(1, nullptr, nullptr) != 0);
    QCOMPARE(KvrComm_GetInnerErrorCode(), kBadArgument);
    QVERIFY(receiver.open());
    QVERIFY(!receiver.open());
    QCOMPARE(KvrComm_GetInnerErrorCode(), kAlreadyOpen);
    QVERIFY(KvrComm_SendMsg(2, "text", 4) != 0);
    QVERIFY(KvrComm_SendMsg(1, nullptr, 4) != 0);
    QVERIFY(!send(""));
    QVERIFY(!send(QByteArray(kLongest + 1, 'x')));
    QCOMPARE(KvrComm_GetInnerErrorCode(), kBadArgument);
    KvrComm_Exit();
    KvrComm_Exit();
    QCOMPARE(KvrComm_IsReady(), 0);
    QVERIFY(hub.waitFor("player left"));
    QVERIFY(!hub.output().contains("received"));
}

void tst_commif::deliver_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("arrives");
    QTest::newRow("no bytes") << QByteArray() << true;
    QTest::newRow("one byte") << QByteArray("\xFF") << true;
    QTest::newRow("as long as the encoding allows") << QByteArray(kLongest, 'x') << true;
    QTest::newRow("longer") << QByteArray(kLongest + 1, 'x') << false;
}

void tst_commif::deliver()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, arrives);
    HubProcess hub;
    Receiver receiver;
    QVERIFY(receiver.open());
    QVERIFY(hub.waitFor("player connected"));
    hub.type("raw " + bytes.toHex());
    hub.type("raw 01 02");
    const std::string last = "\x01\x02";
    const Packets expected = arrives ? Packets{bytes.toStdString(), last} : Packets{last};
    QTRY_COMPARE_WITH_TIMEOUT(receiver.packets().size(), expected.size(), kLimitMs);
    QCOMPARE(receiver.packets(), expected);
}

void tst_commif::print_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("items") << packet(7, item(1, u32(8)) + item(2, "\x0A\xFF") + item(3, ""))
                           << QByteArray("type=7 tag=1 value=8 tag=2 bytes=0aff tag=3 bytes=");
    QTest::newRow("garbage") << QByteArray("\x01\x02") << QByteArray("unreadable bytes=0102");
}

void tst_commif::print()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, line);
    HubProcess hub;
    Receiver receiver;
    QVERIFY(receiver.open());
    QVERIFY(send(bytes));
    QVERIFY2(hub.waitFor("received " + line + '\n'), hub.output());
}

void tst_commif::hubComesBack()
{
    Receiver receiver;
    {
        HubProcess hub;
        QVERIFY(receiver.open());
        QVERIFY(KvrComm_IsReady() != 0);
        hub.kill();
    }
    QCOMPARE(KvrComm_IsReady(), 0);
    QVERIFY(!send(packet(1)));
    HubProcess hub({"exit-request"}); // over the socket file of the one before
    QTRY_VERIFY_WITH_TIMEOUT(KvrComm_IsReady() != 0, kLimitMs);
    QVERIFY(send(packet(1)));
    QVERIFY(hub.waitFor("received type=1\n"));
    const Packets request = {packet(2, item(3, u32(8))).toStdString()};
    QTRY_COMPARE_WITH_TIMEOUT(receiver.packets(), request, kLimitMs);
}

void tst_commif::hubDoesNotRead()
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

void tst_commif::exitInsideCallback()
{
    HubProcess hub;
    Receiver receiver;
    std::atomic<int> again{0};
    receiver.during = [&] {
        KvrComm_Exit();
        again = KvrComm_Init(1, Receiver::receive, &receiver);
    };
    QVERIFY(receiver.open());
    QVERIFY(hub.waitFor("player connected"));
    hub.type("flood 1000");
    QVERIFY(hub.waitFor("player left"));
    QCOMPARE(receiver.packets().size(), size_t(1));
    QVERIFY(again != 0);
    QCOMPARE(KvrComm_IsReady(), 0);

    Receiver next;
    QVERIFY(next.open());
    hub.type("exit-request");
    QTRY_COMPARE_WITH_TIMEOUT(next.packets().size(), size_t(1), kLimitMs);
}

// The link closes with packets unread, which resets the connection; what the player said last must
// reach the hub all the same.
void tst_commif::exitWaitsForCallback()
{
    HubProcess hub;
    Receiver receiver;
    QSemaphore entered, leave;
    receiver.during = [&] {
        entered.release();
        leave.acquire();
    };
    QVERIFY(receiver.open());
    QVERIFY(hub.waitFor("player connected"));
    hub.type("flood 10");
    QVERIFY(hub.waitFor("sent 10 of 10"));
    QVERIFY(entered.tryAcquire(1, kLimitMs));
    hub.signal(SIGSTOP);
    QVERIFY(send(packet(1)));
    std::atomic<bool> exited{false};
    std::thread exiting([&] {
        KvrComm_Exit();
        exited = true;
    });
    const bool closing = QTest::qWaitFor([] { return KvrComm_IsReady() == 0; }, kLimitMs);
    const bool waits = !exited;
    leave.release();
    exiting.join();
    hub.signal(SIGCONT);
    QVERIFY(closing);
    QVERIFY(waits);
    QCOMPARE(receiver.packets().size(), size_t(1));
    QVERIFY(hub.waitFor("player left"));
    QCOMPARE(hub.output().count("received type=1\n"), 1);
}

void tst_commif::exitDuringFlood()
{
    HubProcess hub;
    for (int round = 0; round < 20; ++round) {
        Receiver receiver;
        QVERIFY(receiver.open());
        QTRY_COMPARE_WITH_TIMEOUT(hub.output().count("player connected"), round + 1, kLimitMs);
        hub.type("flood 5000");
        QTRY_VERIFY_WITH_TIMEOUT(!receiver.packets().empty(), kLimitMs);
        KvrComm_Exit();
        const size_t delivered = receiver.packets().size();
        QTRY_COMPARE_WITH_TIMEOUT(hub.output().count("player left"), round + 1, kLimitMs);
        QCOMPARE(receiver.packets().size(), delivered);
    }
}

void tst_commif::oneHubPerSocket()
{
    HubProcess first;
    ForkedProcess second;
    second.start(HUB, QStringList());
    QVERIFY(second.waitForFinished(kLimitMs));
    QCOMPARE(second.exitCode(), 1);
    QVERIFY(second.readAllStandardError().contains("Address already in use"));
    Receiver receiver;
    QVERIFY(receiver.open());
    QCOMPARE(first.terminate(), 0);
    QVERIFY(!QFile::exists(m_folder.socketPath()));
}

void tst_commif::otherFileAtThePath()
{
    QFile other(m_folder.socketPath());
    QVERIFY(other.open(QIODevice::WriteOnly));
    ForkedProcess hub;
    hub.start(HUB, QStringList());
    QVERIFY(hub.waitForFinished(kLimitMs));
    QCOMPARE(hub.exitCode(), 1);
    QVERIFY(other.remove());
}

QTEST_GUILESS_MAIN(tst_commif)
#include "tst_commif.moc"
