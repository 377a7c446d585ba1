#include "drive/store/DriveStorePrivate.h"

#include "drive/integrity/CrashPoint.h"
#include "drive/integrity/HomeLock.h"
#include "drive/integrity/ItemTree.h"
#include "drive/integrity/StagingArea.h"
#include "drive/store/RecordFile.h"
#include "logging/VLLogging.h"
#include "platform/files/ContentTypeRegistry.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>

namespace vl {

using namespace storesupport;

namespace {

Error invalidNameError(const QString& path, const QString& reason) {
    return Error(Error::FileErrorDomain, Error::FileWriteInvalidFileName,
                 {{Error::FilePathKey, path}, {Error::LocalizedFailureReasonKey, reason}});
}

QString fromNative(const QByteArray& path) {
    return QString::fromUtf8(path);
}

// Whether `path` is `folder` or inside it.
bool isWithin(const QString& path, const QString& folder) {
    return path == folder || path.startsWith(folder + QLatin1Char('/'));
}

}  // namespace

// --- Items ---

std::optional<QString> DriveStore::stagingPath(Error* error) const {
    return StagingArea::newPath(home_.rootPath(), error);
}

std::optional<Error> DriveStore::discard(const QByteArray& path) const {
    Error error;
    const std::optional<QString> staged = stagingPath(&error);
    if (!staged) {
        return error;
    }
    // Gone from its place at once, whole; removed from the staging area at leisure.
    if (::rename(path.constData(), nativePath(*staged).constData()) != 0) {
        return errno == ENOENT ? std::nullopt
                               : std::optional<Error>(Error::posixError(errno, fromNative(path)));
    }
    CrashPoint::reach();
    ItemTree::remove(nativePath(*staged));
    return std::nullopt;
}

std::optional<Error> DriveStore::installStaged(const QByteArray& staged, const QByteArray& target,
                                               bool mayReplace) const {
    const QString parent = parentPath(fromNative(target));
    if (!QDir().mkpath(parent)) {
        return Error::posixError(EACCES, parent);
    }
    struct stat st;
    if (!mayReplace || ::lstat(target.constData(), &st) != 0) {
        if (::renameat2(AT_FDCWD, staged.constData(), AT_FDCWD, target.constData(),
                        RENAME_NOREPLACE) == 0) {
            return std::nullopt;
        }
        return errno == EEXIST ? Error::fileError(Error::FileWriteFileExists, fromNative(target))
                               : Error::posixError(errno, fromNative(target));
    }
    // One atomic step whatever the kinds: the old item ends up in the staging area.
    if (::renameat2(AT_FDCWD, staged.constData(), AT_FDCWD, target.constData(), RENAME_EXCHANGE) ==
        0) {
        CrashPoint::reach();
        ItemTree::remove(staged);
        return std::nullopt;
    }
    struct stat newStat;
    if (!S_ISDIR(st.st_mode) && ::lstat(staged.constData(), &newStat) == 0 &&
        !S_ISDIR(newStat.st_mode) && ::rename(staged.constData(), target.constData()) == 0) {
        // A file or link is replaced by one rename.
        return std::nullopt;
    }
    // No exchange on this file system: the old item goes aside first, so for a moment there is
    // none (the local item, still there, is what a crash leaves).
    if (std::optional<Error> error = discard(target)) {
        return error;
    }
    if (::rename(staged.constData(), target.constData()) != 0) {
        return Error::posixError(errno, fromNative(target));
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::replaceCloudCopy(const QByteArray& local,
                                                  const QByteArray& cloud) const {
    Error error;
    const std::optional<QString> stagedPath = stagingPath(&error);
    if (!stagedPath) {
        return error;
    }
    const QByteArray staged = nativePath(*stagedPath);
    const QByteArray signature = ItemTree::signature(local);
    std::optional<Error> failure = ItemTree::copy(local, staged);
    // Another writer may have changed the item while it was read: such a copy is never sent.
    if (!failure &&
        (ItemTree::signature(local) != signature || !ItemTree::sameContent(local, staged))) {
        failure = Error::posixError(EAGAIN, fromNative(local));
    }
    if (!failure) {
        failure = installStaged(staged, cloud, true);
    }
    if (failure) {
        ItemTree::remove(staged);
    }
    return failure;
}

std::optional<Error> DriveStore::copyToCloud(const QString& localPath,
                                             const QString& cloudPath) const {
    return uploadTree(nativePath(localPath), nativePath(cloudPath));
}

std::optional<Error> DriveStore::uploadTree(const QByteArray& local,
                                            const QByteArray& cloud) const {
    struct stat st;
    if (::lstat(local.constData(), &st) != 0) {
        return Error::posixError(errno, fromNative(local));
    }
    struct stat cloudStat;
    if (!S_ISDIR(st.st_mode) || ::lstat(cloud.constData(), &cloudStat) != 0 ||
        !S_ISDIR(cloudStat.st_mode)) {
        return replaceCloudCopy(local, cloud);
    }
    // A folder's items are brought up one by one: the cloud copies of its cloud-only items stay.
    DIR* dir = ::opendir(local.constData());
    if (!dir) {
        return Error::posixError(errno, fromNative(local));
    }
    std::vector<QByteArray> names;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != ".." && !ItemTree::isPlaceholder(local, name)) {
            names.push_back(name);
        }
    }
    ::closedir(dir);
    for (const QByteArray& name : names) {
        if (std::optional<Error> error = uploadTree(local + '/' + name, cloud + '/' + name)) {
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
    const QString name = lastComponent(destination);
    if (DriveHome::isReservedName(name)) {
        return invalidNameError(destination, QStringLiteral("The name is kept for placeholders."));
    }
    if (cloudOnly && !DriveHome::canBeCloudOnly(name)) {
        return invalidNameError(destination,
                                QStringLiteral("The name is too long for a cloud-only item."));
    }
    if (isWithin(home_.rootPath(), source) || isWithin(source, home_.rootPath())) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::FilePathKey, source},
                      {Error::LocalizedFailureReasonKey,
                       QStringLiteral("The drive's own folders can't be imported.")}});
    }
    if (!pathExists(source)) {
        return Error::fileError(Error::FileReadNoSuchFile, source);
    }
    HomeLock lock(home_.rootPath());
    const QString cloud = cloudPathFor(driveRelativePath);
    if (pathExists(destination) || pathExists(DriveHome::placeholderPathFor(destination)) ||
        pathExists(cloud)) {
        return Error::fileError(Error::FileWriteFileExists, destination);
    }
    if (!pathExists(parentPath(destination))) {
        return Error::fileError(Error::FileNoSuchFile, parentPath(destination));
    }
    // Both copies are made whole in the staging area, then renamed into place: the cloud copy
    // first, so that a crash leaves at most a cloud copy the recovery pass makes a placeholder for.
    Error error;
    const std::optional<QString> stagedCloud = stagingPath(&error);
    const std::optional<QString> stagedLocal = stagingPath(&error);
    if (!stagedCloud || !stagedLocal) {
        return error;
    }
    const auto cleanUp = [&] {
        ItemTree::remove(nativePath(*stagedCloud));
        ItemTree::remove(nativePath(*stagedLocal));
    };
    std::optional<Error> copyError = ItemTree::copy(nativePath(source), nativePath(*stagedCloud));
    if (!copyError && !cloudOnly) {
        copyError = ItemTree::copy(nativePath(*stagedCloud), nativePath(*stagedLocal));
    }
    if (!copyError) {
        copyError = installStaged(nativePath(*stagedCloud), nativePath(cloud), false);
    }
    if (copyError) {
        cleanUp();
        return copyError;
    }
    CrashPoint::reach();
    if (!cloudOnly) {
        std::optional<Error> installError =
            installStaged(nativePath(*stagedLocal), nativePath(destination), false);
        cleanUp();
        return installError;
    }
    return writePlaceholder(placeholderURLFor(driveURL(driveRelativePath)),
                            placeholderForCloudCopy(driveRelativePath));
}

PlaceholderFile DriveStore::placeholderForCloudCopy(const QString& driveRelativePath) const {
    const QString cloud = cloudPathFor(driveRelativePath);
    PlaceholderFile record;
    record.name = lastComponent(home_.drivePathFor(driveRelativePath));
    const std::optional<ItemAttributes> attributes =
        localItemAttributes(Url::fromPath(cloud), ItemAttributeKeySets::itemModelKeys(), nullptr);
    if (!attributes) {
        return record;
    }
    record.size = attributes->isDirectory.value_or(false)
                      ? quint64(ItemTree::totalSize(nativePath(cloud)))
                      : attributes->fileSize.value_or(0);
    record.contentType = attributes->contentType.value_or(QString());
    record.creationDate = attributes->creationDate.value_or(QDateTime());
    record.modificationDate = attributes->contentModificationDate.value_or(QDateTime());
    record.isDirectory = attributes->isDirectory.value_or(false);
    record.isPackage = attributes->isPackage.value_or(false);
    return record;
}

std::optional<Error> DriveStore::evict(const Url& url) {
    if (isPlaceholderURL(url) || isCloudOnly(url)) {
        return std::nullopt;
    }
    struct stat st;
    if (!lstatPath(url.path(), &st)) {
        return Error::fileError(Error::FileNoSuchFile, url.path());
    }
    if (isKeptOffline(url)) {
        return keptOfflineError(url);
    }
    const QString name = url.lastPathComponent();
    if (S_ISDIR(st.st_mode) && !isPackageDirectoryName(name)) {
        // A folder stays; its items go back to the cloud one by one.
        std::optional<Error> firstFailure;
        const QStringList children =
            QDir(url.path())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const QString& child : children) {
            if (DriveHome::isPlaceholderFileName(child) ||
                isKeptOffline(url.appendingPathComponent(child))) {
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
    if (DriveHome::isReservedName(to.lastPathComponent())) {
        return invalidNameError(to.path(), QStringLiteral("The name is kept for placeholders."));
    }
    HomeLock lock(home_.rootPath());
    if (pathExists(DriveHome::placeholderPathFor(to.path()))) {
        return Error::fileError(Error::FileWriteFileExists, to.path());
    }
    // A cloud copy with no item in the drive is still someone's content (the recovery pass gives
    // it a placeholder): a move never replaces it.
    const std::optional<QString> toRelative = relativePath(to);
    if (toRelative && !toRelative->isEmpty() && pathExists(cloudPathFor(*toRelative))) {
        return Error::fileError(Error::FileWriteFileExists, to.path());
    }
    // The move is written down first, so that the recovery pass finishes one cut short by a crash
    // rather than leave the item's copies under two names.
    const std::optional<QString> journal = beginMove(from, to);
    const struct EndMove {
        const DriveStore& store;
        const std::optional<QString>& journal;
        ~EndMove() {
            if (journal) {
                store.endMove(*journal);
            }
        }
    } endMove{*this, journal};
    CrashPoint::reach();
    // The local item first: the rename itself refuses to replace anything at the destination.
    const int moved = renameNoReplace(from.path(), to.path());
    if (moved == EEXIST) {
        return Error::fileError(Error::FileWriteFileExists, to.path());
    }
    if (moved != 0 && (moved != ENOENT || pathExists(from.path()))) {
        return Error::posixError(moved, to.path());
    }
    if (moved != 0) {
        if (!DriveHome::canBeCloudOnly(to.lastPathComponent())) {
            return invalidNameError(to.path(),
                                    QStringLiteral("The name is too long for a cloud-only item."));
        }
        if (std::optional<Error> error = movePlaceholder(from, to)) {
            return error;
        }
    }
    CrashPoint::reach();
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
    CrashPoint::reach();
    if (std::optional<PlaceholderFile> record = PlaceholderFile::read(toPlaceholder, nullptr)) {
        record->name = to.lastPathComponent();
        writePlaceholder(Url::fromPath(toPlaceholder), *record);
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::removeItem(const Url& url) {
    const Url logical = logicalURLFor(url);
    HomeLock lock(home_.rootPath());
    const bool local = pathExists(logical.path());
    const bool placeholder = pathExists(DriveHome::placeholderPathFor(logical.path()));
    if (!local && !placeholder) {
        return Error::fileError(Error::FileNoSuchFile, logical.path());
    }
    if (local) {
        if (std::optional<Error> error = discard(nativePath(logical.path()))) {
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
                                                  const QString& downloadedPath,
                                                  const QByteArray& cloudVersion) {
    HomeLock lock(home_.rootPath());
    if (pathExists(logicalURL.path())) {
        return Error::fileError(Error::FileWriteFileExists, logicalURL.path());
    }
    const std::optional<QString> cloud = cloudPathForURL(logicalURL);
    if (!cloudVersion.isEmpty() &&
        (!cloud || ItemTree::signature(nativePath(*cloud)) != cloudVersion)) {
        return Error::posixError(EAGAIN, logicalURL.path());
    }
    const Url placeholder = placeholderURLFor(logicalURL);
    const std::optional<PlaceholderFile> record =
        PlaceholderFile::read(placeholder.path(), nullptr);
    if (record) {
        setModificationDate(downloadedPath, record->modificationDate);
    }
    if (const int failure = renameNoReplace(downloadedPath, logicalURL.path())) {
        return failure == EEXIST ? Error::fileError(Error::FileWriteFileExists, logicalURL.path())
                                 : Error::posixError(failure, logicalURL.path());
    }
    // From here until the placeholder goes, a crash leaves both: the recovery pass gives the
    // local item the placeholder's tags and sharing, then removes it.
    CrashPoint::reach();
    if (record) {
        copyPlaceholderMetadata(*record, logicalURL);
    }
    CrashPoint::reach();
    QFile::remove(placeholder.path());
    return std::nullopt;
}

void DriveStore::copyPlaceholderMetadata(const PlaceholderFile& record, const Url& url) {
    if (!record.tags.isEmpty() && tags(url).value_or(QStringList()).isEmpty()) {
        setTags(url, record.tags);
    }
    if (record.isShared && !sharedRole(url)) {
        setSharedRole(url, record.sharedRole == PlaceholderFile::RoleParticipant
                               ? PlaceholderFile::RoleParticipant
                               : PlaceholderFile::RoleOwner);
    }
}

// --- Mirroring ---

std::optional<Error> DriveStore::mirrorLocalChange(const Url& url) {
    const std::optional<QString> relative = relativePath(url);
    if (!relative || relative->isEmpty() || !pathExists(url.path())) {
        return std::nullopt;
    }
    HomeLock lock(home_.rootPath());
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
        HomeLock lock(home_.rootPath());
        moveMetadata(*fromRelative, *toRelative);
        if (pathExists(toCloud)) {
            // Never replaced: it may be the only copy of an item (see movePromisedItem).
            VLLOG(3, "Not moving the cloud copy of %@ onto the cloud copy %@", source, toCloud);
            return Error::fileError(Error::FileWriteFileExists, destination.path());
        }
        if (!pathExists(fromCloud)) {
            // The cloud never had this item (another program wrote it into the drive): a move
            // uploads nothing; its next coordinated change or an eviction does.
            return std::nullopt;
        }
        int failure = renameNoReplace(fromCloud, toCloud);
        if (failure == ENOENT && QDir().mkpath(parentPath(toCloud))) {
            failure = renameNoReplace(fromCloud, toCloud);
        }
        if (failure == 0) {
            // Another process's recovery pass may have taken the cloud copy left behind by a
            // plain rename for a cloud-only item; its placeholder would now stand for nothing.
            const QString placeholder = DriveHome::placeholderPathFor(source.path());
            if (!pathExists(source.path()) &&
                ItemTree::isPlaceholder(nativePath(parentPath(placeholder)),
                                        nativePath(lastComponent(placeholder)))) {
                QFile::remove(placeholder);
            }
            return std::nullopt;
        }
        errno = failure;
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
    HomeLock lock(home_.rootPath());
    const QString placeholder = DriveHome::placeholderPathFor(url.path());
    if (ItemTree::isPlaceholder(nativePath(parentPath(placeholder)),
                                nativePath(lastComponent(placeholder)))) {
        QFile::remove(placeholder);
    }
    removeMetadata(*relative);
    std::optional<Error> error = discard(nativePath(cloudPathFor(*relative)));
    if (error) {
        VLLOG(3, "Failed to remove cloud copy of %@: %@", url, *error);
    }
    return error;
}

}  // namespace vl
