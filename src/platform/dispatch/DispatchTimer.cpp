#include "platform/dispatch/Dispatch.h"

#include <mutex>

namespace vl {

// Each schedule, cancel or release starts a new generation; a queued firing of an older one
// finds that out when it runs and does nothing. That needs nothing from the backend but asyncAt.
struct DispatchTimer::State : std::enable_shared_from_this<DispatchTimer::State> {
    explicit State(DispatchQueuePtr q) : queue(std::move(q)) {}

    void arm(quint64 armedGeneration, DispatchTime when);
    void fire(quint64 firedGeneration, DispatchTime when);

    const DispatchQueuePtr queue;
    std::mutex mutex;
    DispatchBlock handler;        // guarded by mutex
    DispatchTime start{};         // guarded by mutex
    DispatchDuration interval{};  // guarded by mutex
    DispatchDuration leeway{};    // guarded by mutex; firings are never early, at most late
    quint64 generation = 0;       // guarded by mutex
    bool scheduled = false;       // guarded by mutex
    bool resumed = false;         // guarded by mutex
    bool cancelled = false;       // guarded by mutex
};

void DispatchTimer::State::arm(quint64 armedGeneration, DispatchTime when) {
    queue->asyncAt(when, [weak = weak_from_this(), armedGeneration, when] {
        if (auto state = weak.lock()) {
            state->fire(armedGeneration, when);
        }
    });
}

void DispatchTimer::State::fire(quint64 firedGeneration, DispatchTime when) {
    DispatchBlock current;
    {
        std::lock_guard lock(mutex);
        if (cancelled || firedGeneration != generation) {
            return;
        }
        current = handler;
    }
    if (current) {
        current();
    }
    // The next firing is armed only now, so a handler never overlaps itself even on a
    // concurrent queue; firings missed meanwhile are skipped rather than run in a burst.
    DispatchTime next;
    {
        std::lock_guard lock(mutex);
        if (cancelled || firedGeneration != generation || interval <= DispatchDuration::zero()) {
            return;
        }
        next = when + interval;
        const DispatchTime now = queue->now();
        if (next <= now) {
            next += ((now - next) / interval + 1) * interval;
        }
    }
    arm(firedGeneration, next);
}

std::shared_ptr<DispatchTimer> DispatchTimer::create(DispatchQueuePtr queue) {
    return std::shared_ptr<DispatchTimer>(new DispatchTimer(std::move(queue)));
}

DispatchTimer::DispatchTimer(DispatchQueuePtr queue)
    : state_(std::make_shared<State>(std::move(queue))) {}

DispatchTimer::~DispatchTimer() {
    cancel();
}

void DispatchTimer::setEventHandler(DispatchBlock handler) {
    std::lock_guard lock(state_->mutex);
    std::swap(state_->handler, handler);
    // The previous handler is destroyed after the lock is released.
}

void DispatchTimer::schedule(DispatchTime start, DispatchDuration interval,
                             DispatchDuration leeway) {
    quint64 generation = 0;
    {
        std::lock_guard lock(state_->mutex);
        generation = ++state_->generation;
        state_->start = start;
        state_->interval = interval;
        state_->leeway = leeway;
        state_->scheduled = true;
        if (!state_->resumed || state_->cancelled) {
            return;
        }
    }
    arm(generation, start);
}

void DispatchTimer::resume() {
    quint64 generation = 0;
    DispatchTime start;
    {
        std::lock_guard lock(state_->mutex);
        if (state_->resumed || state_->cancelled) {
            return;
        }
        state_->resumed = true;
        if (!state_->scheduled) {
            return;
        }
        generation = state_->generation;
        start = state_->start;
    }
    arm(generation, start);
}

void DispatchTimer::cancel() {
    DispatchBlock handler;
    {
        std::lock_guard lock(state_->mutex);
        state_->cancelled = true;
        ++state_->generation;
        handler.swap(state_->handler);
    }
}

bool DispatchTimer::isCancelled() const {
    std::lock_guard lock(state_->mutex);
    return state_->cancelled;
}

void DispatchTimer::arm(quint64 generation, DispatchTime when) {
    state_->arm(generation, when);
}

}  // namespace vl
