// The link through the library's stand-in, with the real hub at the other end.
#include "comm/CInnerCommunication.h"
#include "platform/libcommif.h"
#include "tests/Rows.h"
#include "tests/comm/HubProcess.h"
#include "tests/comm/PacketBuilder.h"

#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

// Qt's shared containers hide their reference counts from the thread sanitizer; these do not.
using Lines = std::vector<std::string>;

const std::string kSuccess = "inner communication init success.";
const std::string kFailure = "inner communication init failed. errno=1.";
const std::string kClosed = "inner communication exit successfully.";
const std::string kHeadError = "TlvPacket_ReadHead error.";

// The lines of the debug stream since the last look, whichever thread wrote them.
class DebugLines
{
public:
    DebugLines()
    {
        take();
        qInstallMessageHandler(keep);
    }
    ~DebugLines() { qInstallMessageHandler(nullptr); }
    static Lines take()
    {
        const std::lock_guard<std::mutex> lock(s_lock);
        return std::exchange(s_lines, {});
    }

private:
    static void keep(QtMsgType, const QMessageLogContext&, const QString& line)
    {
        const std::lock_guard<std::mutex> lock(s_lock);
        s_lines.push_back(line.toStdString());
    }
    static inline std::mutex s_lock;
    static inline Lines s_lines;
};

// A link as its owner keeps it, counting exit requests on the thread that delivers them.
struct Link
{
    Link()
    {
        QObject::connect(&comm, &CInnerCommunication::sgAppExit, [this] { ++requests; });
    }
    ~Link() { comm.exitInnerComm(); }
    QTimer* timer() const { return comm.findChild<QTimer*>(); }
    bool hasRequests(int count) const
    {
        return QTest::qWaitFor([&] { return requests >= count; }, kLimitMs);
    }

    std::atomic<int> requests{0};
    CInnerCommunication comm;
};

} // namespace

class tst_inner_communication : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_lines = std::make_unique<DebugLines>(); }
    void cleanup() { m_lines.reset(); }
    // The first, as a process reports five failures. Until the link is up there is nothing to send
    // and nothing to close.
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
        QCOMPARE(DebugLines::take(), (Lines{kFailure, kFailure, kFailure, kFailure, kFailure}));

        HubProcess hub;
        QTRY_VERIFY_WITH_TIMEOUT(link.comm.isInited(), kLimitMs);
        QVERIFY(!link.timer()->isActive());
        QCOMPARE(DebugLines::take(), Lines{kSuccess});
        link.comm.initInnerComm(); // the library refuses; the five are used up
        KvrComm_Exit();
        QVERIFY(!link.comm.isInited());
        QCOMPARE(DebugLines::take(), Lines());
    }

    void receive_data()
    {
        columns<QByteArray, int, bool>({"bytes", "requests", "headError"});
        const QByteArray request = item(3, u32(8));
        row("exit request", packet(2, item(1, u32(8)) + request), 1, false);
        row("all but the exit bit", packet(2, item(3, u32(0xFFFFFFF7))), 0, false);
        row("all bits set", packet(2, item(3, u32(0xFFFFFFFF))), 1, false);
        row("short value between requests", packet(2, request + item(3, u16(8)) + request), 1,
            false);
        row("two requests", packet(2, request + request), 2, false);
        row("request at an odd address, and a rest", packet(2, item(9, "x") + request + "y"), 1,
            false);
        row("type 1", packet(1, request), 0, false);
        row("cut inside the value", packet(2, request).chopped(2), 0, true);
        row("value longer than its packet", packet(2, request.chopped(2)), 0, false);
        row("empty", QByteArray(), 0, true);
        const QByteArray filler = item(9, QByteArray(65535 - 4 - request.size(), 'x'));
        row("as long as packets can be", packet(2, filler + request), 1, false);
        row("longer: dropped", packet(2, filler + request) + "x", 0, false);
    }

    // A request of its own follows each packet and shows that the packet has been worked off.
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
        QVERIFY(link.hasRequests(requests + 1));
        QCOMPARE(link.requests.load(), requests + 1);
        const Lines lines = DebugLines::take();
        QCOMPARE(std::count(lines.begin(), lines.end(), kHeadError), headError ? 1 : 0);
    }

    // The hub sees the player, its message and its own end all at once.
    void appSwitch()
    {
        HubProcess hub;
        hub.stop();
        {
            Link link;
            link.comm.initInnerComm();
            link.comm.slotAppSwitch();
        }
        QCOMPARE(DebugLines::take(), (Lines{kSuccess, kClosed}));
        hub.signal(SIGTERM);
        QCOMPARE(hub.end(SIGCONT), 0);
        QCOMPARE(hub.output().count(kAppSwitch), 1);
        QCOMPARE(hub.output().count("received"), 1);
    }

private:
    RuntimeFolder m_folder;
    std::unique_ptr<DebugLines> m_lines;
};

QTEST_GUILESS_MAIN(tst_inner_communication)
#include "tst_inner_communication.moc"
