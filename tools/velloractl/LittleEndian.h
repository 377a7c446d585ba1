#pragma once

#include <QByteArray>
#include <QtEndian>

// Appending little-endian integers, as the AVI and ZIP containers store them.
namespace vl::LittleEndian {

inline void put16(QByteArray& out, quint16 value) {
    char bytes[2];
    qToLittleEndian(value, bytes);
    out.append(bytes, 2);
}

inline void put32(QByteArray& out, quint32 value) {
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

}  // namespace vl::LittleEndian
