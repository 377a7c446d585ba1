#include "platform/dispatch/MainQueuePump.h"

#include "platform/dispatch/RealMainQueue.h"

#include <QCoreApplication>

#include <mutex>

namespace vl {

namespace {

// A global rather than a member: the main thread takes it before it reads anything of a pump
// that another thread may have made.
std::mutex handOverMutex;
MainQueuePump* pump = nullptr;  // guarded by handOverMutex; lives as long as the process

void preparePump() {
    MainQueuePump::prepare();
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(preparePump)

void MainQueuePump::prepare() {
    std::lock_guard lock(handOverMutex);
    if (!pump) {
        pump = new MainQueuePump;
    }
}

bool MainQueuePump::post(std::shared_ptr<RealMainQueue> queue, DispatchBlock block) {
    std::lock_guard lock(handOverMutex);
    if (!pump) {
        QCoreApplication* app = QCoreApplication::instance();
        if (!app) {
            return false;
        }
        pump = new MainQueuePump;
        pump->moveToThread(app->thread());
    }
    pump->pending_.push_back({std::move(queue), std::move(block)});
    if (!pump->drainPosted_) {
        pump->postDrainLocked();
    }
    return true;
}

void MainQueuePump::postDrainLocked() {
    drainPosted_ = true;
    QMetaObject::invokeMethod(this, "drain", Qt::QueuedConnection);
}

void MainQueuePump::drain() {
    size_t budget = 0;
    {
        std::lock_guard lock(handOverMutex);
        // Blocks posted from now on ask for a drain of their own, which a nested event loop in
        // one of the blocks below may run.
        drainPosted_ = false;
        budget = pending_.size();
    }
    // Only what was waiting at the start, so that a block posting itself again cannot keep the
    // event loop from other events.
    for (; budget > 0; --budget) {
        Entry entry;
        {
            std::lock_guard lock(handOverMutex);
            if (pending_.empty()) {
                break;
            }
            entry = std::move(pending_.front());
            pending_.pop_front();
        }
        CurrentQueueScope scope(entry.queue.get());
        entry.block();
    }
    std::lock_guard lock(handOverMutex);
    if (!pending_.empty() && !drainPosted_) {
        postDrainLocked();
    }
}

}  // namespace vl
