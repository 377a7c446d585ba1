#pragma once

#include "platform/app/NotificationCenter.h"
#include "platform/dispatch/Dispatch.h"

#include <QtGlobal>

#include <atomic>
#include <memory>

namespace vl {

class QuotaFetcherDelegate;

// Asks the cloud account service for the free bytes of the user's cloud storage on a repeating
// timer and tells its delegate each answer on the main queue. A turn is skipped while the app is
// not active or the device is offline.
//
// Threading: the timer and each fetch run on `queue_`; the activity notifications set
// `canFetch_` on the main thread (an atomic, read on the queue); `freeBytes_` and `delegate_` are
// main-thread only. Blocks hold the fetcher weakly, so a released fetcher is never called back.
class QuotaFetcher : public std::enable_shared_from_this<QuotaFetcher> {
public:
    static constexpr const char* QueueLabel = "com.tessaly.VelloraApp.quotafetcher";

    // Makes the fetcher with its queue, able to fetch, and observing the app's activity.
    static std::shared_ptr<QuotaFetcher> create();
    ~QuotaFetcher();
    QuotaFetcher(const QuotaFetcher&) = delete;
    QuotaFetcher& operator=(const QuotaFetcher&) = delete;

    // (Re)starts the timer: a fetch at once, then one every `interval` seconds (1 s leeway). A
    // new call replaces the previous schedule.
    void runWithInterval(double interval);
    // One fetch; runs on the fetcher's queue.
    void performFetch();
    // Keeps the answer and tells the delegate; main thread.
    void notify(quint64 freeBytes);

    void didBecomeActiveNotification(const Notification& notification);
    void willResignActiveNotification(const Notification& notification);

    bool canFetch() const { return canFetch_.load(std::memory_order_relaxed); }
    void setCanFetch(bool canFetch) { canFetch_.store(canFetch, std::memory_order_relaxed); }
    std::shared_ptr<QuotaFetcherDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<QuotaFetcherDelegate>& delegate) { delegate_ = delegate; }
    DispatchQueuePtr queue() const { return queue_; }
    std::shared_ptr<DispatchTimer> timer() const { return timer_; }
    quint64 freeBytes() const { return freeBytes_; }

private:
    QuotaFetcher();

    std::atomic<bool> canFetch_{true};
    std::weak_ptr<QuotaFetcherDelegate> delegate_;  // main thread
    const DispatchQueuePtr queue_;
    std::shared_ptr<DispatchTimer> timer_;  // the thread that calls runWithInterval (main)
    quint64 freeBytes_ = 0;                 // main thread
    NotificationCenter::TokenPtr becameActiveObserver_;
    NotificationCenter::TokenPtr willResignObserver_;
};

}  // namespace vl
