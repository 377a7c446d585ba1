#include "drive/store/DriveStorePrivate.h"

#include "drive/integrity/ItemTree.h"
#include "logging/VLLogging.h"

#include <QDirIterator>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <functional>
#include <string_view>

namespace vl {

using namespace storesupport;

namespace {

// A relative path and every folder above it, outermost first: "a/b/c" → "a", "a/b", "a/b/c".
QStringList selfAndAncestors(const QString& relative) {
    QStringList paths;
    qsizetype slash = relative.indexOf(QLatin1Char('/'));
    while (slash >= 0) {
        paths.append(relative.left(slash));
        slash = relative.indexOf(QLatin1Char('/'), slash + 1);
    }
    paths.append(relative);
    return paths;
}

bool entryIsPinned(const QJsonObject& entries, const QString& relative) {
    return entries.value(relative).toObject().value(QLatin1String(kPinnedKey)).toBool();
}

// Calls `visit` for each entry of a folder (names of placeholders included) with its lstat.
void forEachEntry(const QString& folder,
                  const std::function<void(const QString& path, const struct stat& st)>& visit) {
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QString path = it.next();
        struct stat st;
        if (lstatPath(path, &st)) {
            visit(path, st);
        }
    }
}

}  // namespace

Error DriveStore::keptOfflineError(const Url& url) {
    return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                 {{Error::FilePathKey, url.path()},
                  {Error::LocalizedFailureReasonKey, QStringLiteral("It is kept offline.")}});
}

bool DriveStore::isPinned(const Url& url) const {
    const std::optional<QString> relative = relativePath(logicalURLFor(url));
    if (!relative || relative->isEmpty()) {
        return false;
    }
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked(true);
    return entryIsPinned(metadata_->entries, *relative);
}

bool DriveStore::isKeptOffline(const Url& url) const {
    const std::optional<QString> relative = relativePath(logicalURLFor(url));
    if (!relative || relative->isEmpty()) {
        return false;
    }
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked(true);
    if (metadata_->entries.isEmpty()) {
        return false;
    }
    const QStringList paths = selfAndAncestors(*relative);
    return std::any_of(paths.cbegin(), paths.cend(), [this](const QString& path) {
        return entryIsPinned(metadata_->entries, path);
    });
}

std::optional<Error> DriveStore::setPinned(const Url& url, bool pinned) {
    const Url logical = logicalURLFor(url);
    const std::optional<QString> relative = relativePath(logical);
    if (!relative || relative->isEmpty()) {
        return Error(Error::FileErrorDomain, Error::FeatureUnsupported,
                     {{Error::FilePathKey, url.path()},
                      {Error::LocalizedFailureReasonKey,
                       QStringLiteral("Only items of the drive can be kept offline.")}});
    }
    if (pinned && !isReachable(logical, nullptr)) {
        return Error::fileError(Error::FileNoSuchFile, logical.path());
    }
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked();
    bool changed = false;
    const QString prefix = *relative + QLatin1Char('/');
    for (const QString& key : metadata_->entries.keys()) {
        if (key != *relative && !(!pinned && key.startsWith(prefix))) {
            continue;
        }
        QJsonObject entry = metadata_->entries.value(key).toObject();
        if (entry.value(QLatin1String(kPinnedKey)).toBool() == pinned) {
            continue;
        }
        entry.remove(QLatin1String(kPinnedKey));
        if (entry.isEmpty()) {
            metadata_->entries.remove(key);
        } else {
            metadata_->entries.insert(key, entry);
        }
        changed = true;
    }
    if (pinned && !entryIsPinned(metadata_->entries, *relative)) {
        QJsonObject entry = metadata_->entries.value(*relative).toObject();
        entry.insert(QLatin1String(kPinnedKey), true);
        metadata_->entries.insert(*relative, entry);
        changed = true;
    }
    if (!changed) {
        return std::nullopt;
    }
    if (pinned) {
        VLLOG(6, "Pinned %@", logical);
    } else {
        VLLOG(6, "Unpinned %@", logical);
    }
    return saveMetadataLocked();
}

QStringList DriveStore::pinnedItems() const {
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked();
    QStringList paths;
    for (auto it = metadata_->entries.constBegin(); it != metadata_->entries.constEnd(); ++it) {
        if (it.value().toObject().value(QLatin1String(kPinnedKey)).toBool()) {
            paths.append(it.key());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

QSet<QString> DriveStore::pinnedNamesInFolder(const Url& folder) const {
    const std::optional<QString> relative = relativePath(folder);
    QSet<QString> names;
    if (!relative) {
        return names;
    }
    const QString prefix = relative->isEmpty() ? QString() : *relative + QLatin1Char('/');
    std::lock_guard lock(metadataMutex_);
    refreshMetadataLocked(true);
    for (auto it = metadata_->entries.constBegin(); it != metadata_->entries.constEnd(); ++it) {
        const QString& key = it.key();
        if (key.size() > prefix.size() && key.startsWith(prefix) &&
            key.indexOf(QLatin1Char('/'), prefix.size()) < 0 &&
            it.value().toObject().value(QLatin1String(kPinnedKey)).toBool()) {
            names.insert(key.mid(prefix.size()));
        }
    }
    return names;
}

quint64 DriveStore::localContentSize() const {
    // Asked for the status line after every change the user sees: a walk by directory
    // descriptors, one fstatat per entry, no path strings made.
    quint64 total = 0;
    std::function<void(int)> walk = [&](int dirFd) {
        DIR* dir = ::fdopendir(dirFd);
        if (!dir) {
            ::close(dirFd);
            return;
        }
        while (const dirent* entry = ::readdir(dir)) {
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) {
                continue;
            }
            struct stat st;
            if (::fstatat(::dirfd(dir), name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
                continue;
            }
            if (S_ISDIR(st.st_mode)) {
                const int child = ::openat(::dirfd(dir), name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
                if (child >= 0) {
                    walk(child);
                }
                continue;
            }
            const std::string_view view(name);
            if (S_ISREG(st.st_mode) && !(name[0] == '.' && view.ends_with(".vlcloud")) &&
                !view.ends_with(".vlref")) {
                total += quint64(st.st_size);
            }
        }
        ::closedir(dir);
    };
    const int root =
        ::open(nativePath(home_.driveDir()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root >= 0) {
        walk(root);
    }
    return total;
}

QList<Url> DriveStore::cloudOnlyItems(const Url& url) const {
    QList<Url> items;
    const Url logical = logicalURLFor(url);
    if (isCloudOnly(logical)) {
        items.append(logical);
        return items;
    }
    std::function<void(const QString&)> walk = [&](const QString& folder) {
        forEachEntry(folder, [&](const QString& path, const struct stat& st) {
            const QString name = lastComponent(path);
            if (S_ISDIR(st.st_mode)) {
                walk(path);
            } else if (const std::optional<QString> logicalName =
                           DriveHome::logicalNameOfPlaceholder(name);
                       logicalName &&
                       !pathExists(parentPath(path) + QLatin1Char('/') + *logicalName)) {
                items.append(Url::fromPath(parentPath(path)).appendingPathComponent(*logicalName));
            }
        });
    };
    struct stat st;
    if (lstatPath(logical.path(), &st) && S_ISDIR(st.st_mode)) {
        walk(logical.path());
    }
    return items;
}

quint64 DriveStore::reclaimSpace(quint64 bytes, QList<Url>* evicted) {
    struct Candidate {
        Url url;
        quint64 size;
        qint64 lastUsed;
    };
    std::vector<Candidate> candidates;
    std::function<void(const QString&)> walk = [&](const QString& folder) {
        forEachEntry(folder, [&](const QString& path, const struct stat& st) {
            const QString name = lastComponent(path);
            const Url url = Url::fromPath(path, S_ISDIR(st.st_mode));
            if (DriveHome::isPlaceholderFileName(name) || isDocumentReferenceURL(url) ||
                isKeptOffline(url)) {
                return;
            }
            const qint64 used = std::max(qint64(st.st_atim.tv_sec), qint64(st.st_mtim.tv_sec));
            if (S_ISDIR(st.st_mode) && !isPackageDirectoryName(name)) {
                walk(path);
            } else if (S_ISDIR(st.st_mode)) {
                candidates.push_back({url, quint64(ItemTree::totalSize(nativePath(path))), used});
            } else if (S_ISREG(st.st_mode)) {
                candidates.push_back({url, quint64(st.st_size), used});
            }
        });
    };
    walk(home_.driveDir());
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const Candidate& a, const Candidate& b) { return a.lastUsed < b.lastUsed; });
    quint64 freed = 0;
    for (const Candidate& candidate : candidates) {
        if (bytes != 0 && freed >= bytes) {
            break;
        }
        if (std::optional<Error> error = evict(candidate.url)) {
            VLLOG(4, "Reclaiming space: %@ stays: %@", candidate.url, *error);
            continue;
        }
        freed += candidate.size;
        if (evicted) {
            evicted->append(candidate.url);
        }
    }
    VLLOG(6, "Reclaimed %llu bytes from %d items", freed, evicted ? int(evicted->size()) : -1);
    return freed;
}

}  // namespace vl
