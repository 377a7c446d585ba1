#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <thread>

namespace vl {

// A thread that calls `onChange` whenever something that decides reachability may have changed:
// a link or route notification of rtnetlink (RTMGRP_LINK and the IPv4/IPv6 route groups), or a
// write or replacement of one watched file (inotify on its folder, since records are replaced by
// rename). As a safety net for a kernel that refuses the netlink socket, it also calls `onChange`
// every `recheckInterval` milliseconds. `onChange` runs on the listener's thread.
class NetworkChangeListener {
public:
    NetworkChangeListener(QString watchedFile, std::function<void()> onChange,
                          int recheckIntervalMs = 5000);
    // Stops and joins the thread.
    ~NetworkChangeListener();
    NetworkChangeListener(const NetworkChangeListener&) = delete;
    NetworkChangeListener& operator=(const NetworkChangeListener&) = delete;

private:
    void run();

    QString watchedFile_;
    std::function<void()> onChange_;
    int recheckIntervalMs_;
    int netlinkFd_ = -1;  // owned by the thread once it runs; closed in the destructor
    int inotifyFd_ = -1;
    int stopFd_ = -1;  // an eventfd written by the destructor
    std::thread thread_;
};

}  // namespace vl
