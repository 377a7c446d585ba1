#include "platform/dispatch/RealMainQueue.h"

#include "platform/dispatch/MainQueuePump.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <condition_variable>
#include <mutex>

namespace vl {

namespace {

// Qt takes the first thread that asks which thread it is for the main thread. A line logged before
// the application object exists starts the log queue's thread, which could ask first and leave
// the application object on a thread Qt thinks is not the main one. Asking here, while the
// process loads on its main thread, settles it.
[[maybe_unused]] const QThread* const mainThreadAtLoad = QThread::currentThread();

}  // namespace

QString RealMainQueue::label() const {
    return kLabel;
}

DispatchTime RealMainQueue::now() const {
    return std::chrono::duration_cast<DispatchTime>(
        std::chrono::steady_clock::now().time_since_epoch());
}

bool RealMainQueue::isMainThread() {
    QCoreApplication* app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

void RealMainQueue::run(const DispatchBlock& block) {
    CurrentQueueScope scope(this);
    block();
}

void RealMainQueue::async(DispatchBlock block) {
    if (!MainQueuePump::post(shared_from_this(), std::move(block))) {
        qWarning("Dispatch: no application object; a block for the main queue is dropped");
    }
}

void RealMainQueue::sync(DispatchBlock block) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app || isMainThread()) {
        // Waiting here for the main thread to turn its loop would wait forever.
        if (app) {
            qCritical("Dispatch: sync on the main queue from the main thread; running it inline");
        }
        run(block);
        return;
    }
    syncThroughAsync(std::move(block));
}

void RealMainQueue::asyncAt(DispatchTime when, DispatchBlock block) {
    auto shared = std::make_shared<DispatchBlock>(std::move(block));
    if (isMainThread()) {
        startTimer(when, std::move(shared));
        return;
    }
    // Timers belong to the thread that starts them, so the main thread starts this one.
    async([self = shared_from_this(), when, shared] { self->startTimer(when, shared); });
}

void RealMainQueue::startTimer(DispatchTime when, std::shared_ptr<DispatchBlock> block) {
    const DispatchDuration remaining = when - now();
    if (remaining <= DispatchDuration::zero()) {
        async(std::move(*block));
        return;
    }
    // Whole milliseconds, rounded up; a timer that still comes early is started again.
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(remaining);
    QTimer::singleShot(ms, Qt::PreciseTimer, QCoreApplication::instance(),
                       [self = shared_from_this(), when, block] {
                           if (self->now() < when) {
                               self->startTimer(when, block);
                           } else {
                               self->run(*block);
                           }
                       });
}

}  // namespace vl
