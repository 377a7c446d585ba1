#include "drive/network/DriveReachabilityMonitor.h"

#include "drive/network/NetworkStateSource.h"
#include "logging/VLLogging.h"

#include <QUrl>

#include <mutex>

namespace vl {

struct DriveReachabilityMonitor::Delivery {
    // Held across one whole start or stop of listening, so that two threads setting the callback
    // and the queue at once can't both start listening.
    std::mutex listeningMutex;
    std::mutex mutex;
    Callback callback;          // guarded by mutex
    void* context = nullptr;    // guarded by mutex
    DispatchQueuePtr queue;     // guarded by mutex
    quint64 generation = 0;     // guarded by mutex; bumped by every change of the three above
    quint64 listenerToken = 0;  // guarded by mutex; 0 = not listening

    // Queues one call of the current callback with `flags`; caller holds mutex.
    void postLocked(Flags flags, const std::shared_ptr<Delivery>& self) {
        if (!callback || !queue) {
            return;
        }
        queue->async([weak = std::weak_ptr<Delivery>(self), flags, expected = generation] {
            auto strong = weak.lock();
            if (!strong) {
                return;
            }
            Callback toCall;
            void* context = nullptr;
            {
                std::lock_guard lock(strong->mutex);
                if (strong->generation != expected) {
                    return;
                }
                toCall = strong->callback;
                context = strong->context;
            }
            toCall(flags, context);
        });
    }
};

void DriveReachabilityMonitor::install(const DriveHome& home) {
    ReachabilityMonitor::setFactory(
        [home](const QString& hostName) -> std::unique_ptr<ReachabilityMonitor> {
            if (!isValidHostName(hostName)) {
                VLLOG(4, "Not a host name to probe: %@", hostName);
                return nullptr;
            }
            return std::make_unique<DriveReachabilityMonitor>(hostName,
                                                              NetworkStateSource::forHome(home));
        });
}

bool DriveReachabilityMonitor::isValidHostName(const QString& hostName) {
    if (hostName.isEmpty() || hostName.size() > 253) {
        return false;
    }
    for (const QChar c : hostName) {
        if (c.isSpace() || c == QLatin1Char('/') || c == QLatin1Char(':') ||
            c == QLatin1Char('@')) {
            return false;
        }
    }
    return !QUrl::toAce(hostName).isEmpty();
}

DriveReachabilityMonitor::DriveReachabilityMonitor(QString hostName,
                                                   std::shared_ptr<NetworkStateSource> source)
    : hostName_(std::move(hostName)),
      source_(std::move(source)),
      delivery_(std::make_shared<Delivery>()) {}

DriveReachabilityMonitor::~DriveReachabilityMonitor() {
    quint64 token = 0;
    {
        std::lock_guard lock(delivery_->mutex);
        token = delivery_->listenerToken;
        delivery_->listenerToken = 0;
        ++delivery_->generation;
        delivery_->callback = nullptr;
    }
    if (token) {
        source_->removeListener(token);
    }
}

bool DriveReachabilityMonitor::setCallback(Callback callback, void* context) {
    {
        std::lock_guard lock(delivery_->mutex);
        delivery_->callback = std::move(callback);
        delivery_->context = delivery_->callback ? context : nullptr;
        ++delivery_->generation;
    }
    updateListening();
    return true;
}

bool DriveReachabilityMonitor::setDispatchQueue(DispatchQueuePtr queue) {
    {
        std::lock_guard lock(delivery_->mutex);
        delivery_->queue = std::move(queue);
        ++delivery_->generation;
    }
    updateListening();
    return true;
}

void DriveReachabilityMonitor::updateListening() {
    std::lock_guard listening(delivery_->listeningMutex);
    quint64 toRemove = 0;
    bool startListening = false;
    {
        std::lock_guard lock(delivery_->mutex);
        const bool wanted = delivery_->callback && delivery_->queue;
        if (!wanted && delivery_->listenerToken) {
            toRemove = delivery_->listenerToken;
            delivery_->listenerToken = 0;
        }
        startListening = wanted && !delivery_->listenerToken;
    }
    if (toRemove) {
        source_->removeListener(toRemove);
    }
    if (!startListening) {
        // A new callback or queue while listening: the first call on it carries the flags now.
        std::lock_guard lock(delivery_->mutex);
        if (delivery_->listenerToken) {
            delivery_->postLocked(source_->flags(), delivery_);
        }
        return;
    }
    const quint64 token =
        source_->addListener([weak = std::weak_ptr<Delivery>(delivery_)](Flags flags) {
            if (auto delivery = weak.lock()) {
                std::lock_guard lock(delivery->mutex);
                delivery->postLocked(flags, delivery);
            }
        });
    std::lock_guard lock(delivery_->mutex);
    delivery_->listenerToken = token;
    delivery_->postLocked(source_->flags(), delivery_);
}

ReachabilityMonitor::Flags DriveReachabilityMonitor::flags() const {
    return source_->flags();
}

}  // namespace vl
