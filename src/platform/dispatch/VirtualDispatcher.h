#pragma once

#include "platform/dispatch/Dispatch.h"

#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace vl {

class VirtualQueue;

// The backend for tests: nothing runs until the test says so, and the clock moves only when the
// test moves it. Every queue (main, global, serial) is virtual: its blocks run on the thread that
// calls runUntilIdle / advanceBy / advanceTo, with the queue set as the current one. Blocks run
// in the order they came due; those of one queue in the order they were submitted. Any thread may
// post at any time. The thread that created the dispatcher plays the main thread: outside any
// block, its current queue is the main queue.
//
// A serial queue whose last handle is released keeps the blocks already due (the next drain runs
// them) and drops the delayed ones, as the real backend does.
class VirtualDispatcher final : public Dispatcher,
                                public std::enable_shared_from_this<VirtualDispatcher> {
public:
    static constexpr DispatchTime kDefaultStart = std::chrono::seconds(1000);

    static std::shared_ptr<VirtualDispatcher> create(DispatchTime start = kDefaultStart);
    ~VirtualDispatcher() override;

    DispatchQueuePtr mainQueue() override;
    DispatchQueuePtr globalQueue(QualityOfService qos) override;
    DispatchQueuePtr createSerialQueue(const QString& label, QualityOfService qos,
                                       int relativePriority) override;
    DispatchTime now() const override;
    DispatchQueue* currentQueue() const override;

    // Runs every block that is due, including those that the blocks run post while due; returns
    // how many ran.
    int runUntilIdle();
    // Moves the clock to each deadline in turn up to `time`, running what is due at each step;
    // returns how many blocks ran. The clock never goes back.
    int advanceTo(DispatchTime time);
    int advanceBy(DispatchDuration duration);
    // Blocks waiting in any queue, due or not.
    int pendingCount() const;
    // The earliest deadline of a delayed block, if any.
    std::optional<DispatchTime> nextDeadline() const;

    // Installs a virtual dispatcher process-wide for its lifetime and puts back the one that was
    // installed before.
    class Installation {
    public:
        Installation();
        explicit Installation(std::shared_ptr<VirtualDispatcher> dispatcher);
        ~Installation();
        Installation(const Installation&) = delete;
        Installation& operator=(const Installation&) = delete;

        VirtualDispatcher& operator*() const { return *dispatcher_; }
        VirtualDispatcher* operator->() const { return dispatcher_.get(); }
        const std::shared_ptr<VirtualDispatcher>& dispatcher() const { return dispatcher_; }

    private:
        std::shared_ptr<VirtualDispatcher> dispatcher_;
        std::shared_ptr<Dispatcher> previous_;
    };

private:
    friend class VirtualQueue;

    explicit VirtualDispatcher(DispatchTime start);
    std::shared_ptr<VirtualQueue> addQueue(const QString& label);
    void post(VirtualQueue& queue, std::optional<DispatchTime> when, DispatchBlock block);
    void runSync(VirtualQueue& queue, const DispatchBlock& block);
    void release(VirtualQueue& queue);
    bool runOne();
    void finishRunning(VirtualQueue& queue);
    std::shared_ptr<VirtualQueue> takeIfRetired(VirtualQueue& queue);

    const std::thread::id mainThread_;
    mutable std::mutex mutex_;
    std::condition_variable queueFreed_;                   // a queue stopped being busy
    DispatchTime now_;                                     // guarded by mutex_
    quint64 nextSequence_ = 0;                             // guarded by mutex_
    std::vector<std::shared_ptr<VirtualQueue>> queues_;    // guarded by mutex_
    std::shared_ptr<VirtualQueue> main_;                   // set once by create
    std::array<std::shared_ptr<VirtualQueue>, 5> global_;  // set once by create
};

}  // namespace vl
