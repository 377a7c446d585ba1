#include "drive/store/DriveStorePrivate.h"

#include "drive/store/RecordFile.h"
#include "drive/store/ThumbnailCache.h"
#include "logging/VLLogging.h"
#include "platform/files/ContentTypeRegistry.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <ctime>

namespace vl {

using namespace storesupport;

// --- Tags and sharing ---

void DriveStore::refreshMetadataLocked(bool mayReuse) const {
    const qint64 now = coarseNow();
    const quint64 writes = metadataWrites.load(std::memory_order_acquire);
    if (mayReuse && metadata_->loadedStamp != -1 && writes == metadata_->writesSeen &&
        now - metadata_->checkedAt < kMetadataRecheckNs) {
        return;
    }
    metadata_->checkedAt = now;
    metadata_->writesSeen = writes;
    struct stat st;
    const qint64 stamp = lstatPath(home_.metadataFile(), &st)
                             ? qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec
                             : -2;
    if (stamp == metadata_->loadedStamp) {
        return;
    }
    metadata_->loadedStamp = stamp;
    metadata_->entries = {};
    if (stamp == -2) {
        return;
    }
    Error error;
    if (std::optional<QJsonObject> object = RecordFile::readObject(home_.metadataFile(), &error)) {
        metadata_->entries = *object;
    } else {
        VLLOG(3, "Failed to read metadata %@: %@", home_.metadataFile(), error);
    }
}

std::optional<Error> DriveStore::saveMetadataLocked() const {
    std::optional<Error> error = RecordFile::writeObject(home_.metadataFile(), metadata_->entries);
    metadata_->writesSeen = metadataWrites.fetch_add(1, std::memory_order_acq_rel) + 1;
    metadata_->checkedAt = coarseNow();
    if (error) {
        VLLOG(3, "Failed to write metadata %@: %@", home_.metadataFile(), *error);
    }
    // Our own write is what the cache holds: don't read it back.
    struct stat st;
    if (lstatPath(home_.metadataFile(), &st)) {
        metadata_->loadedStamp = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    }
    return error;
}

std::optional<QString> DriveStore::readStringAttribute(const QString& path, const char* xattrName,
                                                       const char* metadataKey,
                                                       bool isSymlink) const {
    // User attributes can't be set on symbolic links, so theirs always live in the fallback.
    if (!isSymlink) {
        QByteArray value;
        if (readXattr(nativePath(path), xattrName, &value) == 0) {
            return QString::fromUtf8(value);
        }
        // Without the attribute, the record may hold a value too long for one.
        if (errno != ENODATA && !isUnsupportedXattrError(errno)) {
            return std::nullopt;
        }
    }
    const std::optional<QString> relative = home_.driveRelativePath(path);
    if (!relative) {
        return std::nullopt;
    }
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked();
    const QJsonValue entry =
        metadata_->entries.value(*relative).toObject().value(QLatin1String(metadataKey));
    if (!entry.isString()) {
        return std::nullopt;
    }
    return entry.toString();
}

std::optional<Error> DriveStore::writeStringAttribute(const QString& path, const char* xattrName,
                                                      const char* metadataKey,
                                                      const std::optional<QString>& value) {
    if (xattrName) {
        const QByteArray native = nativePath(path);
        int result;
        if (value) {
            const QByteArray bytes = value->toUtf8();
            result = ::lsetxattr(native.constData(), xattrName, bytes.constData(), bytes.size(), 0);
        } else {
            result = ::lremovexattr(native.constData(), xattrName);
            if (result != 0 && errno == ENODATA) {
                result = 0;
            }
        }
        const bool tooLong = result != 0 && value && (errno == E2BIG || errno == ENOSPC);
        if (result == 0 && !hasMetadataValue(path, metadataKey)) {
            return std::nullopt;
        }
        if (tooLong) {
            // A value longer than the file system keeps in an attribute goes to the record, and
            // no shorter old value is left to hide it.
            ::lremovexattr(native.constData(), xattrName);
        } else if (result != 0 && !isUnsupportedXattrError(errno)) {
            return Error::posixError(errno, path);
        }
        if (result == 0) {
            // The attribute holds it now: an older value in the record goes.
            return writeStringAttribute(path, nullptr, metadataKey, std::nullopt);
        }
    }
    const std::optional<QString> relative = home_.driveRelativePath(path);
    if (!relative) {
        return Error::posixError(ENOTSUP, path);
    }
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked();
    QJsonObject entry = metadata_->entries.value(*relative).toObject();
    if (value) {
        entry.insert(QLatin1String(metadataKey), *value);
    } else {
        entry.remove(QLatin1String(metadataKey));
    }
    if (entry.isEmpty()) {
        metadata_->entries.remove(*relative);
    } else {
        metadata_->entries.insert(*relative, entry);
    }
    return saveMetadataLocked();
}

std::optional<QStringList> DriveStore::tags(const Url& url, Error* error) const {
    const bool placeholderURL = isPlaceholderURL(url);
    if (!placeholderURL) {
        // The xattr read alone settles most local items: they answer with their tags or with
        // ENODATA, as symbolic links (which can't hold user xattrs) do too, so the record is
        // looked at, and the item's kind asked, only when it holds tags for this path.
        QByteArray value;
        if (readXattr(nativePath(url.path()), kTagsAttribute, &value) == 0) {
            return splitTags(QString::fromUtf8(value));
        }
        const int failure = errno;
        if (failure == ENODATA && !hasMetadataValue(url.path(), kTagsKey)) {
            return QStringList();
        }
        struct stat st;
        if (failure != ENOENT && failure != ENOTDIR && lstatPath(url.path(), &st)) {
            const std::optional<QString> value =
                readStringAttribute(url.path(), kTagsAttribute, kTagsKey, S_ISLNK(st.st_mode));
            return value ? splitTags(*value) : QStringList();
        }
    }
    if (placeholderURL || pathExists(DriveHome::placeholderPathFor(url.path()))) {
        const std::optional<PlaceholderFile> record =
            readPlaceholder(placeholderURL ? url : placeholderURLFor(url), error);
        if (!record) {
            return std::nullopt;
        }
        return record->tags;
    }
    if (error) {
        *error = Error::fileError(Error::FileNoSuchFile, url.path());
    }
    return std::nullopt;
}

bool DriveStore::hasMetadataValue(const QString& path, const char* metadataKey) const {
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked(true);
    if (metadata_->entries.isEmpty()) {
        return false;
    }
    const std::optional<QString> relative = home_.driveRelativePath(path);
    return relative &&
           metadata_->entries.value(*relative).toObject().contains(QLatin1String(metadataKey));
}

std::optional<Error> DriveStore::updatePlaceholder(
    const Url& url, const std::function<void(PlaceholderFile&)>& change) {
    const Url placeholder = isPlaceholderURL(url) ? url : placeholderURLFor(url);
    Error error;
    std::optional<PlaceholderFile> record = readPlaceholder(placeholder, &error);
    if (!record) {
        return error;
    }
    change(*record);
    return writePlaceholder(placeholder, *record);
}

std::optional<Error> DriveStore::setTags(const Url& url, const QStringList& tags) {
    if (isPlaceholderURL(url) || isCloudOnly(url)) {
        return updatePlaceholder(url, [&](PlaceholderFile& record) { record.tags = tags; });
    }
    if (!pathExists(url.path())) {
        return Error::fileError(Error::FileNoSuchFile, url.path());
    }
    return writeStringAttribute(
        url.path(), kTagsAttribute, kTagsKey,
        tags.isEmpty() ? std::nullopt : std::optional<QString>(joinTags(tags)));
}

std::optional<QString> DriveStore::sharedRole(const Url& url) const {
    if (isPlaceholderURL(url) || isCloudOnly(url)) {
        const std::optional<PlaceholderFile> record =
            readPlaceholder(isPlaceholderURL(url) ? url : placeholderURLFor(url));
        if (!record || !record->isShared) {
            return std::nullopt;
        }
        return record->sharedRole == PlaceholderFile::RoleParticipant
                   ? PlaceholderFile::RoleParticipant
                   : PlaceholderFile::RoleOwner;
    }
    return sharedRoleOfLocal(url.path());
}

std::optional<QString> DriveStore::sharedRoleOfLocal(const QString& path) const {
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked(true);
    if (metadata_->entries.isEmpty()) {
        return std::nullopt;
    }
    const std::optional<QString> relative = home_.driveRelativePath(path);
    if (!relative) {
        return std::nullopt;
    }
    const QJsonValue value =
        metadata_->entries.value(*relative).toObject().value(QLatin1String(kSharedKey));
    if (value == PlaceholderFile::RoleOwner || value == PlaceholderFile::RoleParticipant) {
        return value.toString();
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::setSharedRole(const Url& url, const std::optional<QString>& role) {
    if (role && *role != PlaceholderFile::RoleOwner && *role != PlaceholderFile::RoleParticipant) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::LocalizedFailureReasonKey, QStringLiteral("Unknown sharing role.")}});
    }
    if (isPlaceholderURL(url) || isCloudOnly(url)) {
        return updatePlaceholder(url, [&](PlaceholderFile& record) {
            record.isShared = role.has_value();
            record.sharedRole = role.value_or(QString());
        });
    }
    if (!pathExists(url.path())) {
        return Error::fileError(Error::FileNoSuchFile, url.path());
    }
    // Sharing lives in metadata.json only, so that reading it costs no system call per item.
    return writeStringAttribute(url.path(), nullptr, kSharedKey, role);
}

void DriveStore::moveMetadata(const QString& fromRelativePath, const QString& toRelativePath) {
    std::lock_guard lock(metadataMutex_);
    const QString prefix = fromRelativePath + QLatin1Char('/');
    // Most items have no entry; a record checked a moment ago says so without looking at the
    // disk. One that has entries is moved on the latest record.
    refreshMetadataLocked(true);
    bool any = false;
    for (auto it = metadata_->entries.constBegin(); it != metadata_->entries.constEnd(); ++it) {
        if (it.key() == fromRelativePath || it.key().startsWith(prefix)) {
            any = true;
            break;
        }
    }
    if (!any) {
        return;
    }
    refreshMetadataLocked();
    bool changed = false;
    for (const QString& key : metadata_->entries.keys()) {
        if (key == fromRelativePath || key.startsWith(prefix)) {
            const QJsonValue value = metadata_->entries.take(key);
            metadata_->entries.insert(toRelativePath + key.mid(fromRelativePath.size()), value);
            changed = true;
        }
    }
    if (changed) {
        saveMetadataLocked();
    }
}

void DriveStore::removeMetadata(const QString& relativePath) {
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked();
    bool changed = false;
    const QString prefix = relativePath + QLatin1Char('/');
    for (const QString& key : metadata_->entries.keys()) {
        if (key == relativePath || key.startsWith(prefix)) {
            metadata_->entries.remove(key);
            changed = true;
        }
    }
    if (changed) {
        saveMetadataLocked();
    }
}

}  // namespace vl
