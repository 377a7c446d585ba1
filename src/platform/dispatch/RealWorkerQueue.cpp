#include "platform/dispatch/RealWorkerQueue.h"

#include <QDebug>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace vl {

namespace {

DispatchTime steadyNow() {
    return std::chrono::duration_cast<DispatchTime>(
        std::chrono::steady_clock::now().time_since_epoch());
}

std::chrono::steady_clock::time_point steadyPoint(DispatchTime when) {
    return std::chrono::steady_clock::time_point(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(when));
}

}  // namespace

DispatchQueuePtr RealWorkerQueue::create(const QString& label, int threadCount,
                                         QualityOfService qos, int relativePriority) {
    std::shared_ptr<RealWorkerQueue> queue(
        new RealWorkerQueue(label, std::max(1, threadCount), qos, relativePriority));
    return DispatchQueuePtr(queue.get(), [queue](DispatchQueue*) { queue->release(); });
}

RealWorkerQueue::RealWorkerQueue(const QString& label, int threadCount, QualityOfService qos,
                                 int relativePriority)
    : label_(label), threadCount_(threadCount), qos_(qos), relativePriority_(relativePriority) {}

RealWorkerQueue::~RealWorkerQueue() = default;

QString RealWorkerQueue::label() const {
    return label_;
}

DispatchTime RealWorkerQueue::now() const {
    return steadyNow();
}

int RealWorkerQueue::niceValueFor(QualityOfService qos, int relativePriority) {
    int nice = 0;
    switch (qos) {
        case QualityOfService::UserInteractive:
        case QualityOfService::UserInitiated:
        case QualityOfService::Default:
            nice = 0;
            break;
        case QualityOfService::Utility:
            nice = 5;
            break;
        case QualityOfService::Background:
            nice = 10;
            break;
    }
    // Relative priorities run from -15 (lowest) to 0; each step of 5 is one nice level more.
    nice += -std::clamp(relativePriority, -15, 0) / 5;
    return std::min(nice, 19);
}

void RealWorkerQueue::startThreads() {
    for (int i = 0; i < threadCount_; ++i) {
        std::thread([self = shared_from_this()] {
            self->prepareThread();
            self->work();
        }).detach();
    }
}

void RealWorkerQueue::prepareThread() const {
    // The kernel keeps 15 bytes of a thread name; cut on a character boundary.
    QByteArray name = label_.toUtf8();
    while (name.size() > 15) {
        name = label_.left(QString::fromUtf8(name).size() - 1).toUtf8();
    }
    pthread_setname_np(pthread_self(), name.constData());

    // Only ever lowering the priority: raising it needs privileges, and it is a hint anyway.
    // The step is relative to the process's own nice value, so a niced process keeps its order.
    const int step = niceValueFor(qos_, relativePriority_);
    if (step > 0) {
        const auto thread = static_cast<id_t>(gettid());
        errno = 0;
        const int current = getpriority(PRIO_PROCESS, thread);
        if (errno == 0) {
            setpriority(PRIO_PROCESS, thread, std::min(current + step, 19));
        }
    }
}

void RealWorkerQueue::release() {
    std::multimap<DispatchTime, DispatchBlock> dropped;
    {
        std::lock_guard lock(mutex_);
        released_ = true;
        // Delayed blocks not yet due are dropped now rather than keeping a thread alive for them.
        const auto firstLater = timed_.upper_bound(steadyNow());
        for (auto it = timed_.begin(); it != firstLater; ++it) {
            ready_.push_back(std::move(it->second));
        }
        dropped.swap(timed_);
    }
    wake_.notify_all();
}

void RealWorkerQueue::async(DispatchBlock block) {
    bool firstWork = false;
    {
        std::lock_guard lock(mutex_);
        ready_.push_back(std::move(block));
        firstWork = !started_;
        started_ = true;
    }
    if (firstWork) {
        startThreads();
    } else {
        wake_.notify_one();
    }
}

void RealWorkerQueue::asyncAt(DispatchTime when, DispatchBlock block) {
    bool firstWork = false;
    {
        std::lock_guard lock(mutex_);
        if (when <= steadyNow()) {
            ready_.push_back(std::move(block));
        } else if (released_) {
            return;  // the block is destroyed outside the lock on return
        } else {
            timed_.emplace(when, std::move(block));
        }
        firstWork = !started_;
        started_ = true;
    }
    if (firstWork) {
        startThreads();
        return;
    }
    // Every waiting worker re-reads the earliest deadline.
    wake_.notify_all();
}

void RealWorkerQueue::sync(DispatchBlock block) {
    // A global queue does not order its blocks, so the caller's thread may as well run it; a
    // serial queue calling itself would wait for itself forever.
    const bool onThisQueue = CurrentQueueScope::current() == this;
    if (threadCount_ > 1 || onThisQueue) {
        if (onThisQueue && threadCount_ == 1) {
            qCritical(
                "Dispatch: sync called on serial queue \"%s\" from its own block; running it "
                "inline",
                qPrintable(label_));
        }
        CurrentQueueScope scope(this);
        block();
        return;
    }
    syncThroughAsync(std::move(block));
}

void RealWorkerQueue::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        const DispatchTime now = steadyNow();
        while (!timed_.empty() && timed_.begin()->first <= now) {
            ready_.push_back(std::move(timed_.begin()->second));
            timed_.erase(timed_.begin());
        }
        if (!ready_.empty()) {
            DispatchBlock block = std::move(ready_.front());
            ready_.pop_front();
            lock.unlock();
            {
                CurrentQueueScope scope(this);
                block();
            }
            // What the block captured goes before the lock is taken again: its destructors may
            // post here or release this very queue.
            block = nullptr;
            lock.lock();
            continue;
        }
        if (released_) {
            return;
        }
        if (timed_.empty()) {
            wake_.wait(lock);
        } else {
            wake_.wait_until(lock, steadyPoint(timed_.begin()->first));
        }
    }
}

}  // namespace vl
