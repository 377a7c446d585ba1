#pragma once

#include "platform/cloud/CloudContainer.h"
#include "platform/cloud/ItemAttributes.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace vl {

// The cloud documents service: the local root of synced documents, its containers, item
// promises (cloud-only items, known on the device by a placeholder), document references,
// attribute reads, tags, eviction and the promised-item move. Every operation is synchronous and
// safe from any thread; operations that can fail report through `error` (may be null) or return
// an optional Error (nothing on success).
class CloudDocuments {
public:
    virtual ~CloudDocuments() = default;

    // The installed service; asserts that one is installed.
    static CloudDocuments& shared();
    static void setShared(std::shared_ptr<CloudDocuments> service);
    static bool isInstalled();

    // --- The local root of synced documents ---
    // Absent when the drive is unavailable (no account).
    virtual std::optional<Url> driveRootURL() const = 0;
    // True for the root itself and anything below it.
    virtual bool isDriveItemAtURL(const Url& url) const = 0;
    // The path of `url` relative to the root ("" for the root itself, "Work/Letter.odt"); absent
    // for a URL outside it.
    virtual std::optional<QString> relativePathForURL(const Url& url) const = 0;

    // --- Containers ---
    virtual QList<CloudContainer> containers() const = 0;
    // The container that holds the item: the app library whose documents folder holds it, else
    // the default container. An error for a URL outside the drive or when the records can't be
    // read; no error and no container means there is none.
    virtual std::optional<CloudContainer> containerForItemAtURL(const Url& url,
                                                                Error* error) const = 0;
    virtual QString defaultContainerIdentifier() const = 0;
    virtual QString defaultContainerLocalizedName() const = 0;
    // The documents folder of the default container; absent when unavailable.
    virtual std::optional<Url> defaultContainerURL() const = 0;
    // Whether the URL is the top folder of an app library as the drive's root list shows it.
    virtual bool isContainerRootURL(const Url& url) const = 0;
    // Whether the URL is an app library's documents folder (the same folder, in this service).
    virtual bool isAppLibraryDocumentsURL(const Url& url) const = 0;
    // Deletes every item of the container on this device and in the cloud. The container itself
    // (its record and its empty documents folder) stays. The default container is refused.
    virtual std::optional<Error> deleteAllContentsOfContainer(const CloudContainer& container) = 0;

    // --- Promises ---
    // Whether the URL is a promise: the placeholder of a cloud-only item, or the logical URL of
    // an item that exists only as a placeholder.
    virtual bool hasItemPromiseAtURL(const Url& url) const = 0;
    // The logical URL (where the item will be once downloaded) of a placeholder URL.
    virtual std::optional<Url> promisedItemLogicalURL(const Url& placeholderURL,
                                                      Error* error) const = 0;
    // The physical URL behind a URL: the attached one when set, else the placeholder of a
    // cloud-only item, else the URL itself.
    virtual Url physicalURL(const Url& url) const = 0;
    // Whether the item exists, downloaded or not.
    virtual bool checkPromisedItemIsReachable(const Url& url, Error* error) const = 0;

    // --- Attributes ---
    // The attributes of an item whether its content is local or not (a placeholder's record for
    // a cloud-only item). Fails with code 4 when there is no such item.
    virtual std::optional<ItemAttributes> promisedItemResourceValues(const Url& url,
                                                                     ItemAttributeKeys keys,
                                                                     Error* error) const = 0;
    // The attributes of a local item, read from the file system only.
    virtual std::optional<ItemAttributes> resourceValues(const Url& url, ItemAttributeKeys keys,
                                                         Error* error) const = 0;

    // --- Document references ---
    virtual bool isExternalDocumentReference(const Url& url) const = 0;
    // The target of a reference; absent when it can't be read or its target is gone.
    virtual std::optional<Url> externalDocumentReferenceTarget(const Url& url,
                                                               Error* error) const = 0;

    // --- Tags, eviction, move ---
    // The tag names of an item; absent when it has none or they can't be read.
    virtual std::optional<QStringList> tagNames(const Url& url, Error* error) const = 0;
    // Drops the local copy of a downloaded item; it stays in the cloud as a cloud-only item.
    virtual std::optional<Error> evictDriveItem(const Url& url) = 0;
    // Moves an item whether its content is local or not, here and in the cloud.
    virtual std::optional<Error> movePromisedItem(const Url& source, const Url& destination) = 0;

    // --- Keeping items offline ---
    // A pinned item (a file or a folder, local or cloud-only) is kept on the device: the service
    // never evicts it, nor anything inside a pinned folder, when it reclaims space or is asked to
    // evict, and downloads the new content that arrives for it or inside it from other devices.
    // Pinning downloads nothing by itself: the one who pins reads what is cloud-only. Unpinning
    // also unpins everything inside the item. The pin follows moves and goes with the item.
    virtual std::optional<Error> setItemPinned(const Url& url, bool pinned) = 0;
    // Whether the item is pinned itself.
    virtual bool isItemPinned(const Url& url) const = 0;
    // Whether it is pinned itself or lies inside a pinned folder.
    virtual bool isItemKeptOffline(const Url& url) const = 0;
    // The names of the items of a folder that are pinned themselves.
    virtual QSet<QString> pinnedItemNamesInFolder(const Url& folder) const = 0;
    // The cloud-only items at or below the URL, by their logical URLs; a cloud-only folder is
    // one item (one download brings it whole).
    virtual QList<Url> cloudOnlyItemsAtURL(const Url& url) const = 0;
    // How many bytes of the drive's content are on this device. Walks the whole drive: call it
    // off the main thread.
    virtual quint64 bytesOnThisDevice() const = 0;
};

}  // namespace vl
