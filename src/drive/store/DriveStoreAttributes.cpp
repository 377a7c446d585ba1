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

// --- Placeholders and promises ---

bool DriveStore::isPlaceholderURL(const Url& url) {
    return DriveHome::isPlaceholderFileName(url.lastPathComponentView());
}

Url DriveStore::placeholderURLFor(const Url& logicalURL) {
    return Url::fromPath(DriveHome::placeholderPathFor(logicalURL.path()));
}

Url DriveStore::logicalURLFor(const Url& url) {
    if (const auto name = DriveHome::logicalNameOfPlaceholder(url.lastPathComponent())) {
        return url.deletingLastPathComponent().appendingPathComponent(*name);
    }
    return url;
}

std::optional<PlaceholderFile> DriveStore::readPlaceholder(const Url& placeholderURL,
                                                           Error* error) const {
    Error readError;
    std::optional<PlaceholderFile> record =
        PlaceholderFile::read(placeholderURL.path(), &readError);
    if (!record) {
        if (readError.code() != Error::FileReadNoSuchFile) {
            VLLOG(3, "Failed to read placeholder %@: %@", placeholderURL, readError);
        }
        if (error) {
            *error = readError;
        }
    }
    return record;
}

std::optional<Error> DriveStore::writePlaceholder(const Url& placeholderURL,
                                                  const PlaceholderFile& record) const {
    // The temporary file is made in the staging area: nothing but placeholders lives in drive/.
    Error error;
    const std::optional<QString> temporary = stagingPath(&error);
    if (!temporary) {
        return error;
    }
    return RecordFile::writeObject(placeholderURL.path(), record.toJson(), *temporary);
}

bool DriveStore::hasItemPromise(const Url& url) const {
    if (url.isEmpty()) {
        return false;
    }
    if (isPlaceholderURL(url)) {
        return pathExists(url.path());
    }
    return isCloudOnly(url);
}

bool DriveStore::isCloudOnly(const Url& logicalURL) const {
    return !pathExists(logicalURL.path()) &&
           pathExists(DriveHome::placeholderPathFor(logicalURL.path()));
}

std::optional<Url> DriveStore::logicalURLOfPlaceholder(const Url& placeholderURL,
                                                       Error* error) const {
    const std::optional<QString> name =
        DriveHome::logicalNameOfPlaceholder(placeholderURL.lastPathComponent());
    if (!name || !pathExists(placeholderURL.path())) {
        if (error) {
            *error = Error::fileError(Error::FileNoSuchFile, placeholderURL.path());
        }
        return std::nullopt;
    }
    return placeholderURL.deletingLastPathComponent().appendingPathComponent(*name);
}

Url DriveStore::physicalURLOf(const Url& url) const {
    if (std::optional<Url> attached = url.promisedPhysicalURL()) {
        return *attached;
    }
    if (!isPlaceholderURL(url) && isCloudOnly(url)) {
        return placeholderURLFor(url);
    }
    return url;
}

bool DriveStore::isReachable(const Url& url, Error* error) const {
    if (!url.isEmpty() &&
        (pathExists(url.path()) ||
         (!isPlaceholderURL(url) && pathExists(DriveHome::placeholderPathFor(url.path()))))) {
        return true;
    }
    if (error) {
        *error = Error::fileError(Error::FileReadNoSuchFile, url.path());
    }
    return false;
}

// --- Attributes ---

quint64 DriveStore::refreshPackageTypes() const {
    const qint64 now = coarseNow();
    {
        std::lock_guard lock(caches_->mutex);
        if (caches_->packagesCheckedAt >= 0 &&
            now - caches_->packagesCheckedAt < kMetadataRecheckNs) {
            return caches_->packagesGeneration;
        }
    }
    QHash<QString, Caches::TypeInfo> packages;
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    for (const ContainerRecord& record : containerRecords()) {
        for (const CloudContainer::DocumentType& type : record.documentTypes) {
            if (!type.isPackage || type.contentTypes.isEmpty()) {
                continue;
            }
            Caches::TypeInfo info{type.contentTypes.first(), {}, true};
            info.description = registry.localizedDescription(info.contentType);
            if (info.description.isEmpty()) {
                // An app's own type is unknown to the system: its declared name describes it.
                info.description = type.name;
            }
            QStringList extensions = type.extensions;
            if (extensions.isEmpty()) {
                for (const QString& contentType : type.contentTypes) {
                    extensions += registry.extensions(contentType);
                }
            }
            for (const QString& extension : extensions) {
                // The first container to declare an extension keeps it.
                if (!packages.contains(extension.toLower())) {
                    packages.insert(extension.toLower(), info);
                }
            }
        }
    }
    std::lock_guard lock(caches_->mutex);
    caches_->packagesCheckedAt = now;
    if (packages != caches_->packages) {
        caches_->packages = std::move(packages);
        ++caches_->packagesGeneration;
    }
    return caches_->packagesGeneration;
}

bool DriveStore::isPackageDirectoryName(const QString& name) const {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0) {
        return false;
    }
    refreshPackageTypes();
    std::lock_guard lock(caches_->mutex);
    return caches_->packages.contains(name.mid(dot + 1).toLower());
}

void DriveStore::describeType(const QString& name, bool isDirectory, ItemAttributes& attributes,
                              ItemAttributeKeys keys) const {
    if (!(keys & (ItemAttributeKey::ContentType | ItemAttributeKey::LocalizedTypeDescription |
                  ItemAttributeKey::IsPackage))) {
        return;
    }
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QStringView extension = dot > 0 ? QStringView(name).mid(dot + 1) : QStringView();
    // A directory's type depends on the declared package types, so it is looked up again when
    // they change.
    const quint64 packages = isDirectory ? refreshPackageTypes() : 0;
    // A folder's items mostly share a few extensions: the last answer on this thread is
    // usually the one, without building a key or taking the lock.
    struct LastType {
        quint64 caches = 0;
        quint64 packages = 0;
        bool isDirectory = false;
        QString extension;
        Caches::TypeInfo info;
    };
    thread_local LastType last;
    if (last.caches != caches_->id || last.packages != packages ||
        last.isDirectory != isDirectory ||
        extension.compare(last.extension, Qt::CaseInsensitive) != 0) {
        last = {caches_->id, packages, isDirectory, extension.toString().toLower(), {}};
        const QString key =
            isDirectory ? QStringLiteral("d:") : QStringLiteral("f:") + last.extension;
        bool cached = false;
        {
            std::lock_guard lock(caches_->mutex);
            if (isDirectory) {
                auto package = caches_->packages.constFind(last.extension);
                if (package != caches_->packages.constEnd()) {
                    last.info = *package;
                    cached = true;
                }
            }
            if (!cached) {
                auto found = caches_->types.constFind(key);
                if (found != caches_->types.constEnd()) {
                    last.info = *found;
                    cached = true;
                }
            }
        }
        if (!cached) {
            const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
            // The type depends on the extension only, so one sample name stands for all.
            const QString sample = last.extension.isEmpty()
                                       ? QStringLiteral("item")
                                       : QStringLiteral("item.") + last.extension;
            last.info.contentType = registry.identifierForFileName(sample, isDirectory);
            last.info.description = registry.localizedDescription(last.info.contentType);
            std::lock_guard lock(caches_->mutex);
            caches_->types.insert(key, last.info);
        }
    }
    const Caches::TypeInfo& info = last.info;
    if (keys & ItemAttributeKey::ContentType) {
        attributes.contentType = info.contentType;
    }
    if (keys & ItemAttributeKey::LocalizedTypeDescription) {
        attributes.localizedTypeDescription = info.description;
    }
    if (keys & ItemAttributeKey::IsPackage) {
        attributes.isPackage = info.isPackage;
    }
}

std::optional<ItemAttributes> DriveStore::localItemAttributes(const Url& url,
                                                              ItemAttributeKeys keys,
                                                              Error* error) const {
    struct statx st;
    if (url.isEmpty() || ::statx(AT_FDCWD, nativePath(url.path()).constData(), AT_SYMLINK_NOFOLLOW,
                                 STATX_BASIC_STATS | STATX_BTIME, &st) != 0) {
        if (error) {
            *error = (url.isEmpty() || errno == ENOENT || errno == ENOTDIR)
                         ? Error::fileError(Error::FileNoSuchFile, url.path())
                         : Error::posixError(errno, url.path());
        }
        return std::nullopt;
    }
    ItemAttributes attributes;
    const QString name = url.lastPathComponent();
    const bool isDirectory = S_ISDIR(st.stx_mode);
    if (keys & ItemAttributeKey::Name) {
        attributes.name = name;
    }
    if (keys & ItemAttributeKey::LocalizedName) {
        // Linux shows every name in full: no hidden extensions.
        attributes.localizedName = name;
    }
    describeType(name, isDirectory, attributes, keys);
    if ((keys & ItemAttributeKey::FileSize) && !isDirectory) {
        attributes.fileSize = st.stx_size;
    }
    if (keys & ItemAttributeKey::CreationDate) {
        attributes.creationDate = dateOf((st.stx_mask & STATX_BTIME) ? st.stx_btime : st.stx_mtime);
    }
    if (keys & ItemAttributeKey::ContentModificationDate) {
        attributes.contentModificationDate = dateOf(st.stx_mtime);
    }
    if (keys & ItemAttributeKey::IsDirectory) {
        attributes.isDirectory = isDirectory;
    }
    if (keys & ItemAttributeKey::HasHiddenExtension) {
        attributes.hasHiddenExtension = false;
    }
    if (keys & ItemAttributeKey::ParentDirectoryURL) {
        attributes.parentDirectoryURL = url.deletingLastPathComponent();
    }
    const bool inDrive = relativePath(url).has_value();
    if (inDrive && (keys & (ItemAttributeKey::IsShared | ItemAttributeKey::SharedRole))) {
        const std::optional<QString> role = sharedRoleOfLocal(url.path());
        if (keys & ItemAttributeKey::IsShared) {
            attributes.isShared = role.has_value();
        }
        if ((keys & ItemAttributeKey::SharedRole) && role) {
            attributes.sharedRole = *role == PlaceholderFile::RoleParticipant
                                        ? SharedItemRole::Participant
                                        : SharedItemRole::Owner;
        }
    }
    if (inDrive && (keys & ItemAttributeKey::DownloadingStatus)) {
        attributes.downloadingStatus = DownloadingStatus::Current;
    }
    if (keys & ItemAttributeKey::ThumbnailDictionary) {
        attributes.thumbnailDictionary = ThumbnailCache::thumbnailDictionary(url.path());
    }
    return attributes;
}

std::optional<ItemAttributes> DriveStore::placeholderAttributes(const Url& logicalURL,
                                                                const QString& placeholderPath,
                                                                ItemAttributeKeys keys,
                                                                Error* error) const {
    const std::optional<PlaceholderFile> record =
        readPlaceholder(Url::fromPath(placeholderPath), error);
    if (!record) {
        return std::nullopt;
    }
    ItemAttributes attributes;
    const QString name = logicalURL.lastPathComponent();
    if (keys & ItemAttributeKey::Name) {
        attributes.name = name;
    }
    if (keys & ItemAttributeKey::LocalizedName) {
        attributes.localizedName = name;
    }
    describeType(name, record->isDirectory || record->isPackage, attributes, keys);
    if ((keys & ItemAttributeKey::ContentType) && !record->contentType.isEmpty()) {
        attributes.contentType = record->contentType;
        if (keys & ItemAttributeKey::LocalizedTypeDescription) {
            attributes.localizedTypeDescription =
                ContentTypeRegistry::shared().localizedDescription(record->contentType);
        }
    }
    if (keys & ItemAttributeKey::IsPackage) {
        attributes.isPackage = record->isPackage;
    }
    if ((keys & ItemAttributeKey::FileSize) && (!record->isDirectory || record->isPackage)) {
        attributes.fileSize = record->size;
    }
    if ((keys & ItemAttributeKey::CreationDate) && record->creationDate.isValid()) {
        attributes.creationDate = record->creationDate;
    }
    if ((keys & ItemAttributeKey::ContentModificationDate) && record->modificationDate.isValid()) {
        attributes.contentModificationDate = record->modificationDate;
    }
    if (keys & ItemAttributeKey::IsDirectory) {
        attributes.isDirectory = record->isDirectory || record->isPackage;
    }
    if (keys & ItemAttributeKey::HasHiddenExtension) {
        attributes.hasHiddenExtension = false;
    }
    if (keys & ItemAttributeKey::ParentDirectoryURL) {
        attributes.parentDirectoryURL = logicalURL.deletingLastPathComponent();
    }
    if (keys & ItemAttributeKey::IsShared) {
        attributes.isShared = record->isShared;
    }
    if ((keys & ItemAttributeKey::SharedRole) && record->isShared) {
        attributes.sharedRole = record->sharedRole == PlaceholderFile::RoleParticipant
                                    ? SharedItemRole::Participant
                                    : SharedItemRole::Owner;
    }
    if (keys & ItemAttributeKey::DownloadingStatus) {
        attributes.downloadingStatus = DownloadingStatus::NotDownloaded;
    }
    if (keys & ItemAttributeKey::ThumbnailDictionary) {
        // The cloud has the content, so it can make the thumbnail the way a server would.
        if (const std::optional<QString> cloud = cloudPathForURL(logicalURL)) {
            attributes.thumbnailDictionary = ThumbnailCache::thumbnailDictionary(*cloud);
        }
    }
    return attributes;
}

std::optional<ItemAttributes> DriveStore::promisedItemAttributes(const Url& url,
                                                                 ItemAttributeKeys keys,
                                                                 Error* error) const {
    if (url.isEmpty()) {
        if (error) {
            *error = Error::fileError(Error::FileNoSuchFile);
        }
        return std::nullopt;
    }
    if (isPlaceholderURL(url)) {
        return placeholderAttributes(logicalURLFor(url), url.path(), keys, error);
    }
    Error localError;
    if (std::optional<ItemAttributes> local = localItemAttributes(url, keys, &localError)) {
        return local;
    }
    if (localError.code() == Error::FileNoSuchFile &&
        localError.domain() == Error::FileErrorDomain) {
        const QString placeholder = DriveHome::placeholderPathFor(url.path());
        if (pathExists(placeholder)) {
            return placeholderAttributes(url, placeholder, keys, error);
        }
    }
    if (error) {
        *error = localError;
    }
    return std::nullopt;
}

// --- Document references ---

bool DriveStore::isDocumentReferenceURL(const Url& url) {
    const QStringView name = url.lastPathComponentView();
    const QStringView extension = DriveHome::ReferenceExtension;
    // As the URL's path extension: after a dot that does not start the name.
    return name.size() > extension.size() + 1 && name.endsWith(extension) &&
           name.at(name.size() - extension.size() - 1) == QLatin1Char('.');
}

std::optional<Url> DriveStore::documentReferenceTarget(const Url& referenceURL,
                                                       Error* error) const {
    Error readError;
    const std::optional<QJsonObject> object =
        RecordFile::readObject(referenceURL.path(), &readError);
    if (!object) {
        VLLOG(4, "Failed to read document reference %@: %@", referenceURL, readError);
        if (error) {
            *error = readError;
        }
        return std::nullopt;
    }
    const QString target = object->value(QLatin1String("target")).toString();
    const QStringList parts = target.split(QLatin1Char('/'));
    if (target.isEmpty() || target.startsWith(QLatin1Char('/')) ||
        parts.contains(QStringLiteral("..")) || parts.contains(QStringLiteral("."))) {
        if (error) {
            *error = RecordFile::corruptFileError(referenceURL.path(),
                                                  QStringLiteral("invalid reference target"));
        }
        return std::nullopt;
    }
    const Url targetURL = driveURL(target);
    if (!isReachable(targetURL, error)) {
        return std::nullopt;
    }
    return targetURL;
}

std::optional<Error> DriveStore::writeDocumentReference(
    const Url& referenceURL, const QString& targetDriveRelativePath) const {
    QJsonObject object;
    object.insert(QLatin1String("target"), targetDriveRelativePath);
    // Made in the staging area, so a crash leaves no temporary file beside it in the drive.
    Error error;
    const std::optional<QString> temporary = stagingPath(&error);
    if (!temporary) {
        return error;
    }
    return RecordFile::writeObject(referenceURL.path(), object, *temporary);
}

}  // namespace vl
