#pragma once

#include "drive/store/DriveHome.h"
#include "platform/cloud/CloudContainer.h"
#include "platform/files/Error.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// One container record, <home>/containers/<identifier>.json:
// {"identifier","localizedName","folder" (under drive/, empty for the default container),
//  "hasDocuments","folderLevels":"none|one|any" (absent = absent),"documentTypes":[...],
//  "default"}
class ContainerRecord {
public:
    QString identifier;
    QString localizedName;
    QString folder;
    bool hasDocuments = true;
    std::optional<QString> folderLevels;
    // Each entry is a content-type identifier, or {"name":..., "contentTypes":[...]} with, for a
    // document stored as a folder, "package":true and optionally "extensions":[...].
    QList<CloudContainer::DocumentType> documentTypes;
    bool isDefault = false;

    static std::optional<ContainerRecord> read(const QString& path, Error* error);
    static std::optional<ContainerRecord> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;
    std::optional<Error> write(const QString& path) const;

    // The documents folder: drive/ for the default container, drive/<folder> for an app
    // library; absent without documents.
    std::optional<QString> documentsPath(const DriveHome& home) const;
    CloudContainer cloudContainer(const DriveHome& home) const;
};

}  // namespace vl
