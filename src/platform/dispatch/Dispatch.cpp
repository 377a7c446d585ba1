#include "platform/dispatch/Dispatch.h"

#include "platform/dispatch/RealDispatcher.h"
#include "platform/dispatch/RealMainQueue.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace vl {

DispatchTime DispatchQueue::now() const {
    return Dispatch::now();
}

void DispatchQueue::after(DispatchDuration delay, DispatchBlock block) {
    asyncAt(now() + delay, std::move(block));
}

void DispatchQueue::syncThroughAsync(DispatchBlock block) {
    std::mutex doneMutex;
    std::condition_variable doneChanged;
    bool done = false;
    async([&] {
        block();
        std::lock_guard lock(doneMutex);
        done = true;
        doneChanged.notify_one();
    });
    std::unique_lock lock(doneMutex);
    doneChanged.wait(lock, [&] { return done; });
}

bool DispatchQueue::isCurrent() const {
    return CurrentQueueScope::current() == this || Dispatch::currentQueue() == this;
}

DispatchQueue* Dispatcher::currentQueue() const {
    return CurrentQueueScope::current();
}

namespace {

// The owning pointer changes only in setDispatcher; readers take the raw pointer without a lock.
std::mutex installedMutex;
std::shared_ptr<Dispatcher> installed;  // guarded by installedMutex
std::atomic<Dispatcher*> installedRaw{nullptr};

}  // namespace

namespace Dispatch {

std::shared_ptr<Dispatcher> realDispatcher() {
    // Never destroyed: worker threads may still run blocks while static destructors run at exit.
    static auto* const real = new std::shared_ptr<Dispatcher>(std::make_shared<RealDispatcher>());
    return *real;
}

Dispatcher& dispatcher() {
    if (Dispatcher* d = installedRaw.load(std::memory_order_acquire)) {
        return *d;
    }
    static Dispatcher* const real = realDispatcher().get();
    return *real;
}

void setDispatcher(std::shared_ptr<Dispatcher> dispatcher) {
    std::shared_ptr<Dispatcher> previous;
    {
        std::lock_guard lock(installedMutex);
        previous = std::exchange(installed, std::move(dispatcher));
        installedRaw.store(installed.get(), std::memory_order_release);
    }
    // `previous` is released outside the lock: its queues' teardown may dispatch.
}

std::shared_ptr<Dispatcher> installedDispatcher() {
    std::lock_guard lock(installedMutex);
    return installed;
}

DispatchQueuePtr mainQueue() {
    return dispatcher().mainQueue();
}

DispatchQueuePtr globalQueue(QualityOfService qos) {
    return dispatcher().globalQueue(qos);
}

DispatchQueuePtr serialQueue(const QString& label, QualityOfService qos, int relativePriority) {
    return dispatcher().createSerialQueue(label, qos, relativePriority);
}

DispatchTime now() {
    return dispatcher().now();
}

DispatchTime timeAfter(DispatchDuration delay) {
    return now() + delay;
}

DispatchQueue* currentQueue() {
    if (DispatchQueue* queue = CurrentQueueScope::current()) {
        return queue;
    }
    // A thread that runs no queue's block and is not the main thread belongs to no queue. It
    // need not ask the dispatcher, which a test may be replacing while, say, a watcher thread
    // logs.
    if (!RealMainQueue::isMainThread()) {
        return nullptr;
    }
    return dispatcher().currentQueue();
}

QString currentQueueLabel() {
    DispatchQueue* queue = currentQueue();
    return queue ? queue->label() : QString();
}

}  // namespace Dispatch

}  // namespace vl
