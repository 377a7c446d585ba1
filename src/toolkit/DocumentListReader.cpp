#include "toolkit/DocumentListReader.h"

#include "platform/cloud/CloudDocuments.h"
#include "platform/files/ContentTypeRegistry.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace vl {

namespace {

constexpr ItemAttributeKeys kRowKeys =
    ItemAttributeKey::LocalizedName | ItemAttributeKey::ContentType |
    ItemAttributeKey::IsDirectory | ItemAttributeKey::IsPackage |
    ItemAttributeKey::ContentModificationDate | ItemAttributeKey::FileSize;

bool isDigit(QChar c) {
    return c.unicode() < 0x80 ? (c >= QLatin1Char('0') && c <= QLatin1Char('9')) : c.isDigit();
}

char16_t folded(QChar c) {
    if (c.unicode() < 0x80) {
        return c >= QLatin1Char('A') && c <= QLatin1Char('Z') ? c.unicode() + 0x20 : c.unicode();
    }
    return QChar::toCaseFolded(c.unicode());
}

bool isAsciiAlphanumeric(char16_t c) {
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z');
}

// Two runs that are not both digits. The first difference between ASCII letters or digits
// decides as it would in any locale's order; a difference elsewhere (accents, other scripts,
// punctuation) is left to the locale, over the whole runs.
int compareText(QStringView a, QStringView b) {
    const qsizetype common = std::min(a.size(), b.size());
    for (qsizetype k = 0; k < common; ++k) {
        if (a[k] == b[k]) {
            continue;
        }
        const char16_t x = folded(a[k]), y = folded(b[k]);
        if (x == y) {
            continue;
        }
        if (isAsciiAlphanumeric(x) && isAsciiAlphanumeric(y)) {
            return x < y ? -1 : 1;
        }
        const QString foldedA = a.toString().toCaseFolded();
        const QString foldedB = b.toString().toCaseFolded();
        const int order = QString::localeAwareCompare(foldedA, foldedB);
        return order != 0 ? order : foldedA.compare(foldedB);
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

QHash<Url, QString> appLibraryNames(CloudDocuments& documents) {
    QHash<Url, QString> names;
    for (const CloudContainer& container : documents.containers()) {
        if (!container.isDefault() && container.documentsURL()) {
            names.insert(*container.documentsURL(), container.localizedName());
        }
    }
    return names;
}

// Turns directory entries into rows. Most rows of a large folder are plain files, and a row
// shows only a name and an icon: their kind comes from the name, as the drive's attribute read
// would give it, without asking the file system about each of them. Directories (which may be
// packages), links, placeholders, references and the sort orders that need sizes or dates go
// through the drive's attribute read.
class RowReader {
public:
    RowReader(const Url& folder, DocumentListReader::SortOrder order)
        : documents_(CloudDocuments::shared()),
          types_(ContentTypeRegistry::shared()),
          folder_(std::make_shared<DocumentListEntry::Folder>(
              DocumentListEntry::Folder{Url::fromPath(folder.path(), true), {}})),
          libraries_(appLibraryNames(documents_)),
          needsAttributes_(order == DocumentListReader::SortOrder::Date ||
                           order == DocumentListReader::SortOrder::Size),
          folderKeptOffline_(documents_.isItemKeptOffline(folder_->url)),
          pinnedNames_(documents_.pinnedItemNamesInFolder(folder_->url)) {}

    std::optional<DocumentListEntry> read(const QString& name, const QFileInfo& info) {
        std::optional<DocumentListEntry> entry = readRow(name, info);
        if (entry) {
            entry->isPinned = folderKeptOffline_ || pinnedNames_.contains(entry->name);
        }
        return entry;
    }

private:
    std::optional<DocumentListEntry> readRow(const QString& name, const QFileInfo& info) {
        DocumentListEntry entry;
        entry.folder = folder_;
        if (name.startsWith(QLatin1Char('.'))) {
            // Hidden names are never items, except the placeholders of cloud-only items, which
            // stand for the item at their logical URL.
            const Url placeholder = folder_->url.appendingPathComponent(name);
            if (!documents_.hasItemPromiseAtURL(placeholder)) {
                return std::nullopt;
            }
            std::optional<Url> logical = documents_.promisedItemLogicalURL(placeholder, nullptr);
            if (!logical || QFileInfo::exists(logical->path())) {
                return std::nullopt;
            }
            entry.name = logical->lastPathComponent();
            entry.isCloudOnly = true;
            describe(entry, *logical, false);
            return entry;
        }
        entry.name = name;
        const bool isPlainFile = info.isFile() && !info.isSymLink();
        const Url url = folder_->url.appendingPathComponent(name, info.isDir());
        if (auto library = libraries_.constFind(url); library != libraries_.constEnd()) {
            entry.shownName = *library;
            entry.isAppLibrary = true;
            entry.isFolder = true;
            entry.isDirectory = true;
            entry.kind = DocumentListKind::appLibrary();
            return entry;
        }
        // A document reference shows as the document it points at, by that one's name and
        // kind.
        if (documents_.isExternalDocumentReference(url)) {
            if (std::optional<Url> target =
                    documents_.externalDocumentReferenceTarget(url, nullptr)) {
                describe(entry, *target, info.isDir());
                entry.isFolder = false;
                entry.isDirectory = info.isDir();
                return entry;
            }
        }
        if (isPlainFile && !needsAttributes_) {
            entry.kind = kindForFileName(name);
            return entry;
        }
        describe(entry, url, info.isDir());
        return entry;
    }

    void describe(DocumentListEntry& entry, const Url& described, bool fallbackIsDirectory) {
        const std::optional<ItemAttributes> attributes =
            documents_.promisedItemResourceValues(described, kRowKeys, nullptr);
        const QString shown = attributes && attributes->localizedName
                                  ? *attributes->localizedName
                                  : described.lastPathComponent();
        if (shown != entry.name) {
            entry.shownName = shown;
        }
        entry.isDirectory =
            attributes && attributes->isDirectory ? *attributes->isDirectory : fallbackIsDirectory;
        const bool isPackage = attributes && attributes->isPackage && *attributes->isPackage;
        if (entry.isDirectory && !isPackage) {
            entry.isFolder = true;
            entry.kind = DocumentListKind::folder();
        } else {
            entry.kind = kindForType(attributes && attributes->contentType
                                         ? *attributes->contentType
                                         : types_.identifierForFileName(
                                               described.lastPathComponent(), entry.isDirectory));
            entry.size = attributes && attributes->fileSize ? *attributes->fileSize : 0;
        }
        if (attributes && attributes->contentModificationDate) {
            entry.modified = attributes->contentModificationDate->toMSecsSinceEpoch();
        }
    }

    // The type by the extension alone, the way the drive decides it.
    const DocumentListKind* kindForFileName(const QString& name) {
        const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
        const QStringView extension = dot > 0 ? QStringView(name).mid(dot + 1) : QStringView();
        // Most items of a big folder share their extension with the one before.
        if (lastKind_ && extension.compare(lastExtension_, Qt::CaseInsensitive) == 0) {
            return lastKind_;
        }
        lastExtension_ = extension.toString().toLower();
        auto found = kindsByExtension_.constFind(lastExtension_);
        if (found == kindsByExtension_.constEnd()) {
            const QString sample = lastExtension_.isEmpty()
                                       ? QStringLiteral("item")
                                       : QStringLiteral("item.") + lastExtension_;
            found = kindsByExtension_.insert(
                lastExtension_, kindForType(types_.identifierForFileName(sample, false)));
        }
        lastKind_ = *found;
        return lastKind_;
    }

    const DocumentListKind* kindForType(const QString& type) {
        auto found = kindsByType_.constFind(type);
        if (found == kindsByType_.constEnd()) {
            found = kindsByType_.insert(
                type,
                DocumentListKind::intern(type, DocumentListReader::iconNameForContentType(type),
                                         types_.genericIconName(type)));
        }
        return *found;
    }

    CloudDocuments& documents_;
    ContentTypeRegistry& types_;
    const std::shared_ptr<const DocumentListEntry::Folder> folder_;
    const QHash<Url, QString> libraries_;
    const bool needsAttributes_;
    // The items of a folder kept offline are all kept offline; otherwise those pinned themselves.
    const bool folderKeptOffline_;
    const QSet<QString> pinnedNames_;
    QHash<QString, const DocumentListKind*> kindsByExtension_;
    QHash<QString, const DocumentListKind*> kindsByType_;
    QString lastExtension_;
    const DocumentListKind* lastKind_ = nullptr;
};

// Calls `row` with each row of the folder, in the directory's order, until it returns false.
template <typename RowHandler>
void forEachRow(const Url& folder, DocumentListReader::SortOrder order, RowHandler&& row) {
    if (!CloudDocuments::isInstalled() || folder.isEmpty()) {
        return;
    }
    RowReader reader(folder, order);
    QDirIterator it(folder.path(),
                    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        if (std::optional<DocumentListEntry> entry = reader.read(it.fileName(), it.fileInfo())) {
            if (!row(std::move(*entry))) {
                return;
            }
        }
    }
}

}  // namespace

int DocumentListReader::compareNames(QStringView a, QStringView b) {
    // Names in a big folder mostly share a long start ("Scan 2024-05-"). Runs wholly inside the
    // shared start compare equal, so the comparison starts with the run that holds the first
    // difference.
    const qsizetype common = std::min(a.size(), b.size());
    qsizetype start = 0;
    while (start < common && a[start] == b[start]) {
        ++start;
    }
    if (start == a.size() && start == b.size()) {
        return 0;
    }
    if (start > 0) {
        const bool digit = isDigit(a[start - 1]);
        while (start > 0 && isDigit(a[start - 1]) == digit) {
            --start;
        }
    }
    qsizetype i = start, j = start;
    while (i < a.size() && j < b.size()) {
        const bool digitA = isDigit(a[i]), digitB = isDigit(b[j]);
        qsizetype endA = i, endB = j;
        while (endA < a.size() && isDigit(a[endA]) == digitA) {
            ++endA;
        }
        while (endB < b.size() && isDigit(b[endB]) == digitB) {
            ++endB;
        }
        QStringView runA = a.sliced(i, endA - i);
        QStringView runB = b.sliced(j, endB - j);
        int order = 0;
        if (digitA && digitB) {
            while (runA.size() > 1 && runA.front() == QLatin1Char('0')) {
                runA = runA.sliced(1);
            }
            while (runB.size() > 1 && runB.front() == QLatin1Char('0')) {
                runB = runB.sliced(1);
            }
            order = runA.size() != runB.size() ? (runA.size() < runB.size() ? -1 : 1)
                                               : runA.compare(runB);
        } else {
            order = compareText(runA, runB);
        }
        if (order != 0) {
            return order;
        }
        i = endA;
        j = endB;
    }
    return (a.size() - i) < (b.size() - j) ? -1 : ((a.size() - i) > (b.size() - j) ? 1 : 0);
}

QString DocumentListReader::iconNameForContentType(const QString& contentType) {
    if (contentType == ContentTypeRegistry::Folder) {
        return QStringLiteral("folder");
    }
    return ContentTypeRegistry::shared().iconName(contentType);
}

bool DocumentListReader::lessThan(const DocumentListEntry& a, const DocumentListEntry& b,
                                  SortOrder order) {
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
            if (a.kind != b.kind && a.kind->contentType() != b.kind->contentType()) {
                return a.kind->contentType() < b.kind->contentType();
            }
            break;
        case SortOrder::Name:
            break;
    }
    const int byName = compareNames(a.displayName(), b.displayName());
    return byName != 0 ? byName < 0 : a.name < b.name;
}

void DocumentListReader::sortEntries(QList<DocumentListEntry>& entries, SortOrder order) {
    std::sort(entries.begin(), entries.end(),
              [order](const DocumentListEntry& a, const DocumentListEntry& b) {
                  return lessThan(a, b, order);
              });
}

QList<DocumentListEntry> DocumentListReader::mergeEntries(QList<DocumentListEntry>&& rows,
                                                          QList<DocumentListEntry>&& added,
                                                          SortOrder order) {
    QList<DocumentListEntry> merged;
    merged.reserve(rows.size() + added.size());
    std::merge(std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()),
               std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()),
               std::back_inserter(merged),
               [order](const DocumentListEntry& a, const DocumentListEntry& b) {
                   return lessThan(a, b, order);
               });
    rows.clear();
    added.clear();
    return merged;
}

QList<DocumentListEntry> DocumentListReader::readFolder(const Url& folder, SortOrder order) {
    QList<DocumentListEntry> entries;
    forEachRow(folder, order, [&entries](DocumentListEntry&& entry) {
        entries.append(std::move(entry));
        return true;
    });
    sortEntries(entries, order);
    return entries;
}

void DocumentListReader::readFolderInBatches(const Url& folder, SortOrder order, int firstBatch,
                                             int interval, const BatchHandler& handler) {
    QList<DocumentListEntry> batch;
    QElapsedTimer sinceLast;
    sinceLast.start();
    bool first = true;
    bool stopped = false;
    forEachRow(folder, order, [&](DocumentListEntry&& entry) {
        batch.append(std::move(entry));
        // The clock is read every 64 rows: often enough to keep to the interval.
        if (first ? batch.size() >= firstBatch
                  : (batch.size() % 64 == 0 && sinceLast.elapsed() >= interval)) {
            sortEntries(batch, order);
            first = false;
            sinceLast.restart();
            if (!handler(std::exchange(batch, {}), false)) {
                stopped = true;
                return false;
            }
        }
        return true;
    });
    if (!stopped) {
        sortEntries(batch, order);
        handler(std::move(batch), true);
    }
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
