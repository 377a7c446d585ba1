#include "platform/dispatch/VirtualDispatcher.h"

#include "platform/dispatch/RealDispatcher.h"
#include "platform/dispatch/RealMainQueue.h"
#include "platform/dispatch/VirtualQueue.h"

#include <QDebug>

#include <algorithm>
#include <tuple>

namespace vl {

std::shared_ptr<VirtualDispatcher> VirtualDispatcher::create(DispatchTime start) {
    std::shared_ptr<VirtualDispatcher> dispatcher(new VirtualDispatcher(start));
    dispatcher->main_ = dispatcher->addQueue(RealMainQueue::kLabel);
    for (size_t i = 0; i < dispatcher->global_.size(); ++i) {
        dispatcher->global_[i] = dispatcher->addQueue(
            RealDispatcher::globalQueueLabel(static_cast<QualityOfService>(i)));
    }
    return dispatcher;
}

VirtualDispatcher::VirtualDispatcher(DispatchTime start)
    : mainThread_(std::this_thread::get_id()), now_(start) {}

VirtualDispatcher::~VirtualDispatcher() {
    // Blocks may hold handles of their own queue; emptying the queues breaks those cycles. The
    // handles' release finds this dispatcher gone and does nothing.
    for (const auto& queue : queues_) {
        auto ready = std::move(queue->ready_);
        auto timed = std::move(queue->timed_);
    }
}

std::shared_ptr<VirtualQueue> VirtualDispatcher::addQueue(const QString& label) {
    auto queue = std::make_shared<VirtualQueue>(label, weak_from_this());
    std::lock_guard lock(mutex_);
    queues_.push_back(queue);
    return queue;
}

DispatchQueuePtr VirtualDispatcher::mainQueue() {
    return main_;
}

DispatchQueuePtr VirtualDispatcher::globalQueue(QualityOfService qos) {
    return global_.at(static_cast<size_t>(qos));
}

DispatchQueuePtr VirtualDispatcher::createSerialQueue(const QString& label, QualityOfService, int) {
    std::shared_ptr<VirtualQueue> queue = addQueue(label);
    return DispatchQueuePtr(queue.get(), [queue](DispatchQueue*) {
        if (auto owner = queue->owner_.lock()) {
            owner->release(*queue);
        }
    });
}

DispatchTime VirtualDispatcher::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

DispatchQueue* VirtualDispatcher::currentQueue() const {
    if (DispatchQueue* queue = CurrentQueueScope::current()) {
        return queue;
    }
    return std::this_thread::get_id() == mainThread_ ? main_.get() : nullptr;
}

void VirtualDispatcher::post(VirtualQueue& queue, std::optional<DispatchTime> when,
                             DispatchBlock block) {
    std::lock_guard lock(mutex_);
    const quint64 sequence = nextSequence_++;
    if (!when || *when <= now_) {
        queue.ready_.emplace_back(sequence, std::move(block));
    } else if (!queue.released_) {
        queue.timed_.emplace(VirtualQueue::TimedKey(*when, sequence), std::move(block));
    }
    // A dropped block is destroyed after the lock is released (it is this function's parameter).
}

std::shared_ptr<VirtualQueue> VirtualDispatcher::takeIfRetired(VirtualQueue& queue) {
    if (!queue.released_ || queue.busy_ || !queue.ready_.empty()) {
        return nullptr;
    }
    auto it = std::find_if(queues_.begin(), queues_.end(),
                           [&](const auto& candidate) { return candidate.get() == &queue; });
    if (it == queues_.end()) {
        return nullptr;
    }
    std::shared_ptr<VirtualQueue> retired = std::move(*it);
    queues_.erase(it);
    return retired;
}

void VirtualDispatcher::release(VirtualQueue& queue) {
    std::map<VirtualQueue::TimedKey, DispatchBlock> dropped;
    std::shared_ptr<VirtualQueue> retired;
    std::lock_guard lock(mutex_);
    queue.released_ = true;
    dropped.swap(queue.timed_);
    retired = takeIfRetired(queue);
    // The guard is destroyed first (declared last), so the dropped blocks and the retired queue
    // go outside the lock.
}

void VirtualDispatcher::finishRunning(VirtualQueue& queue) {
    std::shared_ptr<VirtualQueue> retired;
    {
        std::lock_guard lock(mutex_);
        queue.busy_ = false;
        retired = takeIfRetired(queue);
    }
    queueFreed_.notify_all();
}

bool VirtualDispatcher::runOne() {
    std::shared_ptr<VirtualQueue> queue;
    DispatchBlock block;
    {
        std::lock_guard lock(mutex_);
        for (const auto& candidate : queues_) {
            if (!candidate->busy_ && !candidate->ready_.empty() &&
                (!queue || candidate->ready_.front().first < queue->ready_.front().first)) {
                queue = candidate;
            }
        }
        if (!queue) {
            return false;
        }
        block = std::move(queue->ready_.front().second);
        queue->ready_.pop_front();
        queue->busy_ = true;
    }
    {
        CurrentQueueScope scope(queue.get());
        block();
    }
    block = nullptr;
    finishRunning(*queue);
    return true;
}

void VirtualDispatcher::runSync(VirtualQueue& queue, const DispatchBlock& block) {
    if (CurrentQueueScope::current() == &queue) {
        qCritical("Dispatch: sync called on queue \"%s\" from its own block; running it inline",
                  qPrintable(queue.label()));
        block();
        return;
    }
    size_t earlier = 0;
    {
        std::unique_lock lock(mutex_);
        queueFreed_.wait(lock, [&] { return !queue.busy_; });
        queue.busy_ = true;
        earlier = queue.ready_.size();
    }
    CurrentQueueScope scope(&queue);
    for (size_t i = 0; i < earlier; ++i) {
        DispatchBlock due;
        {
            std::lock_guard lock(mutex_);
            due = std::move(queue.ready_.front().second);
            queue.ready_.pop_front();
        }
        due();
    }
    block();
    finishRunning(queue);
}

int VirtualDispatcher::runUntilIdle() {
    int count = 0;
    while (runOne()) {
        ++count;
    }
    return count;
}

int VirtualDispatcher::advanceTo(DispatchTime time) {
    int count = runUntilIdle();
    for (;;) {
        {
            std::lock_guard lock(mutex_);
            std::optional<DispatchTime> deadline;
            for (const auto& queue : queues_) {
                if (!queue->timed_.empty()) {
                    const DispatchTime first = queue->timed_.begin()->first.first;
                    deadline = deadline ? std::min(*deadline, first) : first;
                }
            }
            if (!deadline || *deadline > time) {
                now_ = std::max(now_, time);
                break;
            }
            now_ = std::max(now_, *deadline);
            // Blocks of several queues due at this instant come due in the order they were
            // submitted.
            std::vector<std::tuple<VirtualQueue::TimedKey, VirtualQueue*>> due;
            for (const auto& queue : queues_) {
                for (const auto& [key, block] : queue->timed_) {
                    if (key.first > now_) {
                        break;
                    }
                    due.emplace_back(key, queue.get());
                }
            }
            std::sort(due.begin(), due.end(), [](const auto& a, const auto& b) {
                return std::get<0>(a).second < std::get<0>(b).second;
            });
            for (const auto& [key, queue] : due) {
                auto it = queue->timed_.find(key);
                queue->ready_.emplace_back(nextSequence_++, std::move(it->second));
                queue->timed_.erase(it);
            }
        }
        count += runUntilIdle();
    }
    return count + runUntilIdle();
}

int VirtualDispatcher::advanceBy(DispatchDuration duration) {
    return advanceTo(now() + duration);
}

int VirtualDispatcher::pendingCount() const {
    std::lock_guard lock(mutex_);
    size_t count = 0;
    for (const auto& queue : queues_) {
        count += queue->ready_.size() + queue->timed_.size();
    }
    return static_cast<int>(count);
}

std::optional<DispatchTime> VirtualDispatcher::nextDeadline() const {
    std::lock_guard lock(mutex_);
    std::optional<DispatchTime> deadline;
    for (const auto& queue : queues_) {
        if (!queue->timed_.empty()) {
            const DispatchTime first = queue->timed_.begin()->first.first;
            deadline = deadline ? std::min(*deadline, first) : first;
        }
    }
    return deadline;
}

VirtualDispatcher::Installation::Installation() : Installation(VirtualDispatcher::create()) {}

VirtualDispatcher::Installation::Installation(std::shared_ptr<VirtualDispatcher> dispatcher)
    : dispatcher_(std::move(dispatcher)), previous_(Dispatch::installedDispatcher()) {
    Dispatch::setDispatcher(dispatcher_);
}

VirtualDispatcher::Installation::~Installation() {
    Dispatch::setDispatcher(previous_);
}

}  // namespace vl
