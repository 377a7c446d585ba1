#include "drive/watch/DriveChangeWatcherPrivate.h"

#include "drive/store/DriveHome.h"
#include "logging/VLLogging.h"

#include <QDateTime>
#include <QDir>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace vl {

namespace {

constexpr quint32 WatchMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE |
                              IN_ATTRIB | IN_DELETE_SELF | IN_EXCL_UNLINK | IN_ONLYDIR;
// A burst is delivered once no event came for this long, or when it is this old.
constexpr int QuietMs = 20;
constexpr qint64 MaxBatchAgeMs = 250;
constexpr int GatherMs = 2;

enum RecordKind { Created, Deleted, Modified, Moved };

bool existsNoFollow(const QString& path) {
    struct stat st;
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0;
}

bool isInside(const QString& path, const QString& folder) {
    return path == folder || (path.startsWith(folder) && path.size() > folder.size() &&
                              path.at(folder.size()) == QLatin1Char('/'));
}

// The logical item a directory entry stands for: placeholders stand for their item. The service's
// work in progress is never in the drive (see StagingArea).
QString logicalPath(const QString& dir, const QString& name) {
    if (const auto logical = DriveHome::logicalNameOfPlaceholder(name)) {
        return dir + QLatin1Char('/') + *logical;
    }
    return dir + QLatin1Char('/') + name;
}

}  // namespace

void DriveChangeWatcher::run() {
    pollfd fds[3] = {{inotifyFd_, POLLIN, 0}, {stopFd_, POLLIN, 0}, {wakeFd_, POLLIN, 0}};
    for (;;) {
        const bool fenceDue = postEndedChangesFence();
        const bool pending = !batch_.empty() || !pendingMoves_.empty();
        bool idle;
        {
            std::lock_guard lock(mutex_);
            idle = !pending && !fenceDue && endedIds_.empty();
            idle_ = idle;
        }
        const int ready = ::poll(fds, 3, fenceDue ? GatherMs : pending ? QuietMs : idle ? -1 : 0);
        if (ready < 0 && errno != EINTR) {
            VLLOG(3, "Drive watcher stopped: %s", std::strerror(errno));
            return;
        }
        if (fds[1].revents & POLLIN) {
            return;
        }
        if (fds[2].revents & POLLIN) {
            quint64 count;
            [[maybe_unused]] const ssize_t read = ::read(wakeFd_, &count, sizeof count);
        }
        if (ready > 0 && (fds[0].revents & POLLIN)) {
            readEvents();
            if (!batch_.empty() &&
                QDateTime::currentMSecsSinceEpoch() - batchStartedMs_ > MaxBatchAgeMs) {
                expireMoves();
                flush();
            }
            // Let the burst gather: while this thread waits on the stop descriptor alone, a
            // writer queues its events without paying for waking it.
            pollfd stop = {stopFd_, POLLIN, 0};
            if (::poll(&stop, 1, GatherMs) > 0) {
                return;
            }
        } else if (ready == 0 && pending) {
            expireMoves();
            flush();
        }
    }
}

bool DriveChangeWatcher::postEndedChangesFence() {
    quint64 id;
    {
        std::lock_guard lock(mutex_);
        if (endedIds_.empty()) {
            return !fenceBatches_.empty();
        }
        id = nextId_++;
    }
    postFence('s', id, false);
    std::lock_guard lock(mutex_);
    return !fenceBatches_.empty();
}

void DriveChangeWatcher::releaseOwnChanges(const std::vector<quint64>& ids) {
    if (ids.empty()) {
        return;
    }
    std::lock_guard lock(mutex_);
    std::erase_if(suppressed_, [&ids](const auto& s) {
        return std::find(ids.begin(), ids.end(), s.first) != ids.end();
    });
}

void DriveChangeWatcher::readEvents() {
    alignas(inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t length = ::read(inotifyFd_, buffer, sizeof buffer);
        if (length <= 0) {
            return;
        }
        for (ssize_t offset = 0; offset < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
            const QString name =
                event->len ? QFile::decodeName(QByteArray(event->name)) : QString();
            handleEvent(event->wd, event->mask, event->cookie, name);
            offset += ssize_t(sizeof(inotify_event) + event->len);
        }
    }
}

void DriveChangeWatcher::handleEvent(int wd, quint32 mask, quint32 cookie, const QString& name) {
    if (mask & IN_Q_OVERFLOW) {
        VLLOG(4, "Drive watcher: event queue overflow, some changes of %@ were missed", driveRoot_);
        recoverFromOverflow();
        return;
    }
    if (wd == fenceWd_) {
        if ((mask & IN_MOVED_TO) && !name.isEmpty()) {
            handleFence(name);
        }
        return;
    }
    if (mask & (IN_IGNORED | IN_DELETE_SELF)) {
        if (mask & IN_IGNORED) {
            watchPaths_.remove(wd);
        }
        return;
    }
    const auto dirIt = watchPaths_.constFind(wd);
    if (dirIt == watchPaths_.constEnd() || name.isEmpty()) {
        return;
    }
    const QString dir = *dirIt;
    const QString rawPath = dir + QLatin1Char('/') + name;
    const QString logical = logicalPath(dir, name);
    const bool isDir = mask & IN_ISDIR;

    if (batch_.empty() && pendingMoves_.empty()) {
        batchStartedMs_ = QDateTime::currentMSecsSinceEpoch();
    }
    if (mask & IN_MOVED_FROM) {
        pendingMoves_.push_back(
            {cookie, rawPath, logical, isDir, logical.isEmpty() || isSuppressed(logical)});
        return;
    }
    if (mask & IN_MOVED_TO) {
        const auto from =
            std::find_if(pendingMoves_.begin(), pendingMoves_.end(),
                         [cookie](const PendingMove& m) { return m.cookie == cookie; });
        if (from == pendingMoves_.end()) {
            if (isDir) {
                addWatchTree(rawPath, true);
            }
            record(Created, logical);
            return;
        }
        const PendingMove move = *from;
        pendingMoves_.erase(from);
        if (move.isDir) {
            renameWatches(move.rawPath, rawPath);
        }
        if (move.logicalPath.isEmpty()) {
            // A temporary renamed into place: the item appears (or is replaced).
            record(Created, logical);
        } else if (!move.suppressed) {
            record(Moved, move.logicalPath, logical);
        }
        return;
    }
    if (mask & IN_CREATE) {
        if (isDir) {
            addWatchTree(rawPath, true);
        }
        record(Created, logical);
    } else if (mask & IN_DELETE) {
        record(Deleted, logical);
    } else if (mask & (IN_CLOSE_WRITE | IN_ATTRIB)) {
        record(Modified, logical);
    }
}

void DriveChangeWatcher::handleFence(const QString& name) {
    const quint64 id = name.mid(1).toULongLong();
    std::vector<quint64> ended;
    {
        std::lock_guard lock(mutex_);
        const auto batch = fenceBatches_.find(id);
        if (batch != fenceBatches_.end()) {
            ended.swap(batch->second);
            fenceBatches_.erase(batch);
        }
    }
    releaseOwnChanges(ended);
    if (name.startsWith(QLatin1Char('b'))) {
        expireMoves();
        flush();
        std::lock_guard lock(mutex_);
        // Unless an overflow has already let its waiter go.
        if (pendingBarriers_.erase(id) > 0) {
            finishedBarriers_.insert(id);
            barrierDone_.notify_all();
        }
    }
}

void DriveChangeWatcher::recoverFromOverflow() {
    // A fence may have been among the lost events: lift what waits for one rather than keep
    // those paths quiet for good.
    std::map<quint64, std::vector<quint64>> batches;
    {
        std::lock_guard lock(mutex_);
        batches.swap(fenceBatches_);
    }
    for (const auto& [fence, ids] : batches) {
        releaseOwnChanges(ids);
    }
    // Folders made meanwhile have no watch yet, and folders gone or moved meanwhile may have
    // lost the events that tell: watch the tree as it is now. A watched folder keeps its
    // descriptor, under its current path.
    const QHash<int, QString> before = std::exchange(watchPaths_, {});
    addWatchTree(driveRoot_, false);
    for (auto it = before.begin(); it != before.end(); ++it) {
        if (!watchPaths_.contains(it.key())) {
            ::inotify_rm_watch(inotifyFd_, it.key());
        }
    }
    expireMoves();
    flush();
    sink_(DriveChange::missed(Url::fromPath(driveRoot_)));
    // A barrier's fence may have been lost too; what it waited for is as delivered as it will be.
    std::lock_guard lock(mutex_);
    finishedBarriers_.merge(pendingBarriers_);
    barrierDone_.notify_all();
}

void DriveChangeWatcher::addWatchTree(const QString& path, bool reportContents) {
    const QByteArray encoded = QFile::encodeName(path);
    const int wd = ::inotify_add_watch(inotifyFd_, encoded.constData(), WatchMask);
    if (wd < 0) {
        VLLOG(4, "Cannot watch folder %@: %s", path, std::strerror(errno));
        return;
    }
    watchPaths_.insert(wd, path);
    DIR* dir = ::opendir(encoded.constData());
    if (!dir) {
        return;
    }
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) {
            continue;
        }
        const QString name = QFile::decodeName(entry->d_name);
        const QString childPath = path + QLatin1Char('/') + name;
        bool isDir = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st;
            isDir =
                ::lstat(QFile::encodeName(childPath).constData(), &st) == 0 && S_ISDIR(st.st_mode);
        }
        // Entries made before the watch existed would otherwise go unnoticed.
        if (reportContents) {
            record(Created, logicalPath(path, name));
        }
        if (isDir) {
            addWatchTree(childPath, reportContents);
        }
    }
    ::closedir(dir);
}

void DriveChangeWatcher::renameWatches(const QString& from, const QString& to) {
    for (auto it = watchPaths_.begin(); it != watchPaths_.end(); ++it) {
        if (isInside(*it, from)) {
            *it = to + it->mid(from.size());
        }
    }
}

void DriveChangeWatcher::removeWatches(const QString& path) {
    for (auto it = watchPaths_.begin(); it != watchPaths_.end();) {
        if (isInside(*it, path)) {
            ::inotify_rm_watch(inotifyFd_, it.key());
            it = watchPaths_.erase(it);
        } else {
            ++it;
        }
    }
}

// A move whose other half never came left the watched tree: for the drive it is a deletion.
void DriveChangeWatcher::expireMoves() {
    for (const PendingMove& move : pendingMoves_) {
        if (move.isDir) {
            removeWatches(move.rawPath);
        }
        if (!move.suppressed) {
            batch_.push_back({Deleted, move.logicalPath, {}});
        }
    }
    pendingMoves_.clear();
}

bool DriveChangeWatcher::isSuppressed(const QString& logicalPath) const {
    std::lock_guard lock(mutex_);
    return std::any_of(suppressed_.begin(), suppressed_.end(),
                       [&](const auto& s) { return isInside(logicalPath, s.second); });
}

void DriveChangeWatcher::record(int kind, const QString& logicalPath, const QString& newPath) {
    if (logicalPath.isEmpty() || isSuppressed(logicalPath) ||
        (!newPath.isEmpty() && isSuppressed(newPath))) {
        return;
    }
    batch_.push_back({kind, logicalPath, newPath});
}

// Coalesces the burst per item and judges creations and deletions by what is there now: an
// item deleted and replaced by its placeholder (evicted), or the reverse (downloaded), has
// changed, not gone.
void DriveChangeWatcher::flush() {
    if (batch_.empty()) {
        return;
    }
    struct Group {
        QString path;
        bool created = false;
        bool deleted = false;
    };
    std::vector<Group> groups;
    QHash<QString, int> groupIndex;
    // Each step is a move (index into batch_) or a group (-1 - group index).
    std::vector<int> steps;
    for (int i = 0; i < int(batch_.size()); ++i) {
        const Record& r = batch_[i];
        if (r.kind == Moved) {
            steps.push_back(i);
            continue;
        }
        auto found = groupIndex.constFind(r.path);
        int index;
        if (found == groupIndex.constEnd()) {
            index = int(groups.size());
            groups.push_back({r.path});
            groupIndex.insert(r.path, index);
            steps.push_back(-1 - index);
        } else {
            index = *found;
        }
        groups[index].created |= r.kind == Created;
        groups[index].deleted |= r.kind == Deleted;
    }
    std::vector<DriveChange> changes;
    for (int step : steps) {
        if (step >= 0) {
            const Record& r = batch_[step];
            changes.push_back(DriveChange::moved(Url::fromPath(r.path), Url::fromPath(r.newPath)));
            continue;
        }
        const Group& g = groups[-1 - step];
        const bool exists =
            existsNoFollow(g.path) || existsNoFollow(DriveHome::placeholderPathFor(g.path));
        const Url url = Url::fromPath(g.path);
        if (!exists) {
            if (g.deleted) {
                changes.push_back(DriveChange::deleted(url));
            }
        } else if (g.created && !g.deleted) {
            changes.push_back(DriveChange::appeared(url));
        } else {
            changes.push_back(DriveChange::changed(url));
        }
    }
    batch_.clear();
    for (const DriveChange& change : changes) {
        sink_(change);
    }
}

}  // namespace vl
