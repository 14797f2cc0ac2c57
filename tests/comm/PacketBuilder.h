// Packets of any shape, in the machine's byte order.
#pragma once

#include <QByteArray>

template <typename Number> QByteArray bytesOf(Number value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

inline QByteArray u16(int value)
{
    return bytesOf(static_cast<quint16>(value));
}
inline QByteArray u32(quint32 value)
{
    return bytesOf(value);
}

inline QByteArray item(int tag, const QByteArray& value)
{
    return u16(tag) + u16(value.size()) + value;
}

inline QByteArray packet(int type, const QByteArray& items = {})
{
    return u16(type) + u16(items.size()) + items;
}
