#include "drive/store/DriveStorePrivate.h"

#include "drive/integrity/CrashPoint.h"
#include "drive/integrity/HomeLock.h"
#include "drive/integrity/ItemTree.h"
#include "logging/VLLogging.h"

#include <QFile>

#include <sys/stat.h>
#include <cerrno>

namespace vl {

using namespace storesupport;

// Eviction removes the local item only once the cloud copy is confirmed to hold the same content,
// byte for byte, and the item has not changed since it was compared. The whole of it runs under
// the home lock, so a remote change or another eviction never interleaves with it.
std::optional<Error> DriveStore::evictFile(const QString& path) {
    const Url url = Url::fromPath(path);
    const std::optional<QString> relative = home_.driveRelativePath(path);
    if (!relative || relative->isEmpty()) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::FilePathKey, path},
                      {Error::LocalizedFailureReasonKey,
                       QStringLiteral("Only items of the drive can be evicted.")}});
    }
    const QString name = lastComponent(path);
    if (!DriveHome::canBeCloudOnly(name)) {
        return Error(Error::FileErrorDomain, Error::FileWriteInvalidFileName,
                     {{Error::FilePathKey, path},
                      {Error::LocalizedFailureReasonKey,
                       QStringLiteral("The name is too long for a cloud-only item.")}});
    }
    HomeLock lock(home_.rootPath());
    const QString placeholderPath = DriveHome::placeholderPathFor(path);
    const QByteArray local = nativePath(path);
    if (pathExists(placeholderPath) &&
        !ItemTree::isPlaceholder(nativePath(parentPath(placeholderPath)),
                                 nativePath(lastComponent(placeholderPath)))) {
        // A file of someone else's holds the placeholder's name: it is never replaced.
        return Error::fileError(Error::FileWriteFileExists, placeholderPath);
    }
    Error error;
    const std::optional<ItemAttributes> attributes =
        localItemAttributes(url, ItemAttributeKeySets::itemModelKeys(), &error);
    if (!attributes) {
        return error;
    }
    const QByteArray cloud = nativePath(cloudPathFor(*relative));
    const QByteArray signature = ItemTree::signature(local);
    if (!ItemTree::sameContent(local, cloud)) {
        if (readServiceSettings().network == ServiceSettings::NetworkNone) {
            // The only copy of these changes is here: without a network it stays.
            VLLOG(4, "Not evicting %@: its changes can't reach the cloud offline", url);
            return Error(Error::FileErrorDomain, Error::CloudServerUnavailable,
                         {{Error::FilePathKey, path},
                          {Error::LocalizedFailureReasonKey,
                           QStringLiteral("Its changes are not in the cloud yet.")}});
        }
        if (std::optional<Error> copyError = replaceCloudCopy(local, cloud)) {
            VLLOG(3, "Not evicting %@: the cloud copy could not be updated: %@", url, *copyError);
            return copyError;
        }
    }
    CrashPoint::reach();
    if (ItemTree::signature(local) != signature || !ItemTree::sameContent(local, cloud)) {
        VLLOG(3, "Not evicting %@: it changed while its cloud copy was brought up to date", url);
        return Error::posixError(EAGAIN, path);
    }
    PlaceholderFile record;
    record.name = url.lastPathComponent();
    record.size = attributes->isDirectory.value_or(false) ? quint64(ItemTree::totalSize(local))
                                                          : attributes->fileSize.value_or(0);
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
    // Until the local item goes, a crash leaves it beside its placeholder: the recovery pass keeps
    // the local item, which the cloud copy matches.
    if (ItemTree::signature(local) != signature) {
        QFile::remove(placeholderPath);
        return Error::posixError(EAGAIN, path);
    }
    if (std::optional<Error> removeError = discard(local)) {
        QFile::remove(placeholderPath);
        return removeError;
    }
    removeMetadata(*relative);
    return std::nullopt;
}

}  // namespace vl
