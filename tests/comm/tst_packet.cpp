// The packet functions: what they write, and that no packet leads outside its buffer.
#include "comm/libcommif.h"
#include "tests/comm/PacketBuilder.h"

#include <QtTest>

#include <vector>

namespace {

// What is read, as one text. The bytes stand at the end of an allocation of exactly their size, so
// that the address sanitizer sees a read behind them.
QByteArray readAll(const QByteArray& bytes)
{
    std::vector<unsigned char> exact(bytes.begin(), bytes.end());
    TlvPacket cursor;
    TlvPacket_Init(&cursor, exact.data(), static_cast<unsigned>(exact.size()));
    uint16_t type = 0xABCD;
    const bool read = TlvPacket_ReadHead(&cursor, &type) != 0;
    QByteArray text = QByteArray::number(type);
    if (!read)
        text = type == 0xABCD ? "no head" : "no head, but a type";
    uint16_t tag = 0;
    uint16_t length = 0;
    while (void* value = TlvPacket_ReadBody(&cursor, &tag, &length)) {
        text += ' ' + QByteArray::number(tag) + ':' +
                QByteArray(static_cast<char*>(value), length).toHex();
    }
    return text;
}

} // namespace

class tst_packet : public QObject
{
    Q_OBJECT

private slots:
    void read_data();
    void read();
    void write_data();
    void write();
    void writeUntilFull();
};

void tst_packet::read_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* name, const QByteArray& bytes, const char* text) {
        QTest::newRow(name) << bytes << QByteArray(text);
    };
    const QByteArray two = item(1, "ab") + item(3, "c");
    row("nothing", "", "no head");
    row("half a head", packet(2).left(3), "no head");
    row("head alone", packet(2), "2");
    row("items", packet(2, two), "2 1:6162 3:63");
    row("bytes behind the packet", packet(2, two) + "more", "2 1:6162 3:63");
    row("packet cut short", packet(2, two).chopped(1), "no head");
    row("value of no bytes", packet(2, item(1, "") + item(2, "")), "2 1: 2:");
    row("half an item head", packet(2, two + u16(5) + "x"), "2 1:6162 3:63");
    row("value longer than the packet", packet(2, two + u16(5) + u16(2) + "x"), "2 1:6162 3:63");
    row("value length 65535", packet(2, u16(3) + u16(0xFFFF) + u32(8)), "2");
    row("value reaching behind the packet", packet(2, u16(3) + u16(4)) + u32(8), "2");
    row("count 65535 in a short packet", u16(2) + u16(0xFFFF) + u32(8), "no head");
}

void tst_packet::read()
{
    QFETCH(QByteArray, bytes);
    QTEST(readAll(bytes), "text");
}

void tst_packet::write_data()
{
    QTest::addColumn<unsigned>("size");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("no room") << 0U << QByteArray();
    QTest::newRow("less than a head") << 3U << QByteArray();
    QTest::newRow("head") << 4U << packet(1);
    QTest::newRow("less than an item") << 11U << packet(1);
    QTest::newRow("one item") << 12U << packet(1, item(1, u32(8)));
    QTest::newRow("two items") << 20U << packet(1, item(1, u32(8)) + item(2, u32(0x01020304)));
}

void tst_packet::write()
{
    QFETCH(unsigned, size);
    QFETCH(QByteArray, written);
    std::vector<unsigned char> exact(size, 0xEE);
    TlvPacket cursor;
    TlvPacket_Init(&cursor, exact.data(), size);
    TlvPacket_WriteBody_U4B(&cursor, 9, 9); // no head yet: left out
    TlvPacket_WriteHead(&cursor, 1);
    TlvPacket_WriteBody_U4B(&cursor, 1, 8);
    TlvPacket_WriteBody_U4B(&cursor, 2, 0x01020304);
    const QByteArray expected = written.leftJustified(static_cast<int>(size), '\xEE');
    QCOMPARE(QByteArray(reinterpret_cast<char*>(exact.data()), static_cast<int>(size)), expected);
    QCOMPARE(cursor.length, static_cast<uint32_t>(written.size()));
}

// The count in the head has 16 bits, whatever the buffer holds.
void tst_packet::writeUntilFull()
{
    std::vector<unsigned char> large(100000, 0xEE);
    TlvPacket cursor;
    TlvPacket_Init(&cursor, large.data(), static_cast<unsigned>(large.size()));
    TlvPacket_WriteHead(&cursor, 1);
    for (int i = 0; i < 10000; ++i)
        TlvPacket_WriteBody_U4B(&cursor, 1, 8);
    QCOMPARE(cursor.length, 4U + 65535U / 8U * 8U);
    const QByteArray bytes(reinterpret_cast<char*>(large.data()), static_cast<int>(cursor.length));
    QCOMPARE(readAll(bytes).count(" 1:" + u32(8).toHex()), 65535 / 8);
}

QTEST_GUILESS_MAIN(tst_packet)
#include "tst_packet.moc"
