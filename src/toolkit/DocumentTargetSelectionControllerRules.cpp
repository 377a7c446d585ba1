#include "toolkit/DocumentTargetSelectionController.h"

#include "platform/cloud/CloudDocuments.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <climits>

namespace vl {

namespace {

// Deeper than any container allows; the walk of a moved folder stops counting there.
constexpr int kDepthCap = 64;

struct Kind {
    bool exists = false;
    bool isFolder = false;  // a directory that is not a package
};

Kind kindOf(CloudDocuments& documents, const Url& url) {
    const std::optional<ItemAttributes> attributes = documents.promisedItemResourceValues(
        url, ItemAttributeKey::IsDirectory | ItemAttributeKey::IsPackage, nullptr);
    if (!attributes) {
        return {};
    }
    const bool directory = attributes->isDirectory && *attributes->isDirectory;
    const bool package = attributes->isPackage && *attributes->isPackage;
    return {true, directory && !package};
}

// The items directly inside `folder`, a cloud-only item by its logical URL.
QList<Url> childrenOf(CloudDocuments& documents, const Url& folder) {
    QList<Url> children;
    const QFileInfoList infos =
        QDir(folder.path())
            .entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDir::Unsorted);
    for (const QFileInfo& info : infos) {
        const Url url = Url::fromPath(info.filePath(), info.isDir());
        if (!info.fileName().startsWith(QLatin1Char('.'))) {
            children.append(url);
        } else if (documents.hasItemPromiseAtURL(url)) {
            if (std::optional<Url> logical = documents.promisedItemLogicalURL(url, nullptr);
                logical && !QFileInfo::exists(logical->path())) {
                children.append(*logical);
            }
        }
    }
    return children;
}

int deepestFolderBelow(CloudDocuments& documents, const Url& folder, int depth) {
    if (depth >= kDepthCap) {
        return depth;
    }
    int deepest = depth;
    for (const Url& child : childrenOf(documents, folder)) {
        if (kindOf(documents, child).isFolder) {
            deepest = std::max(deepest, deepestFolderBelow(documents, child, depth + 1));
        }
    }
    return deepest;
}

// How deep folders may go in the folder's container, and how deep the folder is in it; nothing
// when the container can't be found.
std::optional<std::pair<int, int>> allowedAndActualDepth(CloudDocuments& documents,
                                                         const Url& folder) {
    Error error;
    const std::optional<CloudContainer> container = documents.containerForItemAtURL(folder, &error);
    if (!container || !container->documentsURL()) {
        return std::nullopt;
    }
    const QString root = container->documentsURL()->path();
    const QString path = folder.path();
    if (path != root && !container->documentsURL()->isAncestorOf(folder)) {
        return std::nullopt;
    }
    const int depth = int(
        QStringView(path).sliced(root.size()).split(QLatin1Char('/'), Qt::SkipEmptyParts).size());
    const std::optional<QString>& levels = container->supportedFolderLevels();
    int allowed = 0;  // an unknown value allows nothing that it might forbid
    if (!levels || *levels == CloudContainer::FolderLevelsAny) {
        allowed = INT_MAX;
    } else if (*levels == CloudContainer::FolderLevelsOne) {
        allowed = 1;
    }
    return std::make_pair(allowed, depth);
}

}  // namespace

int DocumentTargetSelectionController::folderDepthOfItem(const Url& item) {
    if (!CloudDocuments::isInstalled()) {
        return 0;
    }
    CloudDocuments& documents = CloudDocuments::shared();
    if (!kindOf(documents, item).isFolder) {
        return 0;
    }
    return deepestFolderBelow(documents, item, 1);
}

bool DocumentTargetSelectionController::canMoveItemsIntoFolder(const QList<Url>& items,
                                                               const Url& folder) {
    if (items.isEmpty() || folder.isEmpty() || !CloudDocuments::isInstalled()) {
        return false;
    }
    CloudDocuments& documents = CloudDocuments::shared();
    if (!documents.isDriveItemAtURL(folder) || !kindOf(documents, folder).isFolder) {
        return false;
    }
    bool allThereAlready = true;
    for (const Url& item : items) {
        if (item == folder || item.isAncestorOf(folder)) {
            return false;
        }
        allThereAlready = allThereAlready && item.deletingLastPathComponent() == folder;
    }
    if (allThereAlready) {
        return false;
    }
    const std::optional<std::pair<int, int>> depth = allowedAndActualDepth(documents, folder);
    if (!depth) {
        return false;
    }
    const auto [allowed, actual] = *depth;
    if (actual > allowed) {
        return false;
    }
    for (const Url& item : items) {
        if (allowed != INT_MAX && actual + folderDepthOfItem(item) > allowed) {
            return false;
        }
    }
    return true;
}

QList<DocumentTargetSelectionController::Folder>
DocumentTargetSelectionController::subfoldersOfFolder(const Url& folder,
                                                      const QList<Url>& itemsToMove) {
    QList<Folder> folders;
    if (!CloudDocuments::isInstalled() || folder.isEmpty()) {
        return folders;
    }
    CloudDocuments& documents = CloudDocuments::shared();
    QHash<Url, QString> libraries;
    for (const CloudContainer& container : documents.containers()) {
        if (!container.isDefault() && container.documentsURL()) {
            libraries.insert(*container.documentsURL(), container.localizedName());
        }
    }
    for (const Url& child : childrenOf(documents, folder)) {
        if (!kindOf(documents, child).isFolder) {
            continue;
        }
        Folder entry;
        entry.url = Url::fromPath(child.path(), true);
        if (auto library = libraries.constFind(child); library != libraries.constEnd()) {
            entry.name = *library;
            entry.isAppLibrary = true;
        } else {
            const std::optional<ItemAttributes> attributes = documents.promisedItemResourceValues(
                child, ItemAttributeKey::LocalizedName, nullptr);
            entry.name = attributes && attributes->localizedName ? *attributes->localizedName
                                                                 : child.lastPathComponent();
        }
        entry.canOpen = std::none_of(itemsToMove.begin(), itemsToMove.end(), [&](const Url& item) {
            return item == child || item.isAncestorOf(child);
        });
        folders.append(std::move(entry));
    }
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(folders.begin(), folders.end(), [&](const Folder& a, const Folder& b) {
        if (a.isAppLibrary != b.isAppLibrary) {
            return a.isAppLibrary;
        }
        return collator.compare(a.name, b.name) < 0;
    });
    return folders;
}

}  // namespace vl
