#pragma once

#include "platform/files/Url.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// The cloud documents service's record of one container: the default container (the drive's own
// top level, with the user's folders) or an app library. A value: it does not follow later
// changes of the container.
class CloudContainer {
public:
    // The supported-folder-levels constants. A record may hold another string (a newer service's
    // value), which callers treat as unknown.
    static inline const QString FolderLevelsNone = QStringLiteral("none");
    static inline const QString FolderLevelsOne = QStringLiteral("one");
    static inline const QString FolderLevelsAny = QStringLiteral("any");

    // One declared document type: the content-type identifiers its app handles. A package type
    // is a document stored as a folder: a directory whose name ends in one of `extensions` (or,
    // when none are given, an extension of its content types) is one document of this type.
    struct DocumentType {
        QString name;
        QStringList contentTypes;
        bool isPackage = false;
        QStringList extensions = {};
        bool operator==(const DocumentType&) const = default;
    };

    CloudContainer() = default;

    const QString& identifier() const { return identifier_; }
    void setIdentifier(const QString& identifier) { identifier_ = identifier; }
    const QString& localizedName() const { return localizedName_; }
    void setLocalizedName(const QString& name) { localizedName_ = name; }
    // The folder the user sees as the container; absent for a container without documents.
    const std::optional<Url>& documentsURL() const { return documentsURL_; }
    void setDocumentsURL(const std::optional<Url>& url) { documentsURL_ = url; }
    const std::optional<QString>& supportedFolderLevels() const { return folderLevels_; }
    void setSupportedFolderLevels(const std::optional<QString>& levels) { folderLevels_ = levels; }
    const QList<DocumentType>& documentTypes() const { return documentTypes_; }
    void setDocumentTypes(const QList<DocumentType>& types) { documentTypes_ = types; }
    bool isDefault() const { return isDefault_; }
    void setDefault(bool isDefault) { isDefault_ = isDefault; }

    // Every content type of every declared document type, without duplicates, in first-seen
    // order.
    QStringList allContentTypes() const;

    // "<CloudContainer identifier \"...\" name \"...\" documents ...>", as log lines show it.
    QString description() const;

    bool operator==(const CloudContainer&) const = default;

private:
    QString identifier_;
    QString localizedName_;
    std::optional<Url> documentsURL_;
    std::optional<QString> folderLevels_;
    QList<DocumentType> documentTypes_;
    bool isDefault_ = false;
};

}  // namespace vl
