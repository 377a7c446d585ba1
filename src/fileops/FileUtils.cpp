#include "fileops/FileUtils.h"

#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/FileCoordinator.h"

#include <QDateTime>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace vl {

namespace {

// stat(2) of a path: false when nothing is there (a dangling link counts as nothing).
bool statPath(const QString& path, struct stat* st) {
    const QByteArray encoded = QFile::encodeName(path);
    return ::stat(encoded.constData(), st) == 0;
}

Error unsupportedError() {
    return Error(Error::FileErrorDomain, Error::FeatureUnsupported);
}

}  // namespace

bool FileUtils::exists(const Url& url) {
    struct stat st {};
    return !url.isEmpty() && statPath(url.path(), &st);
}

bool FileUtils::isFile(const Url& url) {
    struct stat st {};
    return !url.isEmpty() && statPath(url.path(), &st) && !S_ISDIR(st.st_mode);
}

bool FileUtils::isDir(const Url& url) {
    struct stat st {};
    return !url.isEmpty() && statPath(url.path(), &st) && S_ISDIR(st.st_mode);
}

std::optional<Error> FileUtils::mkdir(const Url& url) {
    VLLOG(7, "Creating directory: '%@'", url);
    std::optional<Error> coordinatorError;
    std::optional<Error> accessorError;
    FileCoordinator coordinator;
    coordinator.coordinateWritingItemAtURL(
        url, FileCoordinator::WritingOption::ForReplacing, &coordinatorError,
        [&](const Url& newURL) {
            std::error_code code;
            std::filesystem::create_directories(
                std::filesystem::path(QFile::encodeName(newURL.path()).toStdString()), code);
            if (!code) {
                VLLOG(6, "Created directory: '%@'", newURL);
            } else {
                accessorError = Error::posixError(code.value(), newURL.path());
                VLLOG(3, "failed to create directory:'%@': %@", newURL, *accessorError);
            }
        });
    const std::optional<Error> result = coordinatorError ? coordinatorError : accessorError;
    VLLOG(7, "Coordinated Write returned %@", result);
    return result;
}

std::optional<Error> FileUtils::remove(const Url& url) {
    VLLOG(7, "Removing item: '%@'", url);
    std::optional<Error> coordinatorError;
    std::optional<Error> accessorError;
    FileCoordinator coordinator;
    coordinator.coordinateWritingItemAtURL(
        url, FileCoordinator::WritingOption::ForDeleting, &coordinatorError,
        [&](const Url& newURL) {
            const std::filesystem::path path(QFile::encodeName(newURL.path()).toStdString());
            std::error_code code;
            // Removing nothing is a failure, as it is for the platform's file manager.
            if (!std::filesystem::exists(std::filesystem::symlink_status(path, code))) {
                code = std::make_error_code(std::errc::no_such_file_or_directory);
            } else {
                std::filesystem::remove_all(path, code);
            }
            if (!code) {
                VLLOG(6, "Deleted item: '%@'", newURL);
            } else {
                accessorError = Error::posixError(code.value(), newURL.path());
                VLLOG(3, "failed to delete item:'%@': %@", newURL, *accessorError);
            }
        });
    const std::optional<Error> result = coordinatorError ? coordinatorError : accessorError;
    VLLOG(6, "Coordinated Write returned %@", result);
    return result;
}

std::optional<Error> FileUtils::moveTo(const Url& source, const Url& destination) {
    VLLOG(7, "Moving src1:  '%@'", source);
    VLLOG(7, "Moving dest1: '%@'", destination);
    if (source.path() == destination.path()) {
        VLLOG(7, "Move: src and dest are the same");
        return std::nullopt;
    }
    struct stat sourceStat {};
    const bool sourceExists = !source.isEmpty() && statPath(source.path(), &sourceStat);
    if (!sourceExists) {
        VLLOG(6, "Move: source filename does not exist, must be a fault.");
    }
    struct stat destinationStat {};
    const bool destinationExists =
        !destination.isEmpty() && statPath(destination.path(), &destinationStat);
    const bool sourceIsDir = sourceExists && S_ISDIR(sourceStat.st_mode);
    const bool destinationIsDir = destinationExists && S_ISDIR(destinationStat.st_mode);
    if (sourceExists && !sourceIsDir && destinationIsDir) {
        VLLOG(3, "Move: must move a file to a file (dest is a dir)");
        return unsupportedError();
    }
    if (sourceIsDir && destinationExists && !destinationIsDir) {
        VLLOG(3, "Move: must move a dir to a dir (dest is a file)");
        return unsupportedError();
    }
    // A cloud-only item at the destination is only a placeholder on disk, but it is there.
    const bool destinationIsCloudOnly = !destinationExists && !destination.isEmpty() &&
                                        CloudDocuments::isInstalled() &&
                                        CloudDocuments::shared().hasItemPromiseAtURL(destination);
    Url target = destination;
    if (destinationExists || destinationIsCloudOnly) {
        target = generateUniquePath(destination);
        VLLOG(7, "Avail  dest1: '%@'", target);
    }

    std::optional<Error> coordinatorError;
    std::optional<Error> accessorError;
    FileCoordinator coordinator;
    coordinator.coordinateWritingItemAtURL(
        source, FileCoordinator::WritingOption::ForMoving, target,
        FileCoordinator::WritingOption::ForReplacing, &coordinatorError,
        [&](const Url& newSource, const Url& newDestination) {
            coordinator.itemAtURLWillMoveToURL(newSource, newDestination);
            VLLOG(7, "Moving src2:  '%@'", newSource);
            VLLOG(7, "Moving dest2: '%@'", newDestination);
            accessorError = CloudDocuments::shared().movePromisedItem(newSource, newDestination);
            if (!accessorError) {
                VLLOG(6, "Move successful");
            } else {
                VLLOG(4, "SV Move failed: %@", *accessorError);
            }
        });
    const std::optional<Error> result = coordinatorError ? coordinatorError : accessorError;
    if (result) {
        VLLOG(4, "Move failed: %@", *result);
    }
    return result;
}

Url FileUtils::generateUniquePath(const Url& url) {
    const Url folder = url.deletingLastPathComponent();
    const std::optional<QString> name =
        stringByUniquingPathInsideDirectoryForBasename(folder.path(), url.lastPathComponent());
    return folder.appendingPathComponent(name.value_or(url.lastPathComponent()),
                                         url.hasDirectoryPath());
}

std::optional<QString> FileUtils::stringByUniquingPathInsideDirectoryForBasename(
    const QString& directory, const QString& basename) {
    const Url folder = Url::fromPath(directory, true);
    const Url named = folder.appendingPathComponent(basename);
    // A cloud-only item holds its name as surely as a local one does.
    const auto taken = [](const Url& url) {
        return exists(url) ||
               (CloudDocuments::isInstalled() && CloudDocuments::shared().hasItemPromiseAtURL(url));
    };
    if (!taken(named)) {
        return std::nullopt;
    }
    const QString extension = named.pathExtension();
    const QString dottedExtension =
        extension.isEmpty() ? QString() : QStringLiteral(".") + extension;
    const QString stem = named.deletingPathExtension().lastPathComponent();
    for (int n = 2;; ++n) {
        const QString candidate = format("%@ %d%@", stem, n, dottedExtension);
        if (!taken(folder.appendingPathComponent(candidate))) {
            return candidate;
        }
    }
}

void FileUtils::evictDocument(const Url& url) {
    if (std::optional<Error> error = CloudDocuments::shared().evictDriveItem(url)) {
        VLLOG(4, "Evict error: %@", *error);
    }
}

QVariant FileUtils::getResourceValueForURL(ItemAttributeKey key, const Url& url) {
    if (url.isEmpty()) {
        return {};
    }
    CloudDocuments& documents = CloudDocuments::shared();
    if (std::optional<ItemAttributes> promised =
            documents.promisedItemResourceValues(url, key, nullptr)) {
        QVariant value = promised->value(key);
        if (value.isValid()) {
            return value;
        }
    }
    if (std::optional<ItemAttributes> plain = documents.resourceValues(url, key, nullptr)) {
        return plain->value(key);
    }
    return {};
}

void FileUtils::logFileAttributes(const QString& path) {
    struct statx st {};
    const QByteArray encoded = QFile::encodeName(path);
    if (path.isEmpty() ||
        ::statx(AT_FDCWD, encoded.constData(), 0, STATX_BASIC_STATS | STATX_BTIME, &st) != 0) {
        const Error error = Error::posixError(path.isEmpty() ? ENOENT : errno, path);
        VLLOG(3, "Cannot get attributes of %@: %@", path, error.localizedDescription());
        return;
    }
    const auto toDate = [](const struct statx_timestamp& time) {
        return QDateTime::fromMSecsSinceEpoch(qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000,
                                              Qt::UTC);
    };
    // A file system that records no birth time gives the modification time as the creation date.
    const QDateTime created = toDate((st.stx_mask & STATX_BTIME) ? st.stx_btime : st.stx_mtime);
    const QDateTime modified = toDate(st.stx_mtime);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    VLLOG(7, "Date Created: %@ (%lf seconds ago)", created, created.msecsTo(now) / 1000.0);
    VLLOG(7, "Date Modified: %@ (%lf seconds ago)", modified, modified.msecsTo(now) / 1000.0);
    VLLOG(7, "Size: %@ bytes", quint64(st.stx_size));
}

}  // namespace vl
