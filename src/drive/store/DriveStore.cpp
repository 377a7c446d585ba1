#include "drive/store/DriveStorePrivate.h"

#include "drive/integrity/CrashPoint.h"
#include "drive/integrity/HomeLock.h"
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

#include <dirent.h>
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

namespace {

// The names in a folder, as the file system spells them; none when it can't be read.
std::vector<QByteArray> childNames(const QByteArray& folder) {
    std::vector<QByteArray> names;
    if (DIR* dir = ::opendir(folder.constData())) {
        while (const dirent* entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..") {
                names.push_back(name);
            }
        }
        ::closedir(dir);
    }
    return names;
}

}  // namespace

DriveStore::DriveStore(DriveHome home)
    : home_(std::move(home)),
      metadata_(std::make_unique<Metadata>()),
      caches_(std::make_unique<Caches>()) {}

DriveStore::~DriveStore() = default;

std::optional<Error> DriveStore::prepare() {
    if (!home_.ensureLayout()) {
        Error error = Error::posixError(EACCES, home_.rootPath());
        VLLOG(3, "Failed to create drive home %@: %@", home_.rootPath(), error);
        return error;
    }
    if (!defaultContainerRecord()) {
        ContainerRecord record;
        record.identifier = QStringLiteral("com.tessaly.VelloraDrive");
        record.localizedName = QStringLiteral("Vellora Drive");
        record.folderLevels = CloudContainer::FolderLevelsAny;
        record.isDefault = true;
        record.documentTypes.append(
            {ContentTypeRegistry::Data, {ContentTypeRegistry::Data}, false, {}});
        if (std::optional<Error> error = addContainer(record)) {
            return error;
        }
    }
    recover();
    return std::nullopt;
}

// --- Paths ---

std::optional<QString> DriveStore::relativePath(const Url& url) const {
    return home_.driveRelativePath(url.path());
}

Url DriveStore::driveURL(const QString& driveRelativePath, bool isDirectory) const {
    return Url::fromPath(home_.drivePathFor(driveRelativePath), isDirectory);
}

Url DriveStore::driveRootURL() const {
    return Url::fromPath(home_.driveDir(), true);
}

QString DriveStore::cloudPathFor(const QString& driveRelativePath) const {
    return home_.cloudPathFor(driveRelativePath);
}

std::optional<QString> DriveStore::cloudPathForURL(const Url& url) const {
    const Url logical = logicalURLFor(url);
    const std::optional<QString> relative = relativePath(logical);
    if (!relative) {
        return std::nullopt;
    }
    return cloudPathFor(*relative);
}

// --- Account and settings ---

std::optional<AccountRecord> DriveStore::readAccount(Error* error) const {
    Error readError;
    std::optional<AccountRecord> account = AccountRecord::read(home_.accountFile(), &readError);
    if (!account && readError.code() != 0) {
        VLLOG(3, "Failed to read account %@: %@", home_.accountFile(), readError);
        if (error) {
            *error = readError;
        }
    }
    return account;
}

std::optional<Error> DriveStore::writeAccount(const AccountRecord& account) {
    return account.write(home_.accountFile());
}

std::optional<Error> DriveStore::removeAccount() {
    if (::unlink(nativePath(home_.accountFile()).constData()) != 0 && errno != ENOENT) {
        return Error::posixError(errno, home_.accountFile());
    }
    return std::nullopt;
}

ServiceSettings DriveStore::readServiceSettings() const {
    Error error;
    ServiceSettings settings = ServiceSettings::read(home_.serviceFile(), &error);
    if (error.code() != 0) {
        VLLOG(4, "Failed to read service settings %@: %@", home_.serviceFile(), error);
    }
    return settings;
}

std::optional<Error> DriveStore::writeServiceSettings(const ServiceSettings& settings) {
    return settings.write(home_.serviceFile());
}

// --- Containers ---

QList<ContainerRecord> DriveStore::containerRecords() const {
    struct stat st;
    const qint64 stamp = lstatPath(home_.containersDir(), &st)
                             ? qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec
                             : -2;
    {
        std::lock_guard lock(caches_->mutex);
        if (stamp == caches_->containersStamp && stamp != -2) {
            return caches_->containers;
        }
    }
    QList<ContainerRecord> records;
    const QStringList files =
        QDir(home_.containersDir()).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (const QString& file : files) {
        Error error;
        const QString path = home_.containersDir() + QLatin1Char('/') + file;
        std::optional<ContainerRecord> record = ContainerRecord::read(path, &error);
        if (!record) {
            VLLOG(3, "Failed to read container record %@: %@", path, error);
            continue;
        }
        records.append(*record);
    }
    std::stable_sort(records.begin(), records.end(),
                     [](const ContainerRecord& a, const ContainerRecord& b) {
                         return a.isDefault && !b.isDefault;
                     });
    std::lock_guard lock(caches_->mutex);
    caches_->containers = records;
    caches_->containersStamp = stamp;
    return records;
}

std::optional<ContainerRecord> DriveStore::containerRecord(const QString& identifier,
                                                           Error* error) const {
    for (const ContainerRecord& record : containerRecords()) {
        if (record.identifier == identifier) {
            return record;
        }
    }
    // Not among the readable ones: say why when the record exists but is broken.
    const QString path = home_.containerRecordFile(identifier);
    if (pathExists(path)) {
        return ContainerRecord::read(path, error);
    }
    if (error) {
        *error = Error::fileError(Error::FileReadNoSuchFile, path);
    }
    return std::nullopt;
}

std::optional<ContainerRecord> DriveStore::defaultContainerRecord(Error* error) const {
    for (const ContainerRecord& record : containerRecords()) {
        if (record.isDefault) {
            return record;
        }
    }
    if (error) {
        *error = Error::fileError(Error::FileReadNoSuchFile, home_.containersDir());
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::addContainer(const ContainerRecord& record) {
    if (!ContainerRecord::fromJson(record.toJson())) {
        return RecordFile::corruptFileError(home_.containerRecordFile(record.identifier),
                                            QStringLiteral("invalid container record"));
    }
    for (const ContainerRecord& other : containerRecords()) {
        if (other.identifier == record.identifier) {
            continue;
        }
        if ((record.isDefault && other.isDefault) ||
            (!record.isDefault && !other.isDefault && other.folder == record.folder)) {
            return Error::fileError(Error::FileWriteFileExists,
                                    home_.containerRecordFile(record.identifier));
        }
    }
    if (!record.isDefault) {
        QDir().mkpath(home_.drivePathFor(record.folder));
        QDir().mkpath(home_.cloudPathFor(record.folder));
    }
    std::optional<Error> error = record.write(home_.containerRecordFile(record.identifier));
    // Its package types count from the next item read on, not after the recheck interval.
    std::lock_guard lock(caches_->mutex);
    caches_->packagesCheckedAt = -1;
    return error;
}

std::optional<ContainerRecord> DriveStore::containerRecordForURL(const Url& url,
                                                                 Error* error) const {
    const Url logical = logicalURLFor(url);
    const std::optional<QString> relative = relativePath(logical);
    if (!relative) {
        if (error) {
            *error = Error(Error::FileErrorDomain, kReadUnknown,
                           {{Error::FilePathKey, url.path()},
                            {Error::LocalizedFailureReasonKey,
                             QStringLiteral("The item is not in the drive.")}});
        }
        return std::nullopt;
    }
    const QString first = relative->section(QLatin1Char('/'), 0, 0);
    std::optional<ContainerRecord> fallback;
    for (const ContainerRecord& record : containerRecords()) {
        if (record.isDefault) {
            fallback = record;
        } else if (!first.isEmpty() && record.folder == first) {
            return record;
        }
    }
    if (!fallback && error) {
        *error = Error::fileError(Error::FileReadNoSuchFile, home_.containersDir());
    }
    return fallback;
}

std::optional<ContainerRecord> DriveStore::appLibraryAtURL(const Url& url) const {
    if (url.deletingLastPathComponent().path() != home_.driveDir()) {
        return std::nullopt;
    }
    const QString name = url.lastPathComponent();
    for (const ContainerRecord& record : containerRecords()) {
        if (!record.isDefault && record.folder == name) {
            return record;
        }
    }
    return std::nullopt;
}

std::optional<Error> DriveStore::deleteContainerContents(const QString& identifier) {
    Error error;
    const std::optional<ContainerRecord> record = containerRecord(identifier, &error);
    if (!record) {
        return error.code() ? error : Error::fileError(Error::FileReadNoSuchFile, identifier);
    }
    if (record->isDefault) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::LocalizedFailureReasonKey,
                       QStringLiteral("The default container can't be deleted.")}});
    }
    HomeLock lock(home_.rootPath());
    std::optional<Error> firstFailure;
    // The drive's items go first, each whole into the staging area: a crash before the cloud's
    // go leaves cloud copies that the recovery pass gives placeholders, so an item not yet
    // deleted everywhere is still reachable, never half there.
    for (const QString& root :
         {home_.drivePathFor(record->folder), home_.cloudPathFor(record->folder)}) {
        const QByteArray folder = nativePath(root);
        for (const QByteArray& name : childNames(folder)) {
            if (std::optional<Error> failure = discard(folder + '/' + name)) {
                VLLOG(3, "Failed to remove %@: %@", QString::fromUtf8(folder + '/' + name),
                      *failure);
                if (!firstFailure) {
                    firstFailure = failure;
                }
            }
            CrashPoint::reach();
        }
    }
    std::lock_guard metadataLock(metadataMutex_);
    refreshMetadataLocked();
    bool changed = false;
    for (const QString& key : metadata_->entries.keys()) {
        if (key.startsWith(record->folder + QLatin1Char('/'))) {
            metadata_->entries.remove(key);
            changed = true;
        }
    }
    if (changed) {
        saveMetadataLocked();
    }
    return firstFailure;
}

// --- Key-value store ---

QVariantMap DriveStore::readKeyValueStore(Error* error) const {
    bool missing = false;
    Error readError;
    const std::optional<QJsonObject> object =
        RecordFile::readObject(home_.keyValueStoreFile(), &readError, &missing);
    if (!object) {
        if (!missing) {
            VLLOG(3, "Failed to read key-value store %@: %@", home_.keyValueStoreFile(), readError);
            if (error) {
                *error = readError;
            }
        }
        return {};
    }
    return object->toVariantMap();
}

std::optional<Error> DriveStore::writeKeyValueStore(const QVariantMap& values) {
    return RecordFile::writeObject(home_.keyValueStoreFile(), QJsonObject::fromVariantMap(values));
}

}  // namespace vl
