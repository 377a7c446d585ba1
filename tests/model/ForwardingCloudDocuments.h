#pragma once

#include "drive/service/CloudDocumentsService.h"
#include "drive/service/DriveService.h"
#include "platform/cloud/CloudDocuments.h"

#include <atomic>
#include <functional>
#include <memory>

namespace vl::test {

// The installed cloud documents service with one thing changed: the container lookup can be
// replaced (to fail, or to answer a record the drive can't hold), and attribute reads are
// counted.
class ForwardingCloudDocuments : public CloudDocuments {
public:
    using ContainerLookup =
        std::function<std::optional<CloudContainer>(const Url& url, Error* error)>;

    // Installs itself in front of the drive service installed last.
    static std::shared_ptr<ForwardingCloudDocuments> install(ContainerLookup lookup = {}) {
        auto fake = std::make_shared<ForwardingCloudDocuments>();
        fake->lookup_ = std::move(lookup);
        fake->real_ = installedService();
        CloudDocuments::setShared(fake);
        return fake;
    }
    // The service behind CloudDocuments::shared() as a shared pointer.
    static std::shared_ptr<CloudDocuments> installedService() {
        return DriveService::current()->documents();
    }

    int attributeReads() const { return attributeReads_; }

    std::optional<Url> driveRootURL() const override { return real_->driveRootURL(); }
    bool isDriveItemAtURL(const Url& url) const override { return real_->isDriveItemAtURL(url); }
    std::optional<QString> relativePathForURL(const Url& url) const override {
        return real_->relativePathForURL(url);
    }
    QList<CloudContainer> containers() const override { return real_->containers(); }
    std::optional<CloudContainer> containerForItemAtURL(const Url& url,
                                                        Error* error) const override {
        return lookup_ ? lookup_(url, error) : real_->containerForItemAtURL(url, error);
    }
    QString defaultContainerIdentifier() const override {
        return real_->defaultContainerIdentifier();
    }
    QString defaultContainerLocalizedName() const override {
        return real_->defaultContainerLocalizedName();
    }
    std::optional<Url> defaultContainerURL() const override { return real_->defaultContainerURL(); }
    bool isContainerRootURL(const Url& url) const override {
        return real_->isContainerRootURL(url);
    }
    bool isAppLibraryDocumentsURL(const Url& url) const override {
        return real_->isAppLibraryDocumentsURL(url);
    }
    std::optional<Error> deleteAllContentsOfContainer(const CloudContainer& container) override {
        return real_->deleteAllContentsOfContainer(container);
    }
    bool hasItemPromiseAtURL(const Url& url) const override {
        return real_->hasItemPromiseAtURL(url);
    }
    std::optional<Url> promisedItemLogicalURL(const Url& url, Error* error) const override {
        return real_->promisedItemLogicalURL(url, error);
    }
    Url physicalURL(const Url& url) const override { return real_->physicalURL(url); }
    bool checkPromisedItemIsReachable(const Url& url, Error* error) const override {
        return real_->checkPromisedItemIsReachable(url, error);
    }
    std::optional<ItemAttributes> promisedItemResourceValues(const Url& url, ItemAttributeKeys keys,
                                                             Error* error) const override {
        ++attributeReads_;
        return real_->promisedItemResourceValues(url, keys, error);
    }
    std::optional<ItemAttributes> resourceValues(const Url& url, ItemAttributeKeys keys,
                                                 Error* error) const override {
        ++attributeReads_;
        return real_->resourceValues(url, keys, error);
    }
    bool isExternalDocumentReference(const Url& url) const override {
        return real_->isExternalDocumentReference(url);
    }
    std::optional<Url> externalDocumentReferenceTarget(const Url& url,
                                                       Error* error) const override {
        return real_->externalDocumentReferenceTarget(url, error);
    }
    std::optional<QStringList> tagNames(const Url& url, Error* error) const override {
        return real_->tagNames(url, error);
    }
    std::optional<Error> evictDriveItem(const Url& url) override {
        return real_->evictDriveItem(url);
    }
    std::optional<Error> movePromisedItem(const Url& source, const Url& destination) override {
        return real_->movePromisedItem(source, destination);
    }
    std::optional<Error> setItemPinned(const Url& url, bool pinned) override {
        return real_->setItemPinned(url, pinned);
    }
    bool isItemPinned(const Url& url) const override { return real_->isItemPinned(url); }
    bool isItemKeptOffline(const Url& url) const override { return real_->isItemKeptOffline(url); }
    QSet<QString> pinnedItemNamesInFolder(const Url& folder) const override {
        return real_->pinnedItemNamesInFolder(folder);
    }
    QList<Url> cloudOnlyItemsAtURL(const Url& url) const override {
        return real_->cloudOnlyItemsAtURL(url);
    }
    quint64 bytesOnThisDevice() const override { return real_->bytesOnThisDevice(); }

private:
    std::shared_ptr<CloudDocuments> real_;
    ContainerLookup lookup_;
    mutable std::atomic<int> attributeReads_{0};
};

}  // namespace vl::test
