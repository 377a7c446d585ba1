#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

// The one way code runs later or elsewhere: the main queue, labelled serial queues, global
// concurrent queues, delayed blocks, repeating timers, the current queue's label and the clock.
// Two backends implement `Dispatcher`: the real one (main queue = Qt's event loop, one worker
// thread per serial queue) and the virtual-time one of VirtualDispatcher.h for tests.

namespace vl {

using DispatchBlock = std::function<void()>;
using DispatchDuration = std::chrono::nanoseconds;
// A reading of the dispatch clock: monotonic, nanoseconds since the clock's own epoch. In the
// virtual backend it only moves when a test advances it.
using DispatchTime = std::chrono::nanoseconds;

enum class QualityOfService { UserInteractive, UserInitiated, Default, Utility, Background };

class DispatchQueue {
public:
    virtual ~DispatchQueue() = default;

    virtual QString label() const = 0;
    // Runs the block later, after every block submitted to this queue before it (serial queues).
    virtual void async(DispatchBlock block) = 0;
    // Runs the block on this queue and returns after it ran. Calling it from a block already
    // running on the same serial queue is a programming error (it would deadlock).
    virtual void sync(DispatchBlock block) = 0;
    // Runs the block on this queue once the dispatch clock reaches `when`.
    virtual void asyncAt(DispatchTime when, DispatchBlock block) = 0;

    // The reading of the clock this queue schedules against (the installed dispatcher's unless
    // the backend says otherwise).
    virtual DispatchTime now() const;

    void after(DispatchDuration delay, DispatchBlock block);
    // True when the calling thread is running a block of this queue (or is the main thread, for
    // the main queue).
    bool isCurrent() const;

protected:
    // Runs the block through async() and waits on a condition variable of our own until it ran:
    // a hand-over that ThreadSanitizer can see, unlike one through Qt's semaphores.
    void syncThroughAsync(DispatchBlock block);
};
using DispatchQueuePtr = std::shared_ptr<DispatchQueue>;

class Dispatcher {
public:
    virtual ~Dispatcher() = default;
    virtual DispatchQueuePtr mainQueue() = 0;
    virtual DispatchQueuePtr globalQueue(QualityOfService qos) = 0;
    virtual DispatchQueuePtr createSerialQueue(const QString& label, QualityOfService qos,
                                               int relativePriority) = 0;
    virtual DispatchTime now() const = 0;
    // The queue the calling thread is running, or null. The base answer is the queue whose block
    // is running on this thread; the real backend also answers the main queue on the main thread.
    virtual DispatchQueue* currentQueue() const;
};

// A repeating timer source: fires its handler on its queue at `start`, then every `interval`,
// possibly up to `leeway` late. A new `schedule` replaces the previous one; `cancel` stops it for
// good. Releasing the last reference also stops it.
class DispatchTimer : public std::enable_shared_from_this<DispatchTimer> {
public:
    static std::shared_ptr<DispatchTimer> create(DispatchQueuePtr queue);
    ~DispatchTimer();

    void setEventHandler(DispatchBlock handler);
    void schedule(DispatchTime start, DispatchDuration interval, DispatchDuration leeway);
    void resume();
    void cancel();
    bool isCancelled() const;

private:
    explicit DispatchTimer(DispatchQueuePtr queue);
    struct State;
    void arm(quint64 generation, DispatchTime when);
    std::shared_ptr<State> state_;
};

namespace Dispatch {

// The installed backend; the real one unless a test installed another.
Dispatcher& dispatcher();
// Installs a backend process-wide; null goes back to the real one. Install before anything runs.
void setDispatcher(std::shared_ptr<Dispatcher> dispatcher);
// The backend installed with setDispatcher, or null when the real one is in use.
std::shared_ptr<Dispatcher> installedDispatcher();
std::shared_ptr<Dispatcher> realDispatcher();

DispatchQueuePtr mainQueue();
DispatchQueuePtr globalQueue(QualityOfService qos = QualityOfService::Default);
DispatchQueuePtr serialQueue(const QString& label, QualityOfService qos = QualityOfService::Default,
                             int relativePriority = 0);
DispatchTime now();
DispatchTime timeAfter(DispatchDuration delay);

DispatchQueue* currentQueue();
// The label of the queue the calling thread is running; empty when it runs none.
QString currentQueueLabel();

// A block that calls `fn(owner)` only while the owner is still alive.
template <typename T, typename Fn>
DispatchBlock weakBlock(const std::shared_ptr<T>& owner, Fn fn) {
    return [weak = std::weak_ptr<T>(owner), fn = std::move(fn)]() mutable {
        if (auto strong = weak.lock()) {
            fn(strong);
        }
    };
}

}  // namespace Dispatch

// Backends mark the queue whose block runs on the current thread with this scope.
class CurrentQueueScope {
public:
    explicit CurrentQueueScope(DispatchQueue* queue);
    ~CurrentQueueScope();
    CurrentQueueScope(const CurrentQueueScope&) = delete;
    CurrentQueueScope& operator=(const CurrentQueueScope&) = delete;
    static DispatchQueue* current();

private:
    DispatchQueue* previous_;
};

}  // namespace vl
