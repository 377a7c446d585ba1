#include "drive/integrity/HomeLock.h"

#include "drive/integrity/StagingArea.h"

#include <QDir>
#include <QHash>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <cerrno>
#include <condition_variable>
#include <mutex>

namespace vl {

namespace {

thread_local QHash<QString, int> depthOnThisThread;

std::mutex blockedMutex;
std::condition_variable blockedChanged;
int blocked = 0;  // guarded by blockedMutex

void countBlocked(int change) {
    {
        std::lock_guard lock(blockedMutex);
        blocked += change;
    }
    blockedChanged.notify_all();
}

}  // namespace

HomeLock::HomeLock(const QString& homeRoot) : homeRoot_(homeRoot) {
    if (depthOnThisThread[homeRoot_]++ > 0) {
        return;
    }
    const QString root = StagingArea::rootFor(homeRoot_);
    const QByteArray path = (root + QStringLiteral("/home.lock")).toUtf8();
    // A descriptor of its own per holder: flock excludes other open files, in this process too.
    fd_ = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0 && errno == ENOENT && QDir().mkpath(root)) {
        fd_ = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    }
    if (fd_ < 0 || ::flock(fd_, LOCK_EX | LOCK_NB) == 0) {
        return;
    }
    countBlocked(1);
    while (::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
    countBlocked(-1);
}

bool HomeLock::waitUntilBlocked(int count, std::chrono::milliseconds timeout) {
    std::unique_lock lock(blockedMutex);
    return blockedChanged.wait_for(lock, timeout, [count] { return blocked >= count; });
}

HomeLock::~HomeLock() {
    if (--depthOnThisThread[homeRoot_] == 0) {
        depthOnThisThread.remove(homeRoot_);
    }
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

}  // namespace vl
