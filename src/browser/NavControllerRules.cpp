// When the edit-mode toolbar offers New Folder, Move and Delete: each container declares how deep
// its folders may go, and app libraries are deleted only on their own and never moved.

#include "browser/NavController.h"

#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "platform/cloud/CloudContainer.h"
#include "platform/cloud/CloudDocuments.h"
#include "toolkit/DocumentListController.h"

#include <QDirIterator>

#include <QFileInfo>
#include <cerrno>

namespace vl {

namespace {

// The container of the list's folder and the folder's path below the container's documents
// folder; absent (logged) when the lookup fails or finds none.
std::optional<CloudContainer> containerOfList(const std::shared_ptr<DocumentListController>& list,
                                              QStringList* components) {
    std::optional<CloudContainer> container;
    const Url url = list->presentedURL();
    const std::optional<Error> error =
        FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(url, &container,
                                                                                 components);
    if (error || !container) {
        VLLOG(3, "Couldn't get container for URL %@: %@", url, error);
        return std::nullopt;
    }
    return container;
}

}  // namespace

unsigned NavController::numContainersInURLArray(const QList<Url>& urls) {
    if (!CloudDocuments::isInstalled()) {
        return 0;
    }
    CloudDocuments& documents = CloudDocuments::shared();
    return unsigned(std::count_if(urls.begin(), urls.end(), [&documents](const Url& url) {
        return documents.isContainerRootURL(url);
    }));
}

unsigned NavController::numFoldersInURLArray(const QList<Url>& urls) {
    for (const Url& url : urls) {
        const std::shared_ptr<VLItem> item = VLItem::initWithURL(url);
        if (item && item->isDirectory() && !item->isPackage()) {
            return 1;
        }
    }
    return 0;
}

bool NavController::containerSupportsAnyDepth(const std::shared_ptr<DocumentListController>& list) {
    const std::optional<CloudContainer> container = containerOfList(list, nullptr);
    if (!container) {
        return false;
    }
    const std::optional<QString>& levels = container->supportedFolderLevels();
    if (!levels) {
        VLLOG(7, "Container %@ has no depth. Enabling new folder button", container->identifier());
        return true;
    }
    if (*levels == CloudContainer::FolderLevelsAny) {
        VLLOG(7, "Container %@ supports any folder. Enabling new folder button",
              container->identifier());
        return true;
    }
    return false;
}

bool NavController::canEnableNewFolderForSelectedItems(
    const std::shared_ptr<DocumentListController>& list) {
    QStringList components;
    const std::optional<CloudContainer> container = containerOfList(list, &components);
    if (!container) {
        return false;
    }
    const QString& identifier = container->identifier();
    const std::optional<QString>& levels = container->supportedFolderLevels();
    if (!levels) {
        VLLOG(7, "Container %@ has no depth. Enabling new folder button", identifier);
        return true;
    }
    if (*levels == CloudContainer::FolderLevelsNone) {
        VLLOG(7, "Container %@ supports no folders. Disabling new folder button", identifier);
        return false;
    }
    if (*levels == CloudContainer::FolderLevelsAny) {
        VLLOG(7, "Container %@ supports any folder. Enabling new folder button", identifier);
        return true;
    }
    if (*levels == CloudContainer::FolderLevelsOne) {
        const auto depth = unsigned(components.size());
        if (depth == 0) {
            VLLOG(7,
                  "Container %@ supports one folder. File is depth 0. Enabling new folder button",
                  identifier);
            return true;
        }
        VLLOG(7, "Container %@ supports one folder. File is depth %u. Disabling new folder button",
              identifier, depth);
        return false;
    }
    VLLOG(4, "Container %@ has unknown depth option %@. Disabling new folder button", identifier,
          *levels);
    return false;
}

bool NavController::canShowMoveForSelectedItems(
    const std::shared_ptr<DocumentListController>& list) {
    const QList<Url> selected = list->selectedItems();
    if (selected.isEmpty() || numContainersInURLArray(selected) != 0) {
        return false;
    }
    // Where folders may not nest freely, only files and packages move.
    return containerSupportsAnyDepth(list) || numFoldersInURLArray(selected) == 0;
}

bool NavController::containerHasSubfolders(const Url& url) {
    std::optional<CloudContainer> container;
    const std::optional<Error> error =
        FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(url, &container,
                                                                                 nullptr);
    if (error || !container || !container->documentsURL()) {
        // Let the chooser show what there is.
        return true;
    }
    const Url documents = *container->documentsURL();
    if (!QFileInfo(documents.path()).isReadable()) {
        VLLOG(6, "Error enumerating %@: %@", documents,
              Error::posixError(EACCES, documents.path()));
    }
    // Hidden names are skipped (no QDir::Hidden); a package is a directory here too.
    QDirIterator children(documents.path(), QDir::Dirs | QDir::NoDotAndDotDot);
    return children.hasNext();
}

bool NavController::canShowDeleteForSelectedItems(
    const std::shared_ptr<DocumentListController>& list) {
    const QList<Url> selected = list->selectedItems();
    if (selected.isEmpty()) {
        return false;
    }
    const unsigned containers = numContainersInURLArray(selected);
    return containers == 0 || containers == unsigned(selected.size());
}

}  // namespace vl
