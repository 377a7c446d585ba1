#include "drive/network/NetworkChangeListener.h"

#include "logging/VLLogging.h"

#include <QFileInfo>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vl {

NetworkChangeListener::NetworkChangeListener(QString watchedFile, std::function<void()> onChange,
                                             int recheckIntervalMs)
    : watchedFile_(std::move(watchedFile)),
      onChange_(std::move(onChange)),
      recheckIntervalMs_(recheckIntervalMs) {
    stopFd_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);

    netlinkFd_ = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    if (netlinkFd_ >= 0) {
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
        if (::bind(netlinkFd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
            VLLOG(4, "Can't listen to rtnetlink: %s", std::strerror(errno));
            ::close(netlinkFd_);
            netlinkFd_ = -1;
        }
    }

    if (!watchedFile_.isEmpty()) {
        inotifyFd_ = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
        const QByteArray folder = QFileInfo(watchedFile_).absolutePath().toLocal8Bit();
        if (inotifyFd_ >= 0 &&
            ::inotify_add_watch(inotifyFd_, folder.constData(),
                                IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE | IN_CREATE) < 0) {
            VLLOG(4, "Can't watch %@: %s", QString::fromLocal8Bit(folder), std::strerror(errno));
            ::close(inotifyFd_);
            inotifyFd_ = -1;
        }
    }

    thread_ = std::thread([this] { run(); });
}

NetworkChangeListener::~NetworkChangeListener() {
    if (stopFd_ >= 0) {
        const uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(stopFd_, &one, sizeof(one));
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    for (int fd : {netlinkFd_, inotifyFd_, stopFd_}) {
        if (fd >= 0) {
            ::close(fd);
        }
    }
}

void NetworkChangeListener::run() {
    const QByteArray watchedName = QFileInfo(watchedFile_).fileName().toLocal8Bit();
    alignas(inotify_event) char buffer[8192];
    for (;;) {
        pollfd fds[3] = {{stopFd_, POLLIN, 0}, {netlinkFd_, POLLIN, 0}, {inotifyFd_, POLLIN, 0}};
        const int ready = ::poll(fds, 3, recheckIntervalMs_);
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            VLLOG(3, "Network change listener stopped: %s", std::strerror(errno));
            return;
        }
        if (fds[0].revents & POLLIN) {
            return;
        }
        bool changed = ready == 0;  // the periodic re-check
        if (fds[1].revents & POLLIN) {
            // Only the fact of a notification matters; the state is read afresh.
            while (::recv(netlinkFd_, buffer, sizeof(buffer), 0) > 0) {
            }
            changed = true;
        }
        if (fds[2].revents & POLLIN) {
            ssize_t length;
            while ((length = ::read(inotifyFd_, buffer, sizeof(buffer))) > 0) {
                for (char* p = buffer; p < buffer + length;) {
                    const auto* event = reinterpret_cast<const inotify_event*>(p);
                    if (event->len > 0 && watchedName == event->name) {
                        changed = true;
                    }
                    p += sizeof(inotify_event) + event->len;
                }
            }
        }
        if (changed && onChange_) {
            onChange_();
        }
    }
}

}  // namespace vl
