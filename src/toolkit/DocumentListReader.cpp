#include "toolkit/DocumentListReader.h"

#include "platform/cloud/CloudDocuments.h"
#include "platform/files/ContentTypeRegistry.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace vl {

namespace {

constexpr ItemAttributeKeys kRowKeys =
    ItemAttributeKey::LocalizedName | ItemAttributeKey::ContentType |
    ItemAttributeKey::IsDirectory | ItemAttributeKey::IsPackage |
    ItemAttributeKey::ContentModificationDate | ItemAttributeKey::FileSize;

QHash<Url, QString> appLibraryNames(CloudDocuments& documents) {
    QHash<Url, QString> names;
    for (const CloudContainer& container : documents.containers()) {
        if (!container.isDefault() && container.documentsURL()) {
            names.insert(*container.documentsURL(), container.localizedName());
        }
    }
    return names;
}

// Name order as people expect it: runs of digits compare by value ("report 9" before
// "Report 10"), the text between them without regard to case, in the locale's order. Written out
// because QCollator's numeric mode does nothing under the C and POSIX locales.
int compareNames(const QString& a, const QString& b) {
    qsizetype i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        const bool digitA = a.at(i).isDigit(), digitB = b.at(j).isDigit();
        qsizetype endA = i, endB = j;
        while (endA < a.size() && a.at(endA).isDigit() == digitA) {
            ++endA;
        }
        while (endB < b.size() && b.at(endB).isDigit() == digitB) {
            ++endB;
        }
        int order = 0;
        if (digitA && digitB) {
            QStringView runA = QStringView(a).sliced(i, endA - i);
            QStringView runB = QStringView(b).sliced(j, endB - j);
            while (runA.size() > 1 && runA.front() == QLatin1Char('0')) {
                runA = runA.sliced(1);
            }
            while (runB.size() > 1 && runB.front() == QLatin1Char('0')) {
                runB = runB.sliced(1);
            }
            order = runA.size() != runB.size() ? (runA.size() < runB.size() ? -1 : 1)
                                               : runA.compare(runB);
        } else {
            const QString runA = a.mid(i, endA - i).toCaseFolded();
            const QString runB = b.mid(j, endB - j).toCaseFolded();
            order = QString::localeAwareCompare(runA, runB);
            if (order == 0) {
                order = runA.compare(runB);
            }
        }
        if (order != 0) {
            return order;
        }
        i = endA;
        j = endB;
    }
    return (a.size() - i) < (b.size() - j) ? -1 : ((a.size() - i) > (b.size() - j) ? 1 : 0);
}

}  // namespace

QString DocumentListReader::iconNameForContentType(const QString& contentType) {
    if (contentType == ContentTypeRegistry::Folder) {
        return QStringLiteral("folder");
    }
    return ContentTypeRegistry::shared().iconName(contentType);
}

void DocumentListReader::sortEntries(QList<DocumentListEntry>& entries, SortOrder order) {
    std::sort(entries.begin(), entries.end(),
              [order](const DocumentListEntry& a, const DocumentListEntry& b) {
                  if (a.isFolder != b.isFolder) {
                      return a.isFolder;
                  }
                  switch (order) {
                      case SortOrder::Date:
                          if (a.modified != b.modified) {
                              return a.modified > b.modified;
                          }
                          break;
                      case SortOrder::Size:
                          if (a.size != b.size) {
                              return a.size > b.size;
                          }
                          break;
                      case SortOrder::Kind:
                          if (a.kind != b.kind) {
                              return a.kind < b.kind;
                          }
                          break;
                      case SortOrder::Name:
                          break;
                  }
                  const int byName = compareNames(a.displayName, b.displayName);
                  return byName != 0 ? byName < 0 : a.url < b.url;
              });
}

QList<DocumentListEntry> DocumentListReader::readFolder(const Url& folder, SortOrder order) {
    QList<DocumentListEntry> entries;
    if (!CloudDocuments::isInstalled() || folder.isEmpty()) {
        return entries;
    }
    CloudDocuments& documents = CloudDocuments::shared();
    ContentTypeRegistry& types = ContentTypeRegistry::shared();
    const QHash<Url, QString> libraries = appLibraryNames(documents);
    const QFileInfoList infos =
        QDir(folder.path())
            .entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDir::Unsorted);
    for (const QFileInfo& info : infos) {
        Url url = Url::fromPath(info.filePath(), info.isDir());
        bool cloudOnly = false;
        if (info.fileName().startsWith(QLatin1Char('.'))) {
            // Hidden names are never items, except the placeholders of cloud-only items, which
            // stand for the item at their logical URL.
            if (!documents.hasItemPromiseAtURL(url)) {
                continue;
            }
            std::optional<Url> logical = documents.promisedItemLogicalURL(url, nullptr);
            if (!logical || QFileInfo::exists(logical->path())) {
                continue;
            }
            url = *logical;
            cloudOnly = true;
        }
        DocumentListEntry entry;
        entry.url = url;
        entry.isCloudOnly = cloudOnly;
        // A document reference shows as the document it points at, by that one's name and kind.
        Url described = url;
        if (!cloudOnly && documents.isExternalDocumentReference(url)) {
            if (std::optional<Url> target =
                    documents.externalDocumentReferenceTarget(url, nullptr)) {
                described = *target;
            }
        }
        const std::optional<ItemAttributes> attributes =
            documents.promisedItemResourceValues(described, kRowKeys, nullptr);
        entry.displayName = attributes && attributes->localizedName ? *attributes->localizedName
                                                                    : described.lastPathComponent();
        const bool isDirectory =
            attributes && attributes->isDirectory ? *attributes->isDirectory : info.isDir();
        const bool isPackage = attributes && attributes->isPackage && *attributes->isPackage;
        if (auto library = libraries.constFind(url); library != libraries.constEnd()) {
            entry.displayName = *library;
            entry.isAppLibrary = true;
            entry.isFolder = true;
            entry.iconName = QStringLiteral("folder-remote");
            entry.genericIconName = QStringLiteral("folder");
        } else if (isDirectory && !isPackage) {
            entry.isFolder = true;
            entry.iconName = QStringLiteral("folder");
        } else {
            const QString type =
                attributes && attributes->contentType
                    ? *attributes->contentType
                    : types.identifierForFileName(described.lastPathComponent(), isDirectory);
            entry.iconName = iconNameForContentType(type);
            entry.kind = type;
            entry.size = attributes && attributes->fileSize ? *attributes->fileSize : 0;
            entry.genericIconName = types.genericIconName(type);
        }
        if (attributes && attributes->contentModificationDate) {
            entry.modified = attributes->contentModificationDate->toMSecsSinceEpoch();
        }
        entries.append(std::move(entry));
    }
    sortEntries(entries, order);
    return entries;
}

QString DocumentListReader::titleForFolder(const Url& folder) {
    if (!CloudDocuments::isInstalled()) {
        return folder.lastPathComponent();
    }
    CloudDocuments& documents = CloudDocuments::shared();
    if (documents.defaultContainerURL() == folder) {
        const QString name = documents.defaultContainerLocalizedName();
        if (!name.isEmpty()) {
            return name;
        }
    }
    for (const CloudContainer& container : documents.containers()) {
        if (container.documentsURL() == folder && !container.localizedName().isEmpty()) {
            return container.localizedName();
        }
    }
    const std::optional<ItemAttributes> attributes =
        documents.promisedItemResourceValues(folder, ItemAttributeKey::LocalizedName, nullptr);
    return attributes && attributes->localizedName ? *attributes->localizedName
                                                   : folder.lastPathComponent();
}

}  // namespace vl
