#pragma once

#include "drive/store/AccountRecord.h"
#include "drive/store/ContainerRecord.h"
#include "drive/store/DriveHome.h"
#include "drive/store/PlaceholderFile.h"
#include "drive/store/ServiceSettings.h"
#include "platform/cloud/ItemAttributes.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vl {

// Everything the drive service keeps on disk for one home (see DriveHome for the layout):
// records, placeholders and promises, attribute reads, document references, tags and sharing,
// eviction, the promised-item move, container deletion and the mirroring of local changes to the
// cloud copy. The cloud documents service, the account, the key-value store, the coordinator and
// velloractl all work through it.
//
// Thread-safe: the file system is the state, except the metadata fallback (guarded by
// metadataMutex_). Every record and copy it writes is made whole in the staging area (or beside a
// record outside drive/ and cloud/) and renamed into place; changes that touch the cloud copy and
// the drive together hold the home lock. Unreadable records give an error or an absent answer and
// are logged; they are kept aside, never replaced.
class DriveStore {
public:
    // Error code for a record that exists but can't be parsed (the general file domain's "corrupt
    // file" code).
    static constexpr int FileReadCorruptFile = 259;

    explicit DriveStore(DriveHome home);
    ~DriveStore();

    const DriveHome& home() const { return home_; }
    // Creates the home's folders and, when there is none, the default container record, then
    // runs the recovery pass.
    std::optional<Error> prepare();
    // Makes what a crash left reachable again: sweeps the staging folders of processes that are
    // gone, gives every cloud copy without an item in the drive a placeholder, removes
    // placeholders with neither a cloud copy nor anything of their own, and merges a placeholder
    // beside its local item into it. Answers how many items it repaired.
    int recover();

    // --- Paths ---
    std::optional<QString> relativePath(const Url& url) const;  // relative to drive/
    Url driveURL(const QString& driveRelativePath, bool isDirectory = false) const;
    Url driveRootURL() const;
    QString cloudPathFor(const QString& driveRelativePath) const;
    // The cloud copy of a drive item (logical or placeholder URL); absent outside the drive.
    std::optional<QString> cloudPathForURL(const Url& url) const;

    // --- Account ---
    // Absent when signed out; absent with an error when account.json is unreadable.
    std::optional<AccountRecord> readAccount(Error* error = nullptr) const;
    std::optional<Error> writeAccount(const AccountRecord& account);
    std::optional<Error> removeAccount();

    // --- Service settings ---
    ServiceSettings readServiceSettings() const;
    std::optional<Error> writeServiceSettings(const ServiceSettings& settings);

    // --- Containers ---
    // Every readable record, the default one first, then by identifier; unreadable records are
    // logged and skipped.
    QList<ContainerRecord> containerRecords() const;
    std::optional<ContainerRecord> containerRecord(const QString& identifier,
                                                   Error* error = nullptr) const;
    std::optional<ContainerRecord> defaultContainerRecord(Error* error = nullptr) const;
    // Writes the record and makes its folders under drive/ and cloud/. Refuses a second default
    // container and a folder another container uses.
    std::optional<Error> addContainer(const ContainerRecord& record);
    // The container that holds a drive item: the app library whose folder holds it, else the
    // default container.
    std::optional<ContainerRecord> containerRecordForURL(const Url& url, Error* error) const;
    // Whether a directory with this name is a package: its extension is one that a container
    // record declares for a package document type.
    bool isPackageDirectoryName(const QString& name) const;
    // The app library whose documents folder is exactly `url`.
    std::optional<ContainerRecord> appLibraryAtURL(const Url& url) const;
    // Removes every item of the container here and in the cloud, keeping its empty folders.
    std::optional<Error> deleteContainerContents(const QString& identifier);

    // --- Key-value store ---
    // Empty with an error when kvstore.json is malformed; empty without one when missing.
    QVariantMap readKeyValueStore(Error* error = nullptr) const;
    std::optional<Error> writeKeyValueStore(const QVariantMap& values);

    // --- Placeholders and promises ---
    static bool isPlaceholderURL(const Url& url);
    static Url placeholderURLFor(const Url& logicalURL);
    // The logical URL of a placeholder URL; any other URL as it is.
    static Url logicalURLFor(const Url& url);
    std::optional<PlaceholderFile> readPlaceholder(const Url& placeholderURL,
                                                   Error* error = nullptr) const;
    std::optional<Error> writePlaceholder(const Url& placeholderURL,
                                          const PlaceholderFile& record) const;
    // True for a placeholder URL, and for a logical URL with no local item but a placeholder.
    bool hasItemPromise(const Url& url) const;
    // True when the item at the logical URL exists only as a placeholder.
    bool isCloudOnly(const Url& logicalURL) const;
    std::optional<Url> logicalURLOfPlaceholder(const Url& placeholderURL, Error* error) const;
    // The attached physical URL, else the placeholder of a cloud-only item, else `url`.
    Url physicalURLOf(const Url& url) const;
    // Whether the item exists, local or cloud-only (logical or placeholder URL).
    bool isReachable(const Url& url, Error* error) const;

    // --- Attributes ---
    // Placeholder URLs and the logical URLs of cloud-only items are described from the
    // placeholder; local items from the file system.
    std::optional<ItemAttributes> promisedItemAttributes(const Url& url, ItemAttributeKeys keys,
                                                         Error* error) const;
    std::optional<ItemAttributes> localItemAttributes(const Url& url, ItemAttributeKeys keys,
                                                      Error* error) const;

    // --- Document references ---
    static bool isDocumentReferenceURL(const Url& url);
    // The target's logical URL; absent when the reference is unreadable or the target is gone.
    std::optional<Url> documentReferenceTarget(const Url& referenceURL, Error* error) const;
    std::optional<Error> writeDocumentReference(const Url& referenceURL,
                                                const QString& targetDriveRelativePath) const;

    // --- Tags and sharing (local items: tags in xattrs, else metadata.json, sharing in
    // metadata.json; cloud-only: placeholder) ---
    std::optional<QStringList> tags(const Url& url, Error* error = nullptr) const;
    std::optional<Error> setTags(const Url& url, const QStringList& tags);
    // "owner", "participant" or absent (not shared).
    std::optional<QString> sharedRole(const Url& url) const;
    std::optional<Error> setSharedRole(const Url& url, const std::optional<QString>& role);

    // --- Pinning: items kept offline (DriveStorePinning.cpp) ---
    // The item's own pin, kept in metadata.json under its drive-relative path whether its content
    // is local or not, so that a download or an eviction leaves it alone and moves carry it.
    bool isPinned(const Url& url) const;
    // Pinned itself, or inside a pinned folder.
    bool isKeptOffline(const Url& url) const;
    // Unpinning also unpins everything inside the item: what is left of it may go to the cloud.
    std::optional<Error> setPinned(const Url& url, bool pinned);
    // The items pinned themselves, drive-relative, sorted.
    QStringList pinnedItems() const;
    // The names of the items of `folder` pinned themselves.
    QSet<QString> pinnedNamesInFolder(const Url& folder) const;
    // The bytes of content on this device: every local file of the drive (placeholders and
    // document references not counted).
    quint64 localContentSize() const;
    // The cloud-only items at or below `url` (their logical URLs): a cloud-only folder counts as
    // one item, since one download brings it whole.
    QList<Url> cloudOnlyItems(const Url& url) const;
    // Space reclaiming, as a device running out of storage does it: evicts downloaded items that
    // are not kept offline, least recently used first, until `bytes` are freed (0: all of them).
    // Answers the bytes freed; `evicted` gets the items evicted.
    quint64 reclaimSpace(quint64 bytes, QList<Url>* evicted = nullptr);
    // The error that refuses to evict an item kept offline (the file domain's "unsupported").
    static Error keptOfflineError(const Url& url);

    // --- Items ---
    // Copies a file or folder into the drive at `driveRelativePath` and into the cloud copy;
    // with cloudOnly, only a placeholder is made locally. An existing item is never replaced.
    std::optional<Error> importItem(const QString& sourcePath, const QString& driveRelativePath,
                                    bool cloudOnly);
    // Replaces a downloaded local item with a placeholder; its content stays in the cloud copy
    // (brought up to date first; refused with 4355 while the network is off). A cloud-only item
    // is left alone; an item kept offline is refused, and inside a folder passed over.
    std::optional<Error> evict(const Url& url);
    // Moves an item, local or cloud-only, and its cloud copy; tags and sharing follow it.
    std::optional<Error> movePromisedItem(const Url& source, const Url& destination);
    // The moves movePromisedItem made on the calling thread since the last call (the latest few),
    // as (source, destination) in the order made. A coordinated write that announced one of them
    // knows it happened, cloud copy included, without looking at the disk again.
    static std::vector<std::pair<Url, Url>> takeMovesMadeOnThisThread();
    // Removes an item, local or cloud-only, and its cloud copy.
    std::optional<Error> removeItem(const Url& url);

    // --- Downloads (used by the coordinator) ---
    // The cloud content of a cloud-only item.
    std::optional<QString> cloudContentPath(const Url& logicalURL, Error* error) const;
    // Puts a downloaded copy in place: renames `downloadedPath` to the logical URL, gives it the
    // placeholder's dates, tags and sharing, and removes the placeholder. With a cloud version
    // (ItemTree::signature of the cloud copy when the copy started), fails with EAGAIN when the
    // cloud copy is no longer that version.
    std::optional<Error> completeDownload(const Url& logicalURL, const QString& downloadedPath,
                                          const QByteArray& cloudVersion = {});

    // --- Mirroring of local changes to the cloud copy ---
    // The content of a local item (file or folder) is copied to its cloud path.
    std::optional<Error> mirrorLocalChange(const Url& url);
    std::optional<Error> mirrorLocalMove(const Url& source, const Url& destination);
    std::optional<Error> mirrorLocalDeletion(const Url& url);

    // --- Metadata fallback bookkeeping (moves and deletions made outside this class) ---
    void moveMetadata(const QString& fromRelativePath, const QString& toRelativePath);
    void removeMetadata(const QString& relativePath);

private:
    // Reads the placeholder of a cloud-only item (by its logical or placeholder URL), applies the
    // change and writes it back.
    std::optional<Error> updatePlaceholder(const Url& url,
                                           const std::function<void(PlaceholderFile&)>& change);
    struct Metadata;
    struct Caches;

    // Reads the record into metadata_ when metadata.json changed; caller holds metadataMutex_.
    // A read-only caller may pass mayReuse: then a record checked moments ago, with no write by
    // this process since, is trusted without another stat (per-item attribute reads stay at one
    // statx; another process's change shows within kMetadataRecheckNs).
    void refreshMetadataLocked(bool mayReuse = false) const;
    std::optional<Error> saveMetadataLocked() const;
    std::optional<QString> readStringAttribute(const QString& path, const char* xattrName,
                                               const char* metadataKey, bool isSymlink) const;
    std::optional<QString> sharedRoleOfLocal(const QString& path) const;
    // Whether the record holds that key for the item at path (a recently checked record will do).
    bool hasMetadataValue(const QString& path, const char* metadataKey) const;
    // With no xattrName the value goes to metadata.json only.
    std::optional<Error> writeStringAttribute(const QString& path, const char* xattrName,
                                              const char* metadataKey,
                                              const std::optional<QString>& value);
    // Brings the declared package types up to date; answers their generation.
    quint64 refreshPackageTypes() const;
    void describeType(const QString& name, bool isDirectory, ItemAttributes& attributes,
                      ItemAttributeKeys keys) const;
    std::optional<ItemAttributes> placeholderAttributes(const Url& logicalURL,
                                                        const QString& placeholderPath,
                                                        ItemAttributeKeys keys, Error* error) const;
    // Brings the cloud copy up to the local item: a file or a new folder is copied whole, an
    // existing folder item by item (its cloud-only items' copies stay).
    std::optional<Error> copyToCloud(const QString& localPath, const QString& cloudPath) const;
    std::optional<Error> uploadTree(const QByteArray& local, const QByteArray& cloud) const;
    // Replaces the cloud copy with a copy of the local item made whole in the staging area and
    // checked against the item; fails (EAGAIN) when the item changed while it was copied.
    std::optional<Error> replaceCloudCopy(const QByteArray& local, const QByteArray& cloud) const;
    // Renames a staged item into place; with mayReplace the old one is exchanged out atomically.
    std::optional<Error> installStaged(const QByteArray& staged, const QByteArray& target,
                                       bool mayReplace) const;
    // Removes an item by renaming it into the staging area first, so it goes all at once.
    std::optional<Error> discard(const QByteArray& path) const;
    std::optional<QString> stagingPath(Error* error) const;
    PlaceholderFile placeholderForCloudCopy(const QString& driveRelativePath) const;
    // Gives a local item the tags and sharing of its placeholder where it has none of its own.
    void copyPlaceholderMetadata(const PlaceholderFile& record, const Url& url);
    int recoverFolder(const QString& relative);
    // Writes down a move about to be made in <home>/journal/; answers the entry's path.
    std::optional<QString> beginMove(const Url& from, const Url& to) const;
    // Marks the entry beginMove wrote as ended.
    void endMove(const QString& journal) const;
    // Finishes the moves written down and never ended (a crash cut them short).
    int finishMoves();
    // The cloud-only half of movePromisedItem: renames the placeholder of from.
    std::optional<Error> movePlaceholder(const Url& from, const Url& to);
    std::optional<Error> evictFile(const QString& path);

    DriveHome home_;
    mutable std::mutex metadataMutex_;
    std::unique_ptr<Metadata> metadata_;  // guarded by metadataMutex_
    std::unique_ptr<Caches> caches_;      // has its own lock
};

}  // namespace vl
