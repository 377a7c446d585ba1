#pragma once

#include "platform/dispatch/Dispatch.h"

#include <QObject>

#include <deque>

namespace vl {

class RealMainQueue;

// Carries main-queue blocks from any thread into the application's event loop. The blocks wait
// in a list of our own, and one queued call at a time tells the main thread to drain it. Every
// hand-over goes through a mutex that ThreadSanitizer can see; Qt's own locks are invisible to it.
class MainQueuePump final : public QObject {
    Q_OBJECT

public:
    // False when there is no application object to deliver to.
    static bool post(std::shared_ptr<RealMainQueue> queue, DispatchBlock block);
    // Makes the pump on the calling thread unless there is one: the application object's
    // construction does it on the main thread, so that a first block posted from another thread
    // does not make a QObject there.
    static void prepare();

    // Runs the blocks waiting when it starts, in order; nested event loops inside a block keep
    // draining the same list, so the order holds there too.
    Q_INVOKABLE void drain();

private:
    MainQueuePump() = default;
    void postDrainLocked();

    struct Entry {
        std::shared_ptr<RealMainQueue> queue;
        DispatchBlock block;
    };
    std::deque<Entry> pending_;  // guarded by the hand-over mutex
    bool drainPosted_ = false;   // guarded by the hand-over mutex
};

}  // namespace vl
