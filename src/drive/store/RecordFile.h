#pragma once

#include "platform/files/Error.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// Reading and writing the service's small JSON records. A write goes to a temporary file and is
// renamed into place, so a reader never sees a torn file. A record already at the path that
// can't be read is never replaced: it is renamed aside ("<name>.corrupt-<UTC time>") and logged
// first, so whatever it held can still be recovered.
class RecordFile {
public:
    // The object in the file. Code 260 when the file doesn't exist (`missing` is then set), 259
    // when it isn't a JSON object, the errno error when it can't be read.
    static std::optional<QJsonObject> readObject(const QString& path, Error* error,
                                                 bool* missing = nullptr);
    // The temporary file is written as `temporaryPath` when one is given (which must be on the
    // same file system, and free), else beside the record.
    static std::optional<Error> writeObject(const QString& path, const QJsonObject& object,
                                            const QString& temporaryPath = {});
    static std::optional<Error> writeBytes(const QString& path, const QByteArray& bytes,
                                           const QString& temporaryPath = {});
    // Renames an unreadable record at `path` aside; answers where it went.
    static std::optional<QString> keepAsideIfCorrupt(const QString& path);
    // Where the records kept aside by this process since the last call went, for a tool to
    // report.
    static QStringList takeKeptAside();
    static Error corruptFileError(const QString& path, const QString& reason);
};

}  // namespace vl
