#pragma once

#include "drive/store/DriveStore.h"
#include "platform/cloud/CloudDocuments.h"

#include <memory>

namespace vl {

// The cloud documents service of one drive home, over its DriveStore.
class CloudDocumentsService : public CloudDocuments {
public:
    explicit CloudDocumentsService(std::shared_ptr<DriveStore> store);

    std::optional<Url> driveRootURL() const override;
    bool isDriveItemAtURL(const Url& url) const override;
    std::optional<QString> relativePathForURL(const Url& url) const override;

    QList<CloudContainer> containers() const override;
    std::optional<CloudContainer> containerForItemAtURL(const Url& url,
                                                        Error* error) const override;
    QString defaultContainerIdentifier() const override;
    QString defaultContainerLocalizedName() const override;
    std::optional<Url> defaultContainerURL() const override;
    bool isContainerRootURL(const Url& url) const override;
    bool isAppLibraryDocumentsURL(const Url& url) const override;
    std::optional<Error> deleteAllContentsOfContainer(const CloudContainer& container) override;

    bool hasItemPromiseAtURL(const Url& url) const override;
    std::optional<Url> promisedItemLogicalURL(const Url& placeholderURL,
                                              Error* error) const override;
    Url physicalURL(const Url& url) const override;
    bool checkPromisedItemIsReachable(const Url& url, Error* error) const override;

    std::optional<ItemAttributes> promisedItemResourceValues(const Url& url, ItemAttributeKeys keys,
                                                             Error* error) const override;
    std::optional<ItemAttributes> resourceValues(const Url& url, ItemAttributeKeys keys,
                                                 Error* error) const override;

    bool isExternalDocumentReference(const Url& url) const override;
    std::optional<Url> externalDocumentReferenceTarget(const Url& url, Error* error) const override;

    std::optional<QStringList> tagNames(const Url& url, Error* error) const override;
    std::optional<Error> evictDriveItem(const Url& url) override;
    std::optional<Error> movePromisedItem(const Url& source, const Url& destination) override;

    std::optional<Error> setItemPinned(const Url& url, bool pinned) override;
    bool isItemPinned(const Url& url) const override;
    bool isItemKeptOffline(const Url& url) const override;
    QSet<QString> pinnedItemNamesInFolder(const Url& folder) const override;
    QList<Url> cloudOnlyItemsAtURL(const Url& url) const override;
    quint64 bytesOnThisDevice() const override;

    const std::shared_ptr<DriveStore>& store() const { return store_; }

private:
    bool isSignedIn() const;
    // The items of a folder by their logical URLs (a cloud-only item's, not its placeholder's).
    QList<Url> itemsInFolder(const Url& folder) const;

    const std::shared_ptr<DriveStore> store_;
};

}  // namespace vl
