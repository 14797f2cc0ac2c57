// Reading packets of any shape: none leads outside its buffer.
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

QTEST_GUILESS_MAIN(tst_packet)
#include "tst_packet.moc"
