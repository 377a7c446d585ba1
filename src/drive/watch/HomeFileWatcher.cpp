#include "drive/watch/HomeFileWatcher.h"

#include "logging/VLLogging.h"
#include "platform/files/Error.h"

#include <QFile>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>
#include <cerrno>

namespace vl {

HomeFileWatcher::HomeFileWatcher(const QString& folder, const QStringList& fileNames,
                                 Callback callback)
    : fileNames_(fileNames), callback_(std::move(callback)) {
    inotifyFd_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    stopFd_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (inotifyFd_ < 0 || stopFd_ < 0 ||
        ::inotify_add_watch(inotifyFd_, QFile::encodeName(folder).constData(),
                            IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE) <
            0) {
        VLLOG(3, "Failed to watch %@: %@", folder, Error::posixError(errno, folder));
        if (inotifyFd_ >= 0) {
            ::close(inotifyFd_);
            inotifyFd_ = -1;
        }
        return;
    }
    thread_ = std::thread([this] { run(); });
}

HomeFileWatcher::~HomeFileWatcher() {
    if (thread_.joinable()) {
        const uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(stopFd_, &one, sizeof(one));
        thread_.join();
    }
    if (inotifyFd_ >= 0) {
        ::close(inotifyFd_);
    }
    if (stopFd_ >= 0) {
        ::close(stopFd_);
    }
}

void HomeFileWatcher::run() {
    alignas(struct inotify_event) char buffer[8192];
    for (;;) {
        struct pollfd fds[2] = {{inotifyFd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        if (fds[1].revents) {
            return;
        }
        QStringList changed;
        for (;;) {
            const ssize_t length = ::read(inotifyFd_, buffer, sizeof(buffer));
            if (length <= 0) {
                break;
            }
            for (char* p = buffer; p < buffer + length;) {
                const auto* event = reinterpret_cast<const struct inotify_event*>(p);
                if (event->len > 0) {
                    const QString name = QFile::decodeName(event->name);
                    if (fileNames_.contains(name) && !changed.contains(name)) {
                        changed.append(name);
                    }
                }
                p += sizeof(struct inotify_event) + event->len;
            }
        }
        for (const QString& name : changed) {
            callback_(name);
        }
    }
}

}  // namespace vl
