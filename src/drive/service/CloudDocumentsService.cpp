#include "drive/service/CloudDocumentsService.h"

#include "logging/VLLogging.h"
#include "platform/app/NotificationCenter.h"
#include "platform/cloud/FileCoordinator.h"

#include <QDir>

namespace vl {

CloudDocumentsService::CloudDocumentsService(std::shared_ptr<DriveStore> store)
    : store_(std::move(store)) {}

bool CloudDocumentsService::isSignedIn() const {
    return store_->readAccount().has_value();
}

std::optional<Url> CloudDocumentsService::driveRootURL() const {
    if (!isSignedIn()) {
        return std::nullopt;
    }
    return store_->driveRootURL();
}

bool CloudDocumentsService::isDriveItemAtURL(const Url& url) const {
    return store_->relativePath(url).has_value();
}

std::optional<QString> CloudDocumentsService::relativePathForURL(const Url& url) const {
    return store_->relativePath(url);
}

QList<CloudContainer> CloudDocumentsService::containers() const {
    QList<CloudContainer> containers;
    for (const ContainerRecord& record : store_->containerRecords()) {
        containers.append(record.cloudContainer(store_->home()));
    }
    return containers;
}

std::optional<CloudContainer> CloudDocumentsService::containerForItemAtURL(const Url& url,
                                                                           Error* error) const {
    const std::optional<ContainerRecord> record = store_->containerRecordForURL(url, error);
    if (!record) {
        return std::nullopt;
    }
    return record->cloudContainer(store_->home());
}

QString CloudDocumentsService::defaultContainerIdentifier() const {
    const std::optional<ContainerRecord> record = store_->defaultContainerRecord();
    return record ? record->identifier : QString();
}

QString CloudDocumentsService::defaultContainerLocalizedName() const {
    const std::optional<ContainerRecord> record = store_->defaultContainerRecord();
    return record ? record->localizedName : QString();
}

std::optional<Url> CloudDocumentsService::defaultContainerURL() const {
    if (!isSignedIn()) {
        return std::nullopt;
    }
    const std::optional<ContainerRecord> record = store_->defaultContainerRecord();
    if (!record) {
        return std::nullopt;
    }
    const std::optional<QString> path = record->documentsPath(store_->home());
    if (!path) {
        return std::nullopt;
    }
    return Url::fromPath(*path, true);
}

bool CloudDocumentsService::isContainerRootURL(const Url& url) const {
    return store_->appLibraryAtURL(url).has_value();
}

bool CloudDocumentsService::isAppLibraryDocumentsURL(const Url& url) const {
    // An app library's documents folder is the folder the root list shows for it.
    return store_->appLibraryAtURL(url).has_value();
}

std::optional<Error> CloudDocumentsService::deleteAllContentsOfContainer(
    const CloudContainer& container) {
    const std::optional<Url> folder = container.documentsURL();
    if (!FileCoordinator::Backend::isInstalled() || !folder ||
        container.identifier() == defaultContainerIdentifier()) {
        return store_->deleteContainerContents(container.identifier());
    }
    // One coordinated write of the library's folder waits for the reads and writes under way in
    // it; inside it each item goes in a deleting write of its own, so that whoever presents the
    // item (a preview, a download) hears that it is gone.
    std::optional<Error> firstFailure;
    FileCoordinator coordinator;
    std::optional<Error> coordinationError;
    coordinator.coordinateWritingItemAtURL(
        *folder, FileCoordinator::WritingOptions(), &coordinationError, [&](const Url& actual) {
            for (const Url& item : itemsInFolder(actual)) {
                std::optional<Error> itemError;
                FileCoordinator itemCoordinator;
                itemCoordinator.coordinateWritingItemAtURL(
                    item, FileCoordinator::WritingOption::ForDeleting, &itemError,
                    [&](const Url& itemURL) { itemError = store_->removeItem(itemURL); });
                if (itemError) {
                    VLLOG(6, "Deleting %@ on its own failed: %@", item, *itemError);
                }
            }
            // What is left (cloud copies with no item here, names a QString can't spell, items
            // that failed above) goes by the store's own sweep, which answers for all of it.
            firstFailure = store_->deleteContainerContents(container.identifier());
        });
    if (coordinationError) {
        firstFailure = coordinationError;
    }
    if (firstFailure) {
        VLLOG(4, "Failed to delete the contents of %@: %@", container.identifier(), *firstFailure);
    }
    return firstFailure;
}

QList<Url> CloudDocumentsService::itemsInFolder(const Url& folder) const {
    QList<Url> items;
    const QDir dir(folder.path());
    for (const QString& name :
         dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        const Url url = folder.appendingPathComponent(name);
        items.append(DriveStore::isPlaceholderURL(url) ? DriveStore::logicalURLFor(url) : url);
    }
    return items;
}

bool CloudDocumentsService::hasItemPromiseAtURL(const Url& url) const {
    return store_->hasItemPromise(url);
}

std::optional<Url> CloudDocumentsService::promisedItemLogicalURL(const Url& placeholderURL,
                                                                 Error* error) const {
    return store_->logicalURLOfPlaceholder(placeholderURL, error);
}

Url CloudDocumentsService::physicalURL(const Url& url) const {
    return store_->physicalURLOf(url);
}

bool CloudDocumentsService::checkPromisedItemIsReachable(const Url& url, Error* error) const {
    return store_->isReachable(url, error);
}

std::optional<ItemAttributes> CloudDocumentsService::promisedItemResourceValues(
    const Url& url, ItemAttributeKeys keys, Error* error) const {
    return store_->promisedItemAttributes(url, keys, error);
}

std::optional<ItemAttributes> CloudDocumentsService::resourceValues(const Url& url,
                                                                    ItemAttributeKeys keys,
                                                                    Error* error) const {
    return store_->localItemAttributes(url, keys, error);
}

bool CloudDocumentsService::isExternalDocumentReference(const Url& url) const {
    return DriveStore::isDocumentReferenceURL(url) && store_->relativePath(url).has_value();
}

std::optional<Url> CloudDocumentsService::externalDocumentReferenceTarget(const Url& url,
                                                                          Error* error) const {
    return store_->documentReferenceTarget(url, error);
}

std::optional<QStringList> CloudDocumentsService::tagNames(const Url& url, Error* error) const {
    std::optional<QStringList> tags = store_->tags(url, error);
    if (!tags || tags->isEmpty()) {
        return std::nullopt;
    }
    return tags;
}

std::optional<Error> CloudDocumentsService::evictDriveItem(const Url& url) {
    std::optional<Error> error;
    if (FileCoordinator::Backend::isInstalled()) {
        // Eviction is a write like any other: it waits for the coordinated reads and writes of
        // the item under way, and they wait for it.
        FileCoordinator coordinator;
        std::optional<Error> coordinationError;
        coordinator.coordinateWritingItemAtURL(
            url, FileCoordinator::WritingOptions(), &coordinationError,
            [&](const Url& actual) { error = store_->evict(actual); });
        if (coordinationError) {
            error = coordinationError;
        }
    } else {
        error = store_->evict(url);
    }
    if (error) {
        VLLOG(4, "Failed to evict %@: %@", url, *error);
    }
    return error;
}

std::optional<Error> CloudDocumentsService::movePromisedItem(const Url& source,
                                                             const Url& destination) {
    return store_->movePromisedItem(source, destination);
}

std::optional<Error> CloudDocumentsService::setItemPinned(const Url& url, bool pinned) {
    std::optional<Error> error = store_->setPinned(url, pinned);
    if (!error) {
        NotificationCenter::defaultCenter().post(
            Notifications::DriveItemPinningDidChange,
            {{QStringLiteral("url"), DriveStore::logicalURLFor(url).toQUrl()}});
    }
    return error;
}

bool CloudDocumentsService::isItemPinned(const Url& url) const {
    return store_->isPinned(url);
}

bool CloudDocumentsService::isItemKeptOffline(const Url& url) const {
    return store_->isKeptOffline(url);
}

QSet<QString> CloudDocumentsService::pinnedItemNamesInFolder(const Url& folder) const {
    return store_->pinnedNamesInFolder(folder);
}

QList<Url> CloudDocumentsService::cloudOnlyItemsAtURL(const Url& url) const {
    return store_->cloudOnlyItems(url);
}

quint64 CloudDocumentsService::bytesOnThisDevice() const {
    return store_->localContentSize();
}

}  // namespace vl
