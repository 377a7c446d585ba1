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

QStringList stringsOf(const QJsonValue& value) {
    QStringList strings;
    for (const QJsonValue& entry : value.toArray()) {
        if (entry.isString()) {
            strings.append(entry.toString());
        }
    }
    return strings;
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
            record.documentTypes.append({entry.toString(), {entry.toString()}, false, {}});
        } else if (entry.isObject()) {
            const QJsonObject declared = entry.toObject();
            CloudContainer::DocumentType type;
            type.name = declared.value(QLatin1String("name")).toString();
            type.contentTypes = stringsOf(declared.value(QLatin1String("contentTypes")));
            type.isPackage = declared.value(QLatin1String("package")).toBool(false);
            for (const QString& extension :
                 stringsOf(declared.value(QLatin1String("extensions")))) {
                // An extension names the end of a folder's name: one plain word.
                if (!extension.isEmpty() && !extension.contains(QLatin1Char('/')) &&
                    !extension.contains(QLatin1Char('.'))) {
                    type.extensions.append(extension.toLower());
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
        if (type.contentTypes.size() == 1 && type.name == type.contentTypes.first() &&
            !type.isPackage && type.extensions.isEmpty()) {
            types.append(type.name);
        } else {
            QJsonObject entry;
            entry.insert(QLatin1String("name"), type.name);
            entry.insert(QLatin1String("contentTypes"),
                         QJsonArray::fromStringList(type.contentTypes));
            if (type.isPackage) {
                entry.insert(QLatin1String("package"), true);
            }
            if (!type.extensions.isEmpty()) {
                entry.insert(QLatin1String("extensions"),
                             QJsonArray::fromStringList(type.extensions));
            }
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
