#pragma once

#include <QString>

#include <chrono>

namespace vl {

// Serialises the changes that touch both the cloud copy and the drive (import, eviction, moves,
// deletions, remote changes, the install of a download, the recovery pass) between every
// process and thread working on one home, so that none of them sees another's half-made change.
// Taken last, after any coordination lock, and never held while waiting for one. Re-entrant on a
// thread. Reads and the copying of a download run outside it.
class HomeLock {
public:
    explicit HomeLock(const QString& homeRoot);
    ~HomeLock();
    HomeLock(const HomeLock&) = delete;
    HomeLock& operator=(const HomeLock&) = delete;

    // Waits until at least `count` holders-to-be in this process are blocked behind another
    // holder (true), or until the timeout (false). Lets tests act while a waiter really waits.
    static bool waitUntilBlocked(int count, std::chrono::milliseconds timeout);

private:
    int fd_ = -1;
    QString homeRoot_;
};

}  // namespace vl
