#include "services/NetworkWatcher.h"

#include "logging/VLLogging.h"

#include <QCoreApplication>

namespace vl {

NetworkWatcher& NetworkWatcher::sharedNetworkWatcher() {
    // Never destroyed: reachability callbacks may still be queued while the process exits. It
    // stops listening when the application object goes, before static objects are torn down.
    static NetworkWatcher* const shared = [] {
        auto* watcher = new NetworkWatcher;
        qAddPostRoutine([] { sharedNetworkWatcher().stop(); });
        return watcher;
    }();
    return *shared;
}

NetworkWatcher::NetworkWatcher() = default;

NetworkWatcher::~NetworkWatcher() {
    stop();
}

void NetworkWatcher::start() {
    if (reachability_) {
        return;
    }
    // The queue comes from the dispatcher installed now, not the one installed when the watcher
    // was made: the process-wide watcher outlives the dispatchers tests install.
    queue_ = Dispatch::serialQueue(QString::fromLatin1(QueueLabel));
    reachability_ = ReachabilityMonitor::createWithName(QString::fromLatin1(ProbeHostName));
    if (!reachability_) {
        VLLOG(3, "Couldn't create reachability object");
        reachabilityFlags_ = 0;
        updateState(NetworkStateNotConnected);
        return;
    }
    // The handle is kept even when this fails, so that a later start does not try again.
    if (!reachability_->setCallback(&NetworkWatcher::reachabilityCallback, this) ||
        !reachability_->setDispatchQueue(queue_)) {
        VLLOG(3, "Couldn't set reachability callback or queue");
        reachabilityFlags_ = 0;
        updateState(NetworkStateNotConnected);
    }
}

void NetworkWatcher::stop() {
    if (!reachability_) {
        return;
    }
    reachability_->setCallback({}, nullptr);
    reachability_->setDispatchQueue(nullptr);
    reachability_.reset();
    // A callback already running finishes before the state is reset, so it can't overwrite it.
    queue_->sync([] {});
    queue_.reset();
    reachabilityFlags_ = 0;
    networkState_ = NetworkStateUnknown;
}

bool NetworkWatcher::isConnected() const {
    const NetworkState state = networkState();
    return state == NetworkStateWiFi || state == NetworkStateCellular;
}

QString NetworkWatcher::descriptionForNetworkState(NetworkState state) {
    switch (state) {
        case NetworkStateUnknown:
            return QStringLiteral("unknown");
        case NetworkStateNotConnected:
            return QStringLiteral("not connected");
        case NetworkStateWiFi:
            return QStringLiteral("connected to Wi-Fi");
        case NetworkStateCellular:
            return QStringLiteral("connected to cellular");
        default:
            return format("??? (%lu)", state);
    }
}

void NetworkWatcher::updateState(NetworkState state) {
    if (state != networkState()) {
        VLLOG(6, "Network state changed to %@", descriptionForNetworkState(state));
    }
    networkState_ = state;
}

void NetworkWatcher::reachabilityCallback(ReachabilityMonitor::Flags flags, void* context) {
    static_cast<NetworkWatcher*>(context)->reachabilityFlagsChanged(flags);
}

void NetworkWatcher::reachabilityFlagsChanged(ReachabilityMonitor::Flags flags) {
    VLLOG(6, "Network reachability flags changed to 0x%x", flags);
    reachabilityFlags_ = flags;
    NetworkState state = NetworkStateNotConnected;
    if (flags & ReachabilityMonitor::Reachable) {
        state = (flags & ReachabilityMonitor::IsWWAN) ? NetworkStateCellular : NetworkStateWiFi;
    }
    updateState(state);
}

}  // namespace vl
