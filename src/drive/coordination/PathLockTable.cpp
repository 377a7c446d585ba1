#include "drive/coordination/PathLockTable.h"

#include <algorithm>

namespace vl {

namespace {

bool isSameOrInside(const QString& path, const QString& folder) {
    if (path == folder) {
        return true;
    }
    if (folder == QLatin1String("/")) {
        return true;
    }
    return path.size() > folder.size() && path.startsWith(folder) &&
           path.at(folder.size()) == QLatin1Char('/');
}

}  // namespace

PathLockTable::Holder::Holder(Holder&& other) noexcept : table_(other.table_), id_(other.id_) {
    other.table_ = nullptr;
    other.id_ = 0;
}

PathLockTable::Holder& PathLockTable::Holder::operator=(Holder&& other) noexcept {
    if (this != &other) {
        release();
        table_ = other.table_;
        id_ = other.id_;
        other.table_ = nullptr;
        other.id_ = 0;
    }
    return *this;
}

PathLockTable::Holder::~Holder() {
    release();
}

void PathLockTable::Holder::release() {
    if (table_) {
        table_->release(id_);
        table_ = nullptr;
        id_ = 0;
    }
}

bool PathLockTable::conflicts(const Request& request, std::thread::id thread) const {
    return std::any_of(locks_.begin(), locks_.end(), [&](const Lock& lock) {
        if (lock.thread == thread || (!lock.write && !request.write)) {
            return false;
        }
        return isSameOrInside(lock.path, request.path) || isSameOrInside(request.path, lock.path);
    });
}

bool PathLockTable::acquire(const std::vector<Request>& requests,
                            const std::atomic<bool>& cancelled, Holder* holder) {
    const std::thread::id thread = std::this_thread::get_id();
    std::unique_lock lock(mutex_);
    bool blocked = false;
    changed_.wait(lock, [&] {
        const bool ready = cancelled.load() ||
                           std::none_of(requests.begin(), requests.end(),
                                        [&](const Request& r) { return conflicts(r, thread); });
        if (!ready && !blocked) {
            // Counted under the mutex, which the wait releases only once it waits.
            blocked = true;
            ++blocked_;
            blockedChanged_.notify_all();
        }
        return ready;
    });
    if (blocked) {
        --blocked_;
    }
    if (cancelled.load()) {
        return false;
    }
    const quint64 id = nextId_++;
    for (const Request& request : requests) {
        locks_.push_back({id, request.path, request.write, thread});
    }
    *holder = Holder(this, id);
    return true;
}

void PathLockTable::wakeAll() {
    // Taking the mutex orders the wake-up after a waiter's check of its flag.
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

bool PathLockTable::waitUntilBlocked(int count, std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    return blockedChanged_.wait_for(lock, timeout, [&] { return blocked_ >= count; });
}

void PathLockTable::release(quint64 id) {
    std::lock_guard lock(mutex_);
    std::erase_if(locks_, [id](const Lock& l) { return l.id == id; });
    changed_.notify_all();
}

}  // namespace vl
