// Packets of any shape, in the machine's byte order.
#pragma once

#include <QByteArray>

inline QByteArray u16(int value)
{
    const auto number = static_cast<quint16>(value);
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

inline QByteArray u32(quint32 value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

inline QByteArray item(int tag, const QByteArray& value)
{
    return u16(tag) + u16(value.size()) + value;
}

inline QByteArray packet(int type, const QByteArray& items = {})
{
    return u16(type) + u16(items.size()) + items;
}
