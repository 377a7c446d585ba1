#include "drive/store/ContainerRecord.h"

#include "drive/store/RecordFile.h"

#include <QJsonArray>
#include <QJsonValue>

namespace vl {

namespace {

bool isValidFolder(const QString& folder) {
    return !folder.startsWith(QLatin1Char('.')) && !folder.contains(QLatin1Char('/')) &&
           folder != QLatin1String("..");
}

}  // namespace

std::optional<ContainerRecord> ContainerRecord::read(const QString& path, Error* error) {
    const std::optional<QJsonObject> object = RecordFile::readObject(path, error);
    if (!object) {
        return std::nullopt;
    }
    std::optional<ContainerRecord> record = fromJson(*object);
    if (!record && error) {
        *error = RecordFile::corruptFileError(path, QStringLiteral("not a container record"));
    }
    return record;
}

std::optional<ContainerRecord> ContainerRecord::fromJson(const QJsonObject& object) {
    const QJsonValue identifier = object.value(QLatin1String("identifier"));
    const QJsonValue folder = object.value(QLatin1String("folder"));
    if (!identifier.isString() || identifier.toString().isEmpty() ||
        (!folder.isUndefined() && !folder.isString())) {
        return std::nullopt;
    }
    ContainerRecord record;
    record.identifier = identifier.toString();
    record.localizedName = object.value(QLatin1String("localizedName")).toString();
    record.folder = folder.toString();
    record.hasDocuments = object.value(QLatin1String("hasDocuments")).toBool(true);
    record.isDefault = object.value(QLatin1String("default")).toBool(false);
    if (!isValidFolder(record.folder) || (!record.isDefault && record.folder.isEmpty())) {
        return std::nullopt;
    }
    const QJsonValue levels = object.value(QLatin1String("folderLevels"));
    if (levels.isString()) {
        record.folderLevels = levels.toString();
    }
    for (const QJsonValue& entry : object.value(QLatin1String("documentTypes")).toArray()) {
        if (entry.isString()) {
            record.documentTypes.append({entry.toString(), {entry.toString()}});
        } else if (entry.isObject()) {
            CloudContainer::DocumentType type;
            type.name = entry.toObject().value(QLatin1String("name")).toString();
            for (const QJsonValue& contentType :
                 entry.toObject().value(QLatin1String("contentTypes")).toArray()) {
                if (contentType.isString()) {
                    type.contentTypes.append(contentType.toString());
                }
            }
            record.documentTypes.append(type);
        }
    }
    return record;
}

QJsonObject ContainerRecord::toJson() const {
    QJsonObject object;
    object.insert(QLatin1String("identifier"), identifier);
    object.insert(QLatin1String("localizedName"), localizedName);
    object.insert(QLatin1String("folder"), folder);
    object.insert(QLatin1String("hasDocuments"), hasDocuments);
    if (folderLevels) {
        object.insert(QLatin1String("folderLevels"), *folderLevels);
    }
    QJsonArray types;
    for (const CloudContainer::DocumentType& type : documentTypes) {
        if (type.contentTypes.size() == 1 && type.name == type.contentTypes.first()) {
            types.append(type.name);
        } else {
            QJsonObject entry;
            entry.insert(QLatin1String("name"), type.name);
            entry.insert(QLatin1String("contentTypes"),
                         QJsonArray::fromStringList(type.contentTypes));
            types.append(entry);
        }
    }
    object.insert(QLatin1String("documentTypes"), types);
    object.insert(QLatin1String("default"), isDefault);
    return object;
}

std::optional<Error> ContainerRecord::write(const QString& path) const {
    return RecordFile::writeObject(path, toJson());
}

std::optional<QString> ContainerRecord::documentsPath(const DriveHome& home) const {
    if (!hasDocuments) {
        return std::nullopt;
    }
    return isDefault ? home.driveDir() : home.drivePathFor(folder);
}

CloudContainer ContainerRecord::cloudContainer(const DriveHome& home) const {
    CloudContainer container;
    container.setIdentifier(identifier);
    container.setLocalizedName(localizedName);
    if (const std::optional<QString> path = documentsPath(home)) {
        container.setDocumentsURL(Url::fromPath(*path, true));
    }
    container.setSupportedFolderLevels(folderLevels);
    container.setDocumentTypes(documentTypes);
    container.setDefault(isDefault);
    return container;
}

}  // namespace vl
