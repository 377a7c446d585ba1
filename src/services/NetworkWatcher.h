#pragma once

#include "platform/cloud/ReachabilityMonitor.h"
#include "platform/dispatch/Dispatch.h"

#include <QString>

#include <atomic>
#include <memory>

namespace vl {

// The network state of the device, kept from the reachability monitor: unknown, not connected,
// Wi-Fi or cellular. No notification is posted when it changes; users read it when they need it.
//
// Threading: `start` and `stop` run on the main thread and alone touch `reachability_` and
// `queue_`; the reachability callbacks run on `queue_`. The flag word and the state are atomics,
// read from any thread without a lock.
class NetworkWatcher {
public:
    using NetworkState = unsigned long;
    static constexpr NetworkState NetworkStateUnknown = 0;
    static constexpr NetworkState NetworkStateNotConnected = 1;
    static constexpr NetworkState NetworkStateWiFi = 2;
    static constexpr NetworkState NetworkStateCellular = 3;

    static constexpr const char* QueueLabel = "com.tessaly.VelloraApp.networkwatcher";
    // The host the reachability monitor probes.
    static constexpr const char* ProbeHostName = "nimbra.tessaly.com";

    // The process-wide watcher, made on first use; it lives until the process ends.
    static NetworkWatcher& sharedNetworkWatcher();

    NetworkWatcher();
    ~NetworkWatcher();
    NetworkWatcher(const NetworkWatcher&) = delete;
    NetworkWatcher& operator=(const NetworkWatcher&) = delete;

    // Begins watching; does nothing when already started. No reading is taken here: the state
    // stays as it is until the monitor's first callback.
    void start();
    // Ends watching and goes back to the unknown state, as if never started: the next start
    // makes a new monitor and queue (tests stop the process-wide watcher after each test).
    void stop();

    NetworkState networkState() const { return networkState_.load(std::memory_order_relaxed); }
    bool isConnected() const;
    ReachabilityMonitor::Flags reachabilityFlags() const {
        return reachabilityFlags_.load(std::memory_order_relaxed);
    }

    static QString descriptionForNetworkState(NetworkState state);
    // Sets the state, logging the change when it differs from the current one.
    void updateState(NetworkState state);

private:
    static void reachabilityCallback(ReachabilityMonitor::Flags flags, void* context);
    void reachabilityFlagsChanged(ReachabilityMonitor::Flags flags);

    DispatchQueuePtr queue_;                             // main thread only; set while started
    std::unique_ptr<ReachabilityMonitor> reachability_;  // main thread only
    std::atomic<ReachabilityMonitor::Flags> reachabilityFlags_{0};
    std::atomic<NetworkState> networkState_{NetworkStateUnknown};
};

}  // namespace vl
