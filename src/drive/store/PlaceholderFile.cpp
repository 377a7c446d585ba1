#include "drive/store/PlaceholderFile.h"

#include "drive/store/RecordFile.h"

#include <QJsonArray>
#include <QJsonValue>

namespace vl {

namespace {

QDateTime dateFrom(const QJsonValue& value) {
    if (!value.isString()) {
        return {};
    }
    return QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
}

// 2^64, the first whole number a quint64 cannot hold; converting one at or past it is undefined.
constexpr double kUnsignedLimit = 18446744073709551616.0;

QString dateString(const QDateTime& date) {
    return date.isValid() ? date.toUTC().toString(Qt::ISODateWithMs) : QString();
}

}  // namespace

std::optional<PlaceholderFile> PlaceholderFile::read(const QString& path, Error* error) {
    const std::optional<QJsonObject> object = RecordFile::readObject(path, error);
    if (!object) {
        return std::nullopt;
    }
    std::optional<PlaceholderFile> record = fromJson(*object);
    if (!record && error) {
        *error = RecordFile::corruptFileError(path, QStringLiteral("not a placeholder record"));
    }
    return record;
}

std::optional<PlaceholderFile> PlaceholderFile::fromJson(const QJsonObject& object) {
    const QJsonValue name = object.value(QLatin1String("name"));
    if (!name.isString() || name.toString().isEmpty()) {
        return std::nullopt;
    }
    const QJsonValue size = object.value(QLatin1String("size"));
    if (!size.isUndefined() &&
        (!size.isDouble() || !(size.toDouble() >= 0 && size.toDouble() < kUnsignedLimit))) {
        return std::nullopt;
    }
    PlaceholderFile record;
    record.name = name.toString();
    record.size = static_cast<quint64>(size.toDouble());
    record.contentType = object.value(QLatin1String("contentType")).toString();
    record.creationDate = dateFrom(object.value(QLatin1String("creationDate")));
    record.modificationDate = dateFrom(object.value(QLatin1String("modificationDate")));
    record.isDirectory = object.value(QLatin1String("isDirectory")).toBool();
    record.isPackage = object.value(QLatin1String("isPackage")).toBool();
    record.isShared = object.value(QLatin1String("isShared")).toBool();
    const QString role = object.value(QLatin1String("sharedRole")).toString();
    if (role == RoleOwner || role == RoleParticipant) {
        record.sharedRole = role;
    }
    for (const QJsonValue& tag : object.value(QLatin1String("tags")).toArray()) {
        if (tag.isString() && !tag.toString().isEmpty()) {
            record.tags.append(tag.toString());
        }
    }
    return record;
}

QJsonObject PlaceholderFile::toJson() const {
    QJsonObject object;
    object.insert(QLatin1String("name"), name);
    object.insert(QLatin1String("size"), static_cast<double>(size));
    object.insert(QLatin1String("contentType"), contentType);
    object.insert(QLatin1String("creationDate"), dateString(creationDate));
    object.insert(QLatin1String("modificationDate"), dateString(modificationDate));
    object.insert(QLatin1String("isDirectory"), isDirectory);
    object.insert(QLatin1String("isPackage"), isPackage);
    object.insert(QLatin1String("isShared"), isShared);
    object.insert(QLatin1String("sharedRole"), isShared ? sharedRole : QString());
    object.insert(QLatin1String("tags"), QJsonArray::fromStringList(tags));
    return object;
}

std::optional<Error> PlaceholderFile::write(const QString& path) const {
    return RecordFile::writeObject(path, toJson());
}

}  // namespace vl
