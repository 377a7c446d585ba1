#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace vl {

// A zip archive of uncompressed ("stored") entries, in the order added: enough for an
// OpenDocument file, whose "mimetype" entry must come first and uncompressed.
class StoredZipWriter {
public:
    void add(const QString& name, const QByteArray& data);
    QByteArray bytes() const;
    std::optional<QString> write(const QString& path) const;

    static quint32 crc32(const QByteArray& data);

private:
    struct Entry {
        QByteArray name;
        QByteArray data;
    };
    QList<Entry> entries_;
};

}  // namespace vl
