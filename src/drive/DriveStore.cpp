#include "drive/DriveStore.h"

#include "drive/RecordFile.h"
#include "drive/ThumbnailCache.h"
#include "logging/VLLogging.h"
#include "platform/ContentTypeRegistry.h"

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

namespace {

constexpr const char* kTagsAttribute = "user.xdg.tags";
constexpr const char* kTagsKey = "tags";
constexpr const char* kSharedKey = "shared";
constexpr int kReadUnknown = 256;
// How long a read may trust the in-memory metadata record without looking at metadata.json.
constexpr qint64 kMetadataRecheckNs = 50'000'000;
// Bumped by every metadata.json write in this process, so that other stores of the same home
// in this process look again at once.
std::atomic<quint64> metadataWrites{0};

qint64 coarseNow() {
    struct timespec now;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// What QFile::encodeName gives on Linux, without its detour: every item read encodes its path.
QByteArray nativePath(const QString& path) {
    return path.toUtf8();
}

bool lstatPath(const QString& path, struct stat* st) {
    return ::lstat(nativePath(path).constData(), st) == 0;
}

bool pathExists(const QString& path) {
    struct stat st;
    return lstatPath(path, &st);
}

constexpr std::size_t MaxMovesKept = 16;
std::atomic<quint64> nextCachesId{0};
thread_local std::vector<std::pair<Url, Url>> movesMadeOnThisThread;

// rename(2) that never replaces: 0 or the errno. File systems without RENAME_NOREPLACE get a
// check first, which leaves the usual window between check and rename.
int renameNoReplace(const QString& from, const QString& to) {
    const QByteArray source = nativePath(from);
    const QByteArray target = nativePath(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    struct stat st;
    if (::lstat(target.constData(), &st) == 0) {
        return EEXIST;
    }
    return ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
}

QDateTime dateOf(const struct statx_timestamp& stamp) {
    return QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(stamp.tv_sec) * 1000 + stamp.tv_nsec / 1000000, Qt::UTC);
}

QString parentPath(const QString& path) {
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

QString lastComponent(const QString& path) {
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

std::optional<Error> removeRecursively(const QString& path) {
    struct stat st;
    if (!lstatPath(path, &st)) {
        return errno == ENOENT ? std::nullopt
                               : std::optional<Error>(Error::posixError(errno, path));
    }
    if (S_ISDIR(st.st_mode)) {
        if (!QDir(path).removeRecursively()) {
            return Error::posixError(EACCES, path);
        }
        return std::nullopt;
    }
    if (::unlink(nativePath(path).constData()) != 0) {
        return Error::posixError(errno, path);
    }
    return std::nullopt;
}

// Copies a file to a temporary name beside the destination, then renames it into place.
std::optional<Error> copyFileAtomically(const QString& source, const QString& destination) {
    const QString temporary =
        parentPath(destination) + QStringLiteral("/.vltmp-") + lastComponent(destination);
    const QByteArray nativeTemporary = nativePath(temporary);
    // Plain descriptors rather than QFile::copy: that one syncs every copy to disk, which costs
    // more than the rest of a move together; the rename still never shows a partial file.
    const int in = ::open(nativePath(source).constData(), O_RDONLY | O_CLOEXEC);
    struct stat st;
    if (in < 0 || ::fstat(in, &st) != 0) {
        if (in >= 0) {
            ::close(in);
        }
        return Error::posixError(pathExists(source) ? EIO : ENOENT, source);
    }
    ::unlink(nativeTemporary.constData());
    const int out =
        ::open(nativeTemporary.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    bool copied = out >= 0;
    while (copied) {
        const ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0);
        if (n == 0) {
            break;
        }
        if (n < 0) {
            copied = false;
        }
    }
    if (out >= 0 && !copied &&
        (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)) {
        // Some file systems can't copy between descriptors in the kernel: read and write.
        copied = ::lseek(in, 0, SEEK_SET) == 0 && ::ftruncate(out, 0) == 0;
        char buffer[64 * 1024];
        while (copied) {
            const ssize_t n = ::read(in, buffer, sizeof buffer);
            if (n <= 0) {
                copied = n == 0;
                break;
            }
            copied = ::write(out, buffer, size_t(n)) == n;
        }
    }
    copied = copied && ::fchmod(out, st.st_mode & 07777) == 0;
    ::close(in);
    if (out < 0 || ::close(out) != 0 || !copied) {
        ::unlink(nativeTemporary.constData());
        return Error::posixError(EIO, source);
    }
    if (::rename(nativeTemporary.constData(), nativePath(destination).constData()) != 0) {
        const int saved = errno;
        ::unlink(nativeTemporary.constData());
        return Error::posixError(saved, destination);
    }
    return std::nullopt;
}

void setModificationDate(const QString& path, const QDateTime& date) {
    if (!date.isValid()) {
        return;
    }
    const qint64 ms = date.toMSecsSinceEpoch();
    struct timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = ms / 1000;
    times[1].tv_nsec = (ms % 1000) * 1000000;
    ::utimensat(AT_FDCWD, nativePath(path).constData(), times, AT_SYMLINK_NOFOLLOW);
}

bool isUnsupportedXattrError(int error) {
    return error == ENOTSUP || error == EOPNOTSUPP || error == EPERM;
}

QString joinTags(const QStringList& tags) {
    QStringList escaped;
    for (const QString& tag : tags) {
        QString copy = tag;
        copy.replace(QLatin1Char(','), QStringLiteral("\\,"));
        escaped.append(copy);
    }
    return escaped.join(QLatin1Char(','));
}

QStringList splitTags(const QString& value) {
    QStringList tags;
    QString current;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value.at(i) == QLatin1Char('\\') && i + 1 < value.size() &&
            value.at(i + 1) == QLatin1Char(',')) {
            current.append(QLatin1Char(','));
            ++i;
        } else if (value.at(i) == QLatin1Char(',')) {
            if (!current.trimmed().isEmpty()) {
                tags.append(current.trimmed());
            }
            current.clear();
        } else {
            current.append(value.at(i));
        }
    }
    if (!current.trimmed().isEmpty()) {
        tags.append(current.trimmed());
    }
    return tags;
}

}  // namespace

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
    };
    // Tells this store's caches from those of a store that lived at the same address before.
    const quint64 id = nextCachesId.fetch_add(1) + 1;
    std::mutex mutex;
    QHash<QString, TypeInfo> types;  // key: "d:" or "f:" + lower-case extension
    QList<ContainerRecord> containers;
    qint64 containersStamp = -1;  // containers/ mtime in ns
};

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
        record.documentTypes.append({ContentTypeRegistry::Data, {ContentTypeRegistry::Data}});
        return addContainer(record);
    }
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
    return record.write(home_.containerRecordFile(record.identifier));
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
        return error;
    }
    if (record->isDefault) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::LocalizedFailureReasonKey,
                       QStringLiteral("The default container can't be deleted.")}});
    }
    std::optional<Error> firstFailure;
    for (const QString& root :
         {home_.drivePathFor(record->folder), home_.cloudPathFor(record->folder)}) {
        const QStringList children = QDir(root).entryList(QDir::AllEntries | QDir::Hidden |
                                                          QDir::System | QDir::NoDotAndDotDot);
        for (const QString& child : children) {
            if (std::optional<Error> failure = removeRecursively(root + QLatin1Char('/') + child)) {
                VLLOG(3, "Failed to remove %@: %@", root + QLatin1Char('/') + child, *failure);
                if (!firstFailure) {
                    firstFailure = failure;
                }
            }
        }
    }
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked();
    bool changed = false;
    for (const QString& key : metadata_->entries.keys()) {
        if (key == record->folder || key.startsWith(record->folder + QLatin1Char('/'))) {
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

Url DriveStore::downloadURLFor(const Url& logicalURL) {
    return Url::fromPath(DriveHome::downloadPathFor(logicalURL.path()));
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
    return record.write(placeholderURL.path());
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

void DriveStore::describeType(const QString& name, bool isDirectory, ItemAttributes& attributes,
                              ItemAttributeKeys keys) const {
    if (!(keys & (ItemAttributeKey::ContentType | ItemAttributeKey::LocalizedTypeDescription |
                  ItemAttributeKey::IsPackage))) {
        return;
    }
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QStringView extension = dot > 0 ? QStringView(name).mid(dot + 1) : QStringView();
    // A folder's items mostly share a few extensions: the last answer on this thread is
    // usually the one, without building a key or taking the lock.
    struct LastType {
        quint64 caches = 0;
        bool isDirectory = false;
        QString extension;
        Caches::TypeInfo info;
    };
    thread_local LastType last;
    if (last.caches != caches_->id || last.isDirectory != isDirectory ||
        extension.compare(last.extension, Qt::CaseInsensitive) != 0) {
        last = {caches_->id, isDirectory, extension.toString().toLower(), {}};
        const QString key =
            (isDirectory ? QStringLiteral("d:") : QStringLiteral("f:")) + last.extension;
        bool cached = false;
        {
            std::lock_guard lock(caches_->mutex);
            auto found = caches_->types.constFind(key);
            if (found != caches_->types.constEnd()) {
                last.info = *found;
                cached = true;
            }
        }
        if (!cached) {
            const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
            // The type depends on the extension only, so one sample name stands for all.
            const QString sample = last.extension.isEmpty()
                                       ? QStringLiteral("item")
                                       : QStringLiteral("item.") + last.extension;
            last.info.isPackage = isDirectory && registry.isPackageName(sample);
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
    return RecordFile::writeObject(referenceURL.path(), object);
}

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
        char buffer[4096];
        const ssize_t length =
            ::lgetxattr(nativePath(path).constData(), xattrName, buffer, sizeof(buffer));
        if (length >= 0) {
            return QString::fromUtf8(buffer, length);
        }
        if (!isUnsupportedXattrError(errno)) {
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
        if (result == 0) {
            return std::nullopt;
        }
        if (!isUnsupportedXattrError(errno)) {
            return Error::posixError(errno, path);
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
        char buffer[4096];
        const ssize_t length =
            ::lgetxattr(nativePath(url.path()).constData(), kTagsAttribute, buffer, sizeof buffer);
        if (length >= 0) {
            return splitTags(QString::fromUtf8(buffer, length));
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
