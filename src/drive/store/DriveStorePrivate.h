#pragma once

#include "drive/store/DriveStore.h"
#include "drive/store/DriveStoreSupport.h"

#include <QHash>
#include <QJsonObject>

#include <mutex>

namespace vl {

// The record of local items' sharing (and of tags where user xattrs are refused), keyed by
// drive-relative path, mirrored from metadata.json whenever that file's modification time
// changes (another process wrote it).
struct DriveStore::Metadata {
    QJsonObject entries;
    qint64 loadedStamp = -1;  // metadata.json's mtime in ns when read; -1 = never, -2 = missing
    qint64 checkedAt = 0;     // coarse monotonic ns of the last look at metadata.json
    quint64 writesSeen = 0;   // metadataWrites at that look
};

// Caches of what is dear to compute per item and rarely changes. Guarded by `mutex`.
struct DriveStore::Caches {
    struct TypeInfo {
        QString contentType;
        QString description;
        bool isPackage = false;
        bool operator==(const TypeInfo&) const = default;
    };
    // Tells this store's caches from those of a store that lived at the same address before.
    const quint64 id = storesupport::nextCachesId.fetch_add(1) + 1;
    std::mutex mutex;
    QHash<QString, TypeInfo> types;  // key: "d:" or "f:" + lower-case extension
    QList<ContainerRecord> containers;
    qint64 containersStamp = -1;  // containers/ mtime in ns
    // The package types the container records declare, by lower-case extension. Looked at again
    // at most every kMetadataRecheckNs (-1: at the next read); the generation changes with them.
    QHash<QString, TypeInfo> packages;
    qint64 packagesCheckedAt = -1;
    quint64 packagesGeneration = 0;
};

}  // namespace vl
