#pragma once

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace vl {

// Read/write locks on drive paths for coordinated access. Two locks conflict when one path is the
// other or lies inside it and at least one of them is a write: reads of one item share, a write
// excludes every other access to the item, to what is inside it and to the folders holding it.
// A request for several paths takes all of them at once or waits, so two writes of the same two
// items in opposite order cannot deadlock. Locks held by the requesting thread never block it
// (an accessor may coordinate again on its own thread).
class PathLockTable {
public:
    struct Request {
        QString path;
        bool write = false;
    };

    // A held set of locks, released on destruction.
    class Holder {
    public:
        Holder() = default;
        Holder(Holder&& other) noexcept;
        Holder& operator=(Holder&& other) noexcept;
        ~Holder();
        void release();

    private:
        friend class PathLockTable;
        Holder(PathLockTable* table, quint64 id) : table_(table), id_(id) {}
        PathLockTable* table_ = nullptr;
        quint64 id_ = 0;
    };

    // Waits until the requests can be granted (true, `holder` then holds them) or `cancelled`
    // becomes true, noticed at the next release or wakeAll() (false).
    bool acquire(const std::vector<Request>& requests, const std::atomic<bool>& cancelled,
                 Holder* holder);
    // Wakes the waiting requests so that they look at their cancel flags.
    void wakeAll();

    // Waits until at least `count` requests are blocked behind conflicting locks (true), or
    // until `timeout` passed (false). A request counted here is inside its wait: whatever the
    // caller does next (a cancel, a release) reaches a waiter, not one still on its way. Tests
    // use it instead of racing the threads they start.
    bool waitUntilBlocked(int count, std::chrono::milliseconds timeout);

private:
    struct Lock {
        quint64 id;
        QString path;
        bool write;
        std::thread::id thread;
    };
    bool conflicts(const Request& request, std::thread::id thread) const;
    void release(quint64 id);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable blockedChanged_;
    std::vector<Lock> locks_;  // guarded by mutex_
    quint64 nextId_ = 1;       // guarded by mutex_
    int blocked_ = 0;          // requests waiting for a conflict to go; guarded by mutex_
};

}  // namespace vl
