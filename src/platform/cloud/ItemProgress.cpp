#include "platform/cloud/ItemProgress.h"

#include <algorithm>

namespace vl {

class ItemProgress::Subscription {
public:
    Url url;
    PublishingHandler handler;
    bool active = true;
    // One entry per progress object this subscription was told of and not yet of its end.
    std::vector<std::pair<const ItemProgress*, UnpublishingHandler>> unpublishingHandlers;
};

namespace {

// Every change of the published set and every handler call happens under one recursive lock, so
// the handlers of one progress run in order and may call back into the registry.
struct Registry {
    std::recursive_mutex mutex;
    std::vector<ItemProgress::SubscriptionToken> subscriptions;
    std::vector<std::shared_ptr<ItemProgress>> published;
};

Registry& registry() {
    static Registry instance;
    return instance;
}

bool isPublished(const Registry& r, const ItemProgress* progress) {
    return std::any_of(r.published.begin(), r.published.end(),
                       [&](const auto& p) { return p.get() == progress; });
}

// Runs the publishing handler and keeps its answer, or runs the answer at once when the
// subscription or the publication ended while the handler ran.
void deliver(Registry& r, const ItemProgress::SubscriptionToken& subscription,
             const std::shared_ptr<ItemProgress>& progress) {
    ItemProgress::UnpublishingHandler unpublishing = subscription->handler(progress);
    if (subscription->active && isPublished(r, progress.get())) {
        subscription->unpublishingHandlers.emplace_back(progress.get(), std::move(unpublishing));
    } else if (unpublishing) {
        unpublishing();
    }
}

}  // namespace

std::shared_ptr<ItemProgress> ItemProgress::create(qint64 totalUnitCount) {
    std::shared_ptr<ItemProgress> progress(new ItemProgress());
    progress->total_ = totalUnitCount;
    return progress;
}

ItemProgress::~ItemProgress() = default;

QString ItemProgress::kind() const {
    std::lock_guard lock(mutex_);
    return kind_;
}

void ItemProgress::setKind(const QString& kind) {
    std::lock_guard lock(mutex_);
    kind_ = kind;
}

std::optional<Url> ItemProgress::fileURL() const {
    std::lock_guard lock(mutex_);
    return fileURL_;
}

void ItemProgress::setFileURL(const Url& url) {
    std::lock_guard lock(mutex_);
    fileURL_ = url;
}

void ItemProgress::setTotalUnitCount(qint64 total) {
    if (total_.exchange(total) != total) {
        notifyObservers();
    }
}

void ItemProgress::setCompletedUnitCount(qint64 completed) {
    if (completed_.exchange(completed) != completed) {
        notifyObservers();
    }
}

double ItemProgress::fractionCompleted() const {
    const qint64 total = total_.load();
    if (total <= 0) {
        return 0.0;
    }
    return double(completed_.load()) / double(total);
}

bool ItemProgress::isFinished() const {
    const qint64 total = total_.load();
    return total >= 0 && completed_.load() >= total;
}

ItemProgress::ObserverId ItemProgress::addFractionCompletedObserver(FractionObserver observer) {
    std::lock_guard lock(observersMutex_);
    const ObserverId id = nextObserverId_++;
    observers_.push_back({id, std::move(observer)});
    return id;
}

void ItemProgress::removeFractionCompletedObserver(ObserverId id) {
    std::lock_guard lock(observersMutex_);
    std::erase_if(observers_, [id](const Observation& o) { return o.id == id; });
}

void ItemProgress::notifyObservers() {
    std::lock_guard lock(observersMutex_);
    // A copy: observers may add or remove observers while they run.
    const std::vector<Observation> observers = observers_;
    for (const Observation& observation : observers) {
        const bool stillObserving =
            std::any_of(observers_.begin(), observers_.end(),
                        [&](const Observation& o) { return o.id == observation.id; });
        if (stillObserving) {
            observation.observer(*this);
        }
    }
}

void ItemProgress::publish() {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    const std::optional<Url> url = fileURL();
    if (!url || isPublished(r, this)) {
        return;
    }
    const std::shared_ptr<ItemProgress> self = shared_from_this();
    r.published.push_back(self);
    const auto subscriptions = r.subscriptions;
    for (const SubscriptionToken& subscription : subscriptions) {
        if (subscription->active && subscription->url.isAncestorOf(*url) && isPublished(r, this)) {
            deliver(r, subscription, self);
        }
    }
}

void ItemProgress::unpublish() {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    const auto it = std::find_if(r.published.begin(), r.published.end(),
                                 [this](const auto& p) { return p.get() == this; });
    if (it == r.published.end()) {
        return;
    }
    // Keeps this object alive until its handlers have run.
    const std::shared_ptr<ItemProgress> self = *it;
    r.published.erase(it);
    const auto subscriptions = r.subscriptions;
    for (const SubscriptionToken& subscription : subscriptions) {
        auto& handlers = subscription->unpublishingHandlers;
        const auto entry = std::find_if(handlers.begin(), handlers.end(),
                                        [this](const auto& h) { return h.first == this; });
        if (entry == handlers.end()) {
            continue;
        }
        UnpublishingHandler handler = std::move(entry->second);
        handlers.erase(entry);
        if (handler) {
            handler();
        }
    }
}

ItemProgress::SubscriptionToken ItemProgress::addSubscriberForFileURL(const Url& url,
                                                                      PublishingHandler handler) {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    auto subscription = std::make_shared<Subscription>();
    subscription->url = url;
    subscription->handler = std::move(handler);
    r.subscriptions.push_back(subscription);
    const auto published = r.published;
    for (const std::shared_ptr<ItemProgress>& progress : published) {
        const std::optional<Url> progressURL = progress->fileURL();
        if (subscription->active && progressURL && url.isAncestorOf(*progressURL) &&
            isPublished(r, progress.get())) {
            deliver(r, subscription, progress);
        }
    }
    return subscription;
}

void ItemProgress::removeSubscriber(const SubscriptionToken& token) {
    if (!token) {
        return;
    }
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    if (!token->active) {
        return;
    }
    token->active = false;
    std::erase(r.subscriptions, token);
    auto handlers = std::move(token->unpublishingHandlers);
    token->unpublishingHandlers.clear();
    for (auto& [progress, handler] : handlers) {
        if (handler) {
            handler();
        }
    }
}

QString ItemProgress::description() const {
    return QStringLiteral("<ItemProgress %1> kind: %2, completed: %3 of %4, fraction: %5")
        .arg(quintptr(this), 0, 16)
        .arg(kind())
        .arg(completedUnitCount())
        .arg(totalUnitCount())
        .arg(fractionCompleted(), 0, 'f', 4);
}

}  // namespace vl
