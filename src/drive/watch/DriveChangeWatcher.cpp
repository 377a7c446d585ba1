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

// A fence is posted for every coordinated write; on a memory file system renaming it writes no
// journal.
QString fenceParent() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    for (const QString& candidate : {runtime, QStringLiteral("/dev/shm")}) {
        if (!candidate.isEmpty() && ::access(QFile::encodeName(candidate).constData(), W_OK) == 0) {
            return candidate;
        }
    }
    return QDir::tempPath();
}

// Fence folders carry their process's id, so that the next watcher can sweep those of processes
// that died without removing theirs; and the id of their process namespace, since an id means
// nothing in another one.
QByteArray fenceFolderPrefix() {
    struct stat ns {};
    const QByteArray space =
        ::stat("/proc/self/ns/pid", &ns) == 0 ? QByteArray::number(ns.st_ino) : QByteArray("0");
    return "vellora-fences-" + space + '-';
}

void sweepDeadFenceFolders(const QString& parent, const QByteArray& prefix) {
    const QByteArray base = QFile::encodeName(parent) + '/';
    DIR* dir = ::opendir(base.constData());
    if (!dir) {
        return;
    }
    std::vector<QByteArray> dead;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name =
            QByteArray::fromRawData(entry->d_name, qsizetype(std::strlen(entry->d_name)));
        if (!name.startsWith(prefix)) {
            continue;
        }
        const QByteArray rest = name.mid(prefix.size());
        bool ok = false;
        const pid_t pid = pid_t(rest.left(rest.indexOf('-')).toInt(&ok));
        struct stat st {};
        if (ok && pid > 0 && pid != ::getpid() && ::kill(pid, 0) != 0 && errno == ESRCH &&
            ::lstat((base + name).constData(), &st) == 0 && S_ISDIR(st.st_mode) &&
            st.st_uid == ::getuid()) {
            dead.push_back(base + name);
        }
    }
    ::closedir(dir);
    for (const QByteArray& path : dead) {
        QDir(QFile::decodeName(path)).removeRecursively();
    }
}

}  // namespace

DriveChangeWatcher::DriveChangeWatcher(QString driveRoot, Sink sink)
    : driveRoot_(QDir::cleanPath(driveRoot)), sink_(std::move(sink)) {}

DriveChangeWatcher::~DriveChangeWatcher() {
    stop();
}

bool DriveChangeWatcher::isRunning() const {
    std::lock_guard lock(mutex_);
    return running_;
}

bool DriveChangeWatcher::start() {
    if (isRunning()) {
        return true;
    }
    inotifyFd_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    stopFd_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    wakeFd_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    const QString parent = fenceParent();
    const QByteArray prefix = fenceFolderPrefix();
    sweepDeadFenceFolders(parent, prefix);
    QByteArray fenceTemplate =
        QFile::encodeName(parent) + '/' + prefix + QByteArray::number(::getpid()) + "-XXXXXX";
    const bool fenceMade = ::mkdtemp(fenceTemplate.data()) != nullptr;
    if (inotifyFd_ < 0 || stopFd_ < 0 || wakeFd_ < 0 || !fenceMade) {
        VLLOG(3, "Cannot watch the drive at %@: %s", driveRoot_, std::strerror(errno));
        stop();
        return false;
    }
    fenceDir_ = QFile::decodeName(fenceTemplate);
    fenceWd_ = ::inotify_add_watch(inotifyFd_, fenceTemplate.constData(), IN_MOVED_TO);
    {
        const QByteArray fence = fenceTemplate + "/f";
        const int fd = ::open(fence.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (fd >= 0) {
            ::close(fd);
            std::lock_guard lock(fenceMutex_);
            fenceFile_ = fence;
        }
    }
    addWatchTree(driveRoot_, false);
    if (fenceWd_ < 0 || watchPaths_.isEmpty()) {
        VLLOG(3, "Cannot watch the drive at %@: %s", driveRoot_, std::strerror(errno));
        stop();
        return false;
    }
    {
        std::lock_guard lock(mutex_);
        running_ = true;
    }
    // The watcher thread owns the watches from here on.
    const int folders = int(watchPaths_.size());
    thread_ = std::thread([this] { run(); });
    VLLOG(7, "Watching %@ (%d folders)", driveRoot_, folders);
    return true;
}

void DriveChangeWatcher::stop() {
    if (thread_.joinable()) {
        const quint64 one = 1;
        [[maybe_unused]] const ssize_t written = ::write(stopFd_, &one, sizeof one);
        thread_.join();
    }
    {
        std::lock_guard lock(mutex_);
        running_ = false;
        suppressed_.clear();
        endedIds_.clear();
        pendingBarriers_.clear();
        idle_ = false;
        barrierDone_.notify_all();
    }
    if (inotifyFd_ >= 0) {
        ::close(inotifyFd_);
        inotifyFd_ = -1;
    }
    if (stopFd_ >= 0) {
        ::close(stopFd_);
        stopFd_ = -1;
    }
    if (wakeFd_ >= 0) {
        ::close(wakeFd_);
        wakeFd_ = -1;
    }
    if (!fenceDir_.isEmpty()) {
        std::lock_guard lock(fenceMutex_);
        QDir(fenceDir_).removeRecursively();
        fenceDir_.clear();
        fenceFile_.clear();
    }
    watchPaths_.clear();
    batch_.clear();
    pendingMoves_.clear();
    std::lock_guard lock(mutex_);
    fenceBatches_.clear();
}

quint64 DriveChangeWatcher::beginOwnChanges(const std::vector<QString>& paths) {
    std::lock_guard lock(mutex_);
    if (!running_) {
        return 0;
    }
    const quint64 id = nextId_++;
    for (const QString& path : paths) {
        suppressed_.emplace_back(id, QDir::cleanPath(path));
    }
    return id;
}

void DriveChangeWatcher::endOwnChanges(quint64 id) {
    if (id == 0) {
        return;
    }
    bool wake;
    {
        std::lock_guard lock(mutex_);
        if (!running_) {
            std::erase_if(suppressed_, [id](const auto& s) { return s.first == id; });
            return;
        }
        endedIds_.push_back(id);
        wake = idle_;
        idle_ = false;
    }
    // The watcher posts the fence itself, one for all the changes that ended meanwhile; it needs
    // waking only when it sleeps with nothing to do.
    if (wake) {
        const quint64 one = 1;
        [[maybe_unused]] const ssize_t written = ::write(wakeFd_, &one, sizeof one);
    }
}

void DriveChangeWatcher::waitUntilDelivered() {
    quint64 id;
    {
        std::lock_guard lock(mutex_);
        if (!running_) {
            return;
        }
        id = nextId_++;
        pendingBarriers_.insert(id);
    }
    // The barrier also fences the changes that ended before it: a caller that waits for
    // delivery must not find its own finished writes still hiding other processes' events.
    if (!postFence('b', id, true)) {
        std::lock_guard lock(mutex_);
        pendingBarriers_.erase(id);
        return;
    }
    std::unique_lock lock(mutex_);
    barrierDone_.wait_for(lock, std::chrono::seconds(5),
                          [&] { return !running_ || finishedBarriers_.count(id) > 0; });
    finishedBarriers_.erase(id);
    pendingBarriers_.erase(id);
}

bool DriveChangeWatcher::postFence(char type, quint64 id, bool forBarrier) {
    // Taking the ended ids and renaming happen under one lock, so fences reach the queue in the
    // order their batches were taken.
    std::lock_guard fenceLock(fenceMutex_);
    std::vector<quint64> ended;
    {
        std::lock_guard lock(mutex_);
        ended.swap(endedIds_);
    }
    if (ended.empty() && !forBarrier) {
        return false;
    }
    const qsizetype slash = fenceFile_.lastIndexOf('/');
    const QByteArray name = fenceFile_.left(slash + 1) + type + QByteArray::number(id);
    if (fenceFile_.isEmpty() || ::rename(fenceFile_.constData(), name.constData()) != 0) {
        releaseOwnChanges(ended);
        return false;
    }
    fenceFile_ = name;
    if (!ended.empty()) {
        std::lock_guard lock(mutex_);
        fenceBatches_.emplace(id, std::move(ended));
    }
    return true;
}

}  // namespace vl
