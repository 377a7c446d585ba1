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

// --- Items ---

std::optional<Error> DriveStore::copyToCloud(const QString& localPath,
                                             const QString& cloudPath) const {
    struct stat st;
    if (!lstatPath(localPath, &st)) {
        return Error::posixError(errno, localPath);
    }
    if (!QDir().mkpath(parentPath(cloudPath))) {
        return Error::posixError(EACCES, parentPath(cloudPath));
    }
    if (!S_ISDIR(st.st_mode)) {
        struct stat cloudStat;
        if (lstatPath(cloudPath, &cloudStat) && S_ISDIR(cloudStat.st_mode)) {
            removeRecursively(cloudPath);
        }
        std::optional<Error> error = copyFileAtomically(localPath, cloudPath);
        if (!error) {
            setModificationDate(
                cloudPath,
                QDateTime::fromMSecsSinceEpoch(
                    qint64(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1000000, Qt::UTC));
        }
        return error;
    }
    if (!QDir().mkpath(cloudPath)) {
        return Error::posixError(EACCES, cloudPath);
    }
    const QStringList children = QDir(localPath).entryList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot);
    for (const QString& child : children) {
        // Placeholders stand for content the cloud already has; downloads are unfinished.
        if (DriveHome::isServiceFileName(child)) {
            continue;
        }
        if (std::optional<Error> error = copyToCloud(localPath + QLatin1Char('/') + child,
                                                     cloudPath + QLatin1Char('/') + child)) {
            return error;
        }
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::importItem(const QString& sourcePath,
                                            const QString& driveRelativePath, bool cloudOnly) {
    const QString source = QFileInfo(sourcePath).absoluteFilePath();
    const QString destination = home_.drivePathFor(driveRelativePath);
    if (driveRelativePath.isEmpty()) {
        return Error::fileError(Error::FileWriteInvalidFileName, destination);
    }
    if (!pathExists(source)) {
        return Error::fileError(Error::FileReadNoSuchFile, source);
    }
    if (pathExists(destination) || pathExists(DriveHome::placeholderPathFor(destination))) {
        return Error::fileError(Error::FileWriteFileExists, destination);
    }
    if (!pathExists(parentPath(destination))) {
        return Error::fileError(Error::FileNoSuchFile, parentPath(destination));
    }
    if (std::optional<Error> error = copyToCloud(source, cloudPathFor(driveRelativePath))) {
        return error;
    }
    const Url destinationURL = driveURL(driveRelativePath);
    if (!cloudOnly) {
        if (QFileInfo(source).isDir()) {
            return copyToCloud(cloudPathFor(driveRelativePath), destination);
        }
        return copyFileAtomically(cloudPathFor(driveRelativePath), destination);
    }
    // A cloud-only item is described by the cloud copy's attributes.
    std::optional<ItemAttributes> attributes =
        localItemAttributes(Url::fromPath(cloudPathFor(driveRelativePath)),
                            ItemAttributeKeySets::itemModelKeys(), nullptr);
    if (!attributes) {
        return Error::fileError(Error::FileReadNoSuchFile, source);
    }
    PlaceholderFile record;
    record.name = destinationURL.lastPathComponent();
    record.size = attributes->fileSize.value_or(0);
    if (attributes->isDirectory.value_or(false)) {
        quint64 total = 0;
        QDirIterator it(cloudPathFor(driveRelativePath), QDir::Files | QDir::Hidden,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            total += quint64(it.fileInfo().size());
        }
        record.size = total;
    }
    record.contentType = attributes->contentType.value_or(QString());
    record.creationDate = attributes->creationDate.value_or(QDateTime());
    record.modificationDate = attributes->contentModificationDate.value_or(QDateTime());
    record.isDirectory = attributes->isDirectory.value_or(false);
    record.isPackage = attributes->isPackage.value_or(false);
    return writePlaceholder(placeholderURLFor(destinationURL), record);
}

std::optional<Error> DriveStore::evictFile(const QString& path) {
    const Url url = Url::fromPath(path);
    const std::optional<QString> relative = home_.driveRelativePath(path);
    if (!relative || relative->isEmpty()) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::FilePathKey, path},
                      {Error::LocalizedFailureReasonKey,
                       QStringLiteral("Only items of the drive can be evicted.")}});
    }
    Error error;
    const std::optional<ItemAttributes> attributes =
        localItemAttributes(url, ItemAttributeKeySets::itemModelKeys(), &error);
    if (!attributes) {
        return error;
    }
    // The cloud copy must hold this content before the local one goes.
    const QString cloud = cloudPathFor(*relative);
    struct stat localStat;
    struct stat cloudStat;
    lstatPath(path, &localStat);
    const bool upToDate = !S_ISDIR(localStat.st_mode) && lstatPath(cloud, &cloudStat) &&
                          cloudStat.st_size == localStat.st_size &&
                          cloudStat.st_mtim.tv_sec == localStat.st_mtim.tv_sec;
    if (!upToDate) {
        if (std::optional<Error> copyError = copyToCloud(path, cloud)) {
            VLLOG(3, "Not evicting %@: the cloud copy could not be updated: %@", url, *copyError);
            return copyError;
        }
    }
    PlaceholderFile record;
    record.name = url.lastPathComponent();
    record.size = attributes->fileSize.value_or(0);
    record.contentType = attributes->contentType.value_or(QString());
    record.creationDate = attributes->creationDate.value_or(QDateTime());
    record.modificationDate = attributes->contentModificationDate.value_or(QDateTime());
    record.isDirectory = attributes->isDirectory.value_or(false);
    record.isPackage = attributes->isPackage.value_or(false);
    record.isShared = attributes->isShared.value_or(false);
    if (const std::optional<QString> role = sharedRole(url)) {
        record.sharedRole = *role;
    }
    record.tags = tags(url).value_or(QStringList());
    if (std::optional<Error> writeError = writePlaceholder(placeholderURLFor(url), record)) {
        return writeError;
    }
    if (std::optional<Error> removeError = removeRecursively(path)) {
        QFile::remove(DriveHome::placeholderPathFor(path));
        return removeError;
    }
    removeMetadata(*relative);
    return std::nullopt;
}

std::optional<Error> DriveStore::evict(const Url& url) {
    if (isPlaceholderURL(url) || isCloudOnly(url)) {
        return std::nullopt;
    }
    struct stat st;
    if (!lstatPath(url.path(), &st)) {
        return Error::fileError(Error::FileNoSuchFile, url.path());
    }
    const QString name = url.lastPathComponent();
    if (S_ISDIR(st.st_mode) && !ContentTypeRegistry::shared().isPackageName(name)) {
        // A folder stays; its items go back to the cloud one by one.
        std::optional<Error> firstFailure;
        const QStringList children =
            QDir(url.path())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const QString& child : children) {
            if (DriveHome::isServiceFileName(child)) {
                continue;
            }
            if (std::optional<Error> error = evict(url.appendingPathComponent(child))) {
                if (!firstFailure) {
                    firstFailure = error;
                }
            }
        }
        return firstFailure;
    }
    return evictFile(url.path());
}

std::optional<Error> DriveStore::movePromisedItem(const Url& source, const Url& destination) {
    Url from = source;
    if (isPlaceholderURL(source)) {
        if (auto name = DriveHome::logicalNameOfPlaceholder(source.lastPathComponent())) {
            from = source.deletingLastPathComponent().appendingPathComponent(*name);
        }
    }
    Url to = destination;
    if (isPlaceholderURL(destination)) {
        if (auto name = DriveHome::logicalNameOfPlaceholder(destination.lastPathComponent())) {
            to = destination.deletingLastPathComponent().appendingPathComponent(*name);
        }
    }
    if (from.isEmpty() || to.isEmpty()) {
        return Error::fileError(Error::FileNoSuchFile, from.path());
    }
    if (from == to) {
        return std::nullopt;
    }
    if (from.isAncestorOf(to)) {
        return Error::posixError(EINVAL, to.path());
    }
    if (pathExists(DriveHome::placeholderPathFor(to.path()))) {
        return Error::fileError(Error::FileWriteFileExists, to.path());
    }
    // The local item first: the rename itself refuses to replace anything at the destination.
    const int moved = renameNoReplace(from.path(), to.path());
    if (moved == EEXIST) {
        return Error::fileError(Error::FileWriteFileExists, to.path());
    }
    if (moved != 0 && (moved != ENOENT || pathExists(from.path()))) {
        return Error::posixError(moved, to.path());
    }
    if (moved != 0) {
        if (std::optional<Error> error = movePlaceholder(from, to)) {
            return error;
        }
    }
    std::optional<Error> mirrorError = mirrorLocalMove(from, to);
    if (!mirrorError) {
        // Only the latest few: a caller outside any coordinated write never takes them.
        if (movesMadeOnThisThread.size() == MaxMovesKept) {
            movesMadeOnThisThread.erase(movesMadeOnThisThread.begin());
        }
        movesMadeOnThisThread.emplace_back(source, destination);
    }
    return mirrorError;
}

std::vector<std::pair<Url, Url>> DriveStore::takeMovesMadeOnThisThread() {
    return std::exchange(movesMadeOnThisThread, {});
}

std::optional<Error> DriveStore::movePlaceholder(const Url& from, const Url& to) {
    const QString fromPlaceholder = DriveHome::placeholderPathFor(from.path());
    if (!pathExists(fromPlaceholder)) {
        return Error::fileError(Error::FileNoSuchFile, from.path());
    }
    if (!relativePath(to)) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::FilePathKey, to.path()},
                      {Error::LocalizedFailureReasonKey,
                       QStringLiteral("A cloud-only item can't leave the drive.")}});
    }
    if (pathExists(to.path())) {
        return Error::fileError(Error::FileWriteFileExists, to.path());
    }
    const QString toPlaceholder = DriveHome::placeholderPathFor(to.path());
    if (const int failure = renameNoReplace(fromPlaceholder, toPlaceholder)) {
        return failure == EEXIST ? Error::fileError(Error::FileWriteFileExists, to.path())
                                 : Error::posixError(failure, to.path());
    }
    if (std::optional<PlaceholderFile> record = PlaceholderFile::read(toPlaceholder, nullptr)) {
        record->name = to.lastPathComponent();
        record->write(toPlaceholder);
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::removeItem(const Url& url) {
    const Url logical = logicalURLFor(url);
    const bool local = pathExists(logical.path());
    const bool placeholder = pathExists(DriveHome::placeholderPathFor(logical.path()));
    if (!local && !placeholder) {
        return Error::fileError(Error::FileNoSuchFile, logical.path());
    }
    if (local) {
        if (std::optional<Error> error = removeRecursively(logical.path())) {
            return error;
        }
    }
    return mirrorLocalDeletion(logical);
}

// --- Downloads ---

std::optional<QString> DriveStore::cloudContentPath(const Url& logicalURL, Error* error) const {
    const std::optional<QString> cloud = cloudPathForURL(logicalURL);
    if (!cloud || !pathExists(*cloud)) {
        if (error) {
            *error = Error(Error::FileErrorDomain, Error::CloudServerUnavailable,
                           {{Error::FilePathKey, logicalURL.path()}});
        }
        return std::nullopt;
    }
    return cloud;
}

std::optional<Error> DriveStore::completeDownload(const Url& logicalURL,
                                                  const QString& downloadedPath) {
    if (pathExists(logicalURL.path())) {
        return Error::fileError(Error::FileWriteFileExists, logicalURL.path());
    }
    const Url placeholder = placeholderURLFor(logicalURL);
    const std::optional<PlaceholderFile> record =
        PlaceholderFile::read(placeholder.path(), nullptr);
    if (record) {
        setModificationDate(downloadedPath, record->modificationDate);
    }
    if (::rename(nativePath(downloadedPath).constData(),
                 nativePath(logicalURL.path()).constData()) != 0) {
        return Error::posixError(errno, logicalURL.path());
    }
    if (record) {
        if (!record->tags.isEmpty()) {
            setTags(logicalURL, record->tags);
        }
        if (record->isShared) {
            setSharedRole(logicalURL, record->sharedRole == PlaceholderFile::RoleParticipant
                                          ? PlaceholderFile::RoleParticipant
                                          : PlaceholderFile::RoleOwner);
        }
    }
    QFile::remove(placeholder.path());
    return std::nullopt;
}

// --- Mirroring ---

std::optional<Error> DriveStore::mirrorLocalChange(const Url& url) {
    const std::optional<QString> relative = relativePath(url);
    if (!relative || relative->isEmpty() || !pathExists(url.path())) {
        return std::nullopt;
    }
    std::optional<Error> error = copyToCloud(url.path(), cloudPathFor(*relative));
    if (error) {
        VLLOG(3, "Failed to mirror %@ to the cloud: %@", url, *error);
    }
    return error;
}

std::optional<Error> DriveStore::mirrorLocalMove(const Url& source, const Url& destination) {
    const std::optional<QString> fromRelative = relativePath(source);
    const std::optional<QString> toRelative = relativePath(destination);
    if (fromRelative && toRelative) {
        const QString fromCloud = cloudPathFor(*fromRelative);
        const QString toCloud = cloudPathFor(*toRelative);
        moveMetadata(*fromRelative, *toRelative);
        if (pathExists(toCloud)) {
            // Only an item that is no longer in the drive leaves a cloud copy behind.
            VLLOG(4, "Replacing stale cloud copy %@", toCloud);
            removeRecursively(toCloud);
        }
        if (!pathExists(fromCloud)) {
            // The cloud never had this item (another program wrote it into the drive): a move
            // uploads nothing; its next coordinated change or an eviction does.
            return std::nullopt;
        }
        const QByteArray cloudTarget = nativePath(toCloud);
        if (::rename(nativePath(fromCloud).constData(), cloudTarget.constData()) == 0) {
            return std::nullopt;
        }
        if (errno == ENOENT && QDir().mkpath(parentPath(toCloud)) &&
            ::rename(nativePath(fromCloud).constData(), cloudTarget.constData()) == 0) {
            return std::nullopt;
        }
        VLLOG(3, "Failed to move cloud copy %@ to %@: %@", fromCloud, toCloud,
              Error::posixError(errno, toCloud));
        return mirrorLocalChange(destination);
    }
    if (fromRelative) {
        return mirrorLocalDeletion(source);
    }
    if (toRelative) {
        return mirrorLocalChange(destination);
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::mirrorLocalDeletion(const Url& url) {
    const std::optional<QString> relative = relativePath(url);
    if (!relative || relative->isEmpty()) {
        return std::nullopt;
    }
    QFile::remove(DriveHome::placeholderPathFor(url.path()));
    removeMetadata(*relative);
    std::optional<Error> error = removeRecursively(cloudPathFor(*relative));
    if (error) {
        VLLOG(3, "Failed to remove cloud copy of %@: %@", url, *error);
    }
    return error;
}

}  // namespace vl
