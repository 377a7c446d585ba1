#pragma once

#include "platform/files/Error.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// The metadata of a cloud-only item, kept in its hidden placeholder file:
// {"name","size","contentType","creationDate","modificationDate" (ISO-8601 UTC with
// milliseconds),"isDirectory","isPackage","isShared","sharedRole":"owner|participant","tags":[]}
class PlaceholderFile {
public:
    QString name;
    quint64 size = 0;
    QString contentType;
    QDateTime creationDate;
    QDateTime modificationDate;
    bool isDirectory = false;
    bool isPackage = false;
    bool isShared = false;
    QString sharedRole;  // "owner", "participant" or empty
    QStringList tags;

    // An error (code 259, corrupt file) for malformed JSON or missing/mistyped required keys
    // ("name"), code 260 when the file doesn't exist.
    static std::optional<PlaceholderFile> read(const QString& path, Error* error);
    static std::optional<PlaceholderFile> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;
    // Written to a temporary name in the same folder and renamed into place.
    std::optional<Error> write(const QString& path) const;

    static inline const QString RoleOwner = QStringLiteral("owner");
    static inline const QString RoleParticipant = QStringLiteral("participant");
};

}  // namespace vl
