#include "services/NetworkIndicator.h"

#include "platform/app/NetworkActivityIndicator.h"

namespace vl {

NetworkIndicator& NetworkIndicator::sharedNetworkIndicator() {
    static NetworkIndicator* const shared = new NetworkIndicator;
    return *shared;
}

void NetworkIndicator::show(const QString& identifier) {
    std::lock_guard lock(mutex_);
    if (ids_.contains(identifier)) {
        return;
    }
    if (ids_.isEmpty()) {
        NetworkActivityIndicator::shared().setNetworkActivityIndicatorVisible(true);
    }
    ids_.insert(identifier);
}

void NetworkIndicator::hide(const QString& identifier) {
    std::lock_guard lock(mutex_);
    if (!ids_.remove(identifier)) {
        return;
    }
    if (ids_.isEmpty()) {
        NetworkActivityIndicator::shared().setNetworkActivityIndicatorVisible(false);
    }
}

}  // namespace vl
