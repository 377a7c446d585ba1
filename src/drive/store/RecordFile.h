#pragma once

#include "platform/files/Error.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace vl {

// Reading and writing the service's small JSON records. A write goes to a temporary name in the
// same folder and is renamed into place, so a reader never sees a torn file.
class RecordFile {
public:
    // The object in the file. Code 260 when the file doesn't exist (`missing` is then set), 259
    // when it isn't a JSON object, the errno error when it can't be read.
    static std::optional<QJsonObject> readObject(const QString& path, Error* error,
                                                 bool* missing = nullptr);
    static std::optional<Error> writeObject(const QString& path, const QJsonObject& object);
    static std::optional<Error> writeBytes(const QString& path, const QByteArray& bytes);
    static Error corruptFileError(const QString& path, const QString& reason);
};

}  // namespace vl
