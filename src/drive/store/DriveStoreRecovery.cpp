#include "drive/store/DriveStorePrivate.h"

#include "drive/integrity/HomeLock.h"
#include "drive/integrity/ItemTree.h"
#include "drive/integrity/StagingArea.h"
#include "drive/store/RecordFile.h"
#include "logging/VLLogging.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <atomic>
#include <cerrno>

namespace vl {

using namespace storesupport;

namespace {

// The names in a folder that survive the trip through QString; others are left to the copies
// made by native path (they only occur inside a package or a user's folder).
QStringList namesIn(const QString& folder) {
    QStringList names;
    DIR* dir = ::opendir(nativePath(folder).constData());
    if (!dir) {
        return names;
    }
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        const QString decoded = QString::fromUtf8(name);
        if (name != "." && name != ".." && decoded.toUtf8() == name) {
            names.append(decoded);
        }
    }
    ::closedir(dir);
    return names;
}

}  // namespace

namespace {

// Replaces the whole content of a small record in place with one write, padding with blanks over
// whatever longer content it had: a process killed around the write leaves the old record or the
// new one, never a mix.
bool rewriteInPlace(const QString& path, QByteArray bytes) {
    const int fd = ::open(nativePath(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return false;
    }
    struct stat st;
    if (::fstat(fd, &st) == 0 && st.st_size > bytes.size()) {
        bytes.append(qsizetype(st.st_size) - bytes.size(), ' ');
    }
    const bool written = ::pwrite(fd, bytes.constData(), size_t(bytes.size()), 0) == bytes.size();
    ::close(fd);
    return written;
}

}  // namespace

std::optional<QString> DriveStore::beginMove(const Url& from, const Url& to) const {
    const std::optional<QString> fromRelative = relativePath(from);
    const std::optional<QString> toRelative = relativePath(to);
    if (!fromRelative || !toRelative || fromRelative->isEmpty() || toRelative->isEmpty()) {
        return std::nullopt;
    }
    // Moves hold the home lock, so one entry per home is enough. It is rewritten in place rather
    // than made anew, and not synced to disk: it is there for a process that dies mid-move, and
    // the page cache outlives the process. (A new, synced file per move made a move cost
    // milliseconds, most of it the file system making and dropping an inode.)
    const QString path = home_.rootPath() + QStringLiteral("/journal/move-current.json");
    QJsonObject record;
    record.insert(QLatin1String("from"), *fromRelative);
    record.insert(QLatin1String("to"), *toRelative);
    const QByteArray bytes = QJsonDocument(record).toJson(QJsonDocument::Compact);
    if (!rewriteInPlace(path, bytes) &&
        !(QDir().mkpath(parentPath(path)) && rewriteInPlace(path, bytes))) {
        VLLOG(3, "Moving %@ without a journal entry: %@", from, Error::posixError(errno, path));
        return std::nullopt;
    }
    return path;
}

void DriveStore::endMove(const QString& journal) const {
    // An empty entry: no move under way.
    rewriteInPlace(journal, "{}");
}

int DriveStore::finishMoves() {
    int repaired = 0;
    const QDir folder(home_.rootPath() + QStringLiteral("/journal"));
    for (const QString& name : folder.entryList({QStringLiteral("move-*.json")}, QDir::Files)) {
        const QString path = folder.filePath(name);
        const std::optional<QJsonObject> record = RecordFile::readObject(path, nullptr);
        const QString from = record ? record->value(QLatin1String("from")).toString() : QString();
        const QString to = record ? record->value(QLatin1String("to")).toString() : QString();
        if (from.isEmpty() || to.isEmpty()) {
            // An empty entry is the journal of a move that ended; anything else unreadable is
            // kept aside.
            RecordFile::keepAsideIfCorrupt(path);
            continue;
        }
        // Each copy that is still at the old name, with the new one free, goes to the new name.
        const QString fromLocal = home_.drivePathFor(from);
        const QString toLocal = home_.drivePathFor(to);
        const QString fromPlaceholder = DriveHome::placeholderPathFor(fromLocal);
        const QString toPlaceholder = DriveHome::placeholderPathFor(toLocal);
        const bool destinationFree = !pathExists(toLocal) && !pathExists(toPlaceholder);
        if (destinationFree && pathExists(fromLocal)) {
            renameNoReplace(fromLocal, toLocal);
        } else if (destinationFree && pathExists(fromPlaceholder)) {
            if (renameNoReplace(fromPlaceholder, toPlaceholder) == 0) {
                if (std::optional<PlaceholderFile> placeholder =
                        PlaceholderFile::read(toPlaceholder, nullptr)) {
                    placeholder->name = lastComponent(toLocal);
                    writePlaceholder(Url::fromPath(toPlaceholder), *placeholder);
                }
            }
        }
        if (pathExists(cloudPathFor(from)) && !pathExists(cloudPathFor(to))) {
            QDir().mkpath(parentPath(cloudPathFor(to)));
            renameNoReplace(cloudPathFor(from), cloudPathFor(to));
        }
        moveMetadata(from, to);
        VLLOG(4, "Recovery: finished moving %@ to %@", fromLocal, toLocal);
        QFile::remove(path);
        ++repaired;
    }
    return repaired;
}

int DriveStore::recover() {
    HomeLock lock(home_.rootPath());
    StagingArea::sweep(home_.rootPath());
    const int repaired = finishMoves() + recoverFolder(QString());
    if (repaired > 0) {
        VLLOG(4, "Recovery pass repaired %d items of %@", repaired, home_.rootPath());
    }
    return repaired;
}

int DriveStore::recoverFolder(const QString& relative) {
    int repaired = 0;
    const QString driveFolder = home_.drivePathFor(relative);
    const QString cloudFolder = cloudPathFor(relative);
    const auto childOf = [&](const QString& name) {
        return relative.isEmpty() ? name : relative + QLatin1Char('/') + name;
    };
    const QStringList driveNames = namesIn(driveFolder);
    for (const QString& name : driveNames) {
        const std::optional<QString> logical = DriveHome::logicalNameOfPlaceholder(name);
        const QString placeholder = driveFolder + QLatin1Char('/') + name;
        if (!logical || !ItemTree::isPlaceholder(nativePath(driveFolder), nativePath(name))) {
            continue;
        }
        const Url url = driveURL(childOf(*logical));
        if (pathExists(url.path())) {
            // A crash between putting a download in place and removing its placeholder, or
            // between writing a placeholder and removing the evicted item: the local item stays.
            if (const std::optional<PlaceholderFile> record =
                    PlaceholderFile::read(placeholder, nullptr)) {
                copyPlaceholderMetadata(*record, url);
            }
            VLLOG(4, "Recovery: %@ is local; its leftover placeholder goes", url);
            QFile::remove(placeholder);
            ++repaired;
        } else if (!pathExists(cloudPathFor(childOf(*logical)))) {
            // A placeholder with no content anywhere describes nothing that can be read; the
            // content it stood for, if any, is a cloud copy under another name, made reachable
            // below.
            VLLOG(3, "Recovery: the placeholder of %@ has no cloud copy; it goes", url);
            QFile::remove(placeholder);
            ++repaired;
        }
    }
    for (const QString& name : namesIn(cloudFolder)) {
        const QString child = childOf(name);
        const QString local = home_.drivePathFor(child);
        struct stat localStat;
        struct stat cloudStat;
        if (!lstatPath(cloudPathFor(child), &cloudStat)) {
            continue;
        }
        const bool cloudIsFolder = S_ISDIR(cloudStat.st_mode);
        const auto isPackage = [&](const QString& path) {
            const std::optional<ItemAttributes> attributes =
                localItemAttributes(Url::fromPath(path), ItemAttributeKey::IsPackage, nullptr);
            return attributes && attributes->isPackage.value_or(false);
        };
        if (lstatPath(local, &localStat)) {
            // A package is one document: what differs inside it is an edit not yet sent, and
            // its cloud copy is replaced whole by the next eviction.
            if (cloudIsFolder && S_ISDIR(localStat.st_mode) && !isPackage(local)) {
                repaired += recoverFolder(child);
            }
            continue;
        }
        if (pathExists(DriveHome::placeholderPathFor(local))) {
            continue;
        }
        // A cloud copy with no item in the drive (an import, move or eviction was cut short) is
        // a cloud-only item again, a folder as a whole as a cloud-only import makes it, so that
        // importing it again finds it there.
        ++repaired;
        if (DriveHome::canBeCloudOnly(name)) {
            VLLOG(4, "Recovery: %@ was only in the cloud; it is a cloud-only item again", local);
            writePlaceholder(placeholderURLFor(driveURL(child)), placeholderForCloudCopy(child));
        } else if (cloudIsFolder && ::mkdir(nativePath(local).constData(), 0755) == 0) {
            VLLOG(4, "Recovery: the folder %@ was only in the cloud", local);
            repaired += recoverFolder(child);
        } else {
            VLLOG(3, "Recovery: %@ is only in the cloud and its name is too long for a placeholder",
                  local);
        }
    }
    return repaired;
}

}  // namespace vl
