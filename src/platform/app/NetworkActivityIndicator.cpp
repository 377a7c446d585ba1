#include "platform/app/NetworkActivityIndicator.h"

#include "platform/dispatch/Dispatch.h"

#include <algorithm>

namespace vl {

NetworkActivityIndicator& NetworkActivityIndicator::shared() {
    static NetworkActivityIndicator indicator;
    return indicator;
}

bool NetworkActivityIndicator::isNetworkActivityIndicatorVisible() const {
    std::lock_guard lock(mutex_);
    return visible_;
}

void NetworkActivityIndicator::setNetworkActivityIndicatorVisible(bool visible) {
    std::vector<std::weak_ptr<Observer>> observers;
    {
        std::lock_guard lock(mutex_);
        if (visible_ == visible) {
            return;
        }
        visible_ = visible;
        std::erase_if(observers_, [](const std::weak_ptr<Observer>& o) { return o.expired(); });
        observers = observers_;
    }
    // Posting under no lock keeps an observer free to set the indicator again; the main queue is
    // serial, so observers see the changes in the order they were made.
    for (const std::weak_ptr<Observer>& weak : observers) {
        Dispatch::mainQueue()->async([weak, visible] {
            if (std::shared_ptr<Observer> observer = weak.lock()) {
                (*observer)(visible);
            }
        });
    }
}

NetworkActivityIndicator::ObserverToken NetworkActivityIndicator::addObserver(Observer observer) {
    auto shared = std::make_shared<Observer>(std::move(observer));
    std::lock_guard lock(mutex_);
    observers_.push_back(shared);
    return shared;
}

}  // namespace vl
