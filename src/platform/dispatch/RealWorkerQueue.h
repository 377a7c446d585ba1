#pragma once

#include "platform/dispatch/Dispatch.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>

namespace vl {

// A queue served by its own worker threads: one thread makes a serial queue, several make a
// global concurrent queue. The threads hold the queue; the handle returned by `create` lets them
// go when its last copy is released: they run every block already due, drop the delayed ones
// whose time has not come, and end. The threads start with the first block given to the queue:
// many queues are made at start-up and most wait for work long after the first screen is up.
// Nobody joins them, so a queue may be released from one of its
// own blocks, and releasing never waits for a busy queue.
class RealWorkerQueue final : public DispatchQueue,
                              public std::enable_shared_from_this<RealWorkerQueue> {
public:
    static DispatchQueuePtr create(const QString& label, int threadCount, QualityOfService qos,
                                   int relativePriority);
    ~RealWorkerQueue() override;

    QString label() const override;
    void async(DispatchBlock block) override;
    void sync(DispatchBlock block) override;
    void asyncAt(DispatchTime when, DispatchBlock block) override;
    DispatchTime now() const override;

    // The nice value a worker of this quality of service and relative priority asks for.
    static int niceValueFor(QualityOfService qos, int relativePriority);

private:
    RealWorkerQueue(const QString& label, int threadCount, QualityOfService qos,
                    int relativePriority);
    void startThreads();
    void release();
    void work();
    void prepareThread() const;

    const QString label_;
    const int threadCount_;
    const QualityOfService qos_;
    const int relativePriority_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<DispatchBlock> ready_;                   // guarded by mutex_
    std::multimap<DispatchTime, DispatchBlock> timed_;  // guarded by mutex_; FIFO per deadline
    bool released_ = false;                             // guarded by mutex_
    bool started_ = false;                              // guarded by mutex_
};

}  // namespace vl
