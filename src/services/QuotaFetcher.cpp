#include "services/QuotaFetcher.h"

#include "logging/VLLogging.h"
#include "platform/cloud/CloudAccount.h"
#include "services/NetworkWatcher.h"
#include "services/QuotaFetcherDelegate.h"

#include <cmath>

namespace vl {

std::shared_ptr<QuotaFetcher> QuotaFetcher::create() {
    std::shared_ptr<QuotaFetcher> fetcher(new QuotaFetcher);
    NotificationCenter& center = NotificationCenter::defaultCenter();
    const std::weak_ptr<QuotaFetcher> weak = fetcher;
    fetcher->becameActiveObserver_ =
        center.addObserver(Notifications::ApplicationDidBecomeActive, Dispatch::mainQueue(),
                           [weak](const Notification& notification) {
                               if (std::shared_ptr<QuotaFetcher> self = weak.lock()) {
                                   self->didBecomeActiveNotification(notification);
                               }
                           });
    fetcher->willResignObserver_ =
        center.addObserver(Notifications::ApplicationWillResignActive, Dispatch::mainQueue(),
                           [weak](const Notification& notification) {
                               if (std::shared_ptr<QuotaFetcher> self = weak.lock()) {
                                   self->willResignActiveNotification(notification);
                               }
                           });
    return fetcher;
}

QuotaFetcher::QuotaFetcher()
    : queue_(Dispatch::serialQueue(QString::fromLatin1(QueueLabel), QualityOfService::Utility)) {}

QuotaFetcher::~QuotaFetcher() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.removeObserver(becameActiveObserver_);
    center.removeObserver(willResignObserver_);
    if (timer_) {
        timer_->cancel();
    }
}

void QuotaFetcher::runWithInterval(double interval) {
    if (timer_) {
        timer_->cancel();
        timer_.reset();
    }
    timer_ = DispatchTimer::create(queue_);
    timer_->setEventHandler(Dispatch::weakBlock(
        shared_from_this(),
        [](const std::shared_ptr<QuotaFetcher>& self) { self->performFetch(); }));
    const auto period = DispatchDuration(static_cast<qint64>(std::llround(interval * 1e9)));
    timer_->schedule(queue_->now(), period, std::chrono::seconds(1));
    timer_->resume();
}

void QuotaFetcher::performFetch() {
    if (!canFetch() || !NetworkWatcher::sharedNetworkWatcher().isConnected()) {
        VLLOG(7, "Not fetching quota. Background or offline");
        return;
    }
    if (!CloudAccount::isInstalled()) {
        VLLOG(4, "can't update quota: %@", QStringLiteral("no cloud account service"));
        return;
    }
    const std::weak_ptr<QuotaFetcher> weak = weak_from_this();
    CloudAccount::shared().performQuotaOperation(
        [weak](quint64 freeBytes, std::optional<Error> error) {
            if (error) {
                VLLOG(4, "can't update quota: %@", *error);
                return;
            }
            Dispatch::mainQueue()->async([weak, freeBytes] {
                if (std::shared_ptr<QuotaFetcher> self = weak.lock()) {
                    self->notify(freeBytes);
                }
            });
        });
}

void QuotaFetcher::notify(quint64 freeBytes) {
    freeBytes_ = freeBytes;
    if (std::shared_ptr<QuotaFetcherDelegate> d = delegate()) {
        d->quotaFetcherDidUpdateValue(shared_from_this(), freeBytes_);
    }
}

void QuotaFetcher::didBecomeActiveNotification(const Notification&) {
    VLLOG(6, "AppDidBecomeActiveNotification (quota)");
    setCanFetch(true);
}

void QuotaFetcher::willResignActiveNotification(const Notification&) {
    VLLOG(6, "AppWillResignActiveNotification (quota)");
    setCanFetch(false);
}

}  // namespace vl
