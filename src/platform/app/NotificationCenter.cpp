#include "platform/app/NotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace vl {

class NotificationCenter::Token {
public:
    Token(QString name, DispatchQueuePtr queue, Observer observer)
        : name(std::move(name)),
          queue(std::move(queue)),
          observer(std::make_shared<const Observer>(std::move(observer))) {}

    const QString name;
    const DispatchQueuePtr queue;
    // Shared with queued deliveries so that a block already on a queue can still run it.
    const std::shared_ptr<const Observer> observer;
    // Cleared on removal; a queued delivery checks it right before calling the observer.
    const std::shared_ptr<std::atomic<bool>> alive = std::make_shared<std::atomic<bool>>(true);
};

struct NotificationCenter::Registry {
    std::mutex mutex;
    std::vector<TokenPtr> tokens;  // guarded by mutex; in order of registration
};

NotificationCenter::NotificationCenter() : registry_(std::make_shared<Registry>()) {}

NotificationCenter::~NotificationCenter() {
    // Deliveries still queued elsewhere must not run for a center that is gone.
    std::lock_guard lock(registry_->mutex);
    for (const TokenPtr& token : registry_->tokens) {
        token->alive->store(false);
    }
}

NotificationCenter& NotificationCenter::defaultCenter() {
    // Never destroyed: observers may be removed and notifications posted during static teardown.
    static NotificationCenter* center = new NotificationCenter();
    return *center;
}

NotificationCenter::TokenPtr NotificationCenter::addObserver(const QString& name,
                                                             DispatchQueuePtr queue,
                                                             Observer observer) {
    if (!observer) {
        return nullptr;
    }
    auto token = std::make_shared<Token>(name, std::move(queue), std::move(observer));
    std::lock_guard lock(registry_->mutex);
    registry_->tokens.push_back(token);
    return token;
}

void NotificationCenter::removeObserver(const TokenPtr& token) {
    if (!token) {
        return;
    }
    token->alive->store(false);
    std::lock_guard lock(registry_->mutex);
    auto& tokens = registry_->tokens;
    tokens.erase(std::remove(tokens.begin(), tokens.end(), token), tokens.end());
}

void NotificationCenter::post(const QString& name, const QVariantMap& userInfo) {
    post(Notification{name, userInfo});
}

void NotificationCenter::post(const Notification& notification) {
    // Observers run outside the lock so that they may add or remove observers and post again.
    std::vector<TokenPtr> matching;
    {
        std::lock_guard lock(registry_->mutex);
        for (const TokenPtr& token : registry_->tokens) {
            if (token->name == notification.name) {
                matching.push_back(token);
            }
        }
    }
    for (const TokenPtr& token : matching) {
        if (!token->alive->load()) {
            continue;  // removed by an observer that ran before it in this post
        }
        if (token->queue) {
            token->queue->async([alive = token->alive, observer = token->observer, notification]() {
                if (alive->load()) {
                    (*observer)(notification);
                }
            });
        } else {
            (*token->observer)(notification);
        }
    }
}

}  // namespace vl
