#include "StoredZipWriter.h"

#include "LittleEndian.h"

#include <QFile>
#include <QtEndian>

#include <array>

namespace vl {

namespace {

using LittleEndian::put16;
using LittleEndian::put32;

// 1 January 2024, 12:00, in MS-DOS form.
constexpr quint16 DosTime = 12 << 11;
constexpr quint16 DosDate = ((2024 - 1980) << 9) | (1 << 5) | 1;

}  // namespace

quint32 StoredZipWriter::crc32(const QByteArray& data) {
    static const std::array<quint32, 256> table = [] {
        std::array<quint32, 256> t{};
        for (quint32 i = 0; i < 256; ++i) {
            quint32 c = i;
            for (int k = 0; k < 8; ++k) {
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            }
            t[i] = c;
        }
        return t;
    }();
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : data) {
        crc = table[(crc ^ quint8(byte)) & 0xFF] ^ (crc >> 8);
    }
    return crc ^ 0xFFFFFFFFu;
}

void StoredZipWriter::add(const QString& name, const QByteArray& data) {
    entries_.append({name.toUtf8(), data});
}

QByteArray StoredZipWriter::bytes() const {
    QByteArray out;
    QByteArray directory;
    for (const Entry& entry : entries_) {
        const quint32 offset = quint32(out.size());
        const quint32 crc = crc32(entry.data);
        const quint32 size = quint32(entry.data.size());
        put32(out, 0x04034b50);
        put16(out, 20);  // version needed
        put16(out, 0);   // flags
        put16(out, 0);   // method: stored
        put16(out, DosTime);
        put16(out, DosDate);
        put32(out, crc);
        put32(out, size);
        put32(out, size);
        put16(out, quint16(entry.name.size()));
        put16(out, 0);  // extra length
        out += entry.name;
        out += entry.data;

        put32(directory, 0x02014b50);
        put16(directory, 20);  // made by
        put16(directory, 20);  // version needed
        put16(directory, 0);
        put16(directory, 0);
        put16(directory, DosTime);
        put16(directory, DosDate);
        put32(directory, crc);
        put32(directory, size);
        put32(directory, size);
        put16(directory, quint16(entry.name.size()));
        put16(directory, 0);  // extra
        put16(directory, 0);  // comment
        put16(directory, 0);  // disk
        put16(directory, 0);  // internal attributes
        put32(directory, 0);  // external attributes
        put32(directory, offset);
        directory += entry.name;
    }
    const quint32 directoryOffset = quint32(out.size());
    out += directory;
    put32(out, 0x06054b50);
    put16(out, 0);
    put16(out, 0);
    put16(out, quint16(entries_.size()));
    put16(out, quint16(entries_.size()));
    put32(out, quint32(directory.size()));
    put32(out, directoryOffset);
    put16(out, 0);
    return out;
}

std::optional<QString> StoredZipWriter::write(const QString& path) const {
    const QByteArray data = bytes();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(data) != data.size()) {
        return file.errorString();
    }
    return std::nullopt;
}

}  // namespace vl
