#pragma once

#include "platform/dispatch/Dispatch.h"

#include <QString>

#include <functional>
#include <memory>

namespace vl {

// The reachability monitor: the network path to a remote host, as a word of flags, reported to a
// callback on a dispatch queue whenever it changes.
//
// A handle is made for a host name (the probe target) and does nothing until it has both a
// callback and a queue; from then on the callback runs on that queue with the current flags (once
// soon after both are set, then after every change). Removing either stops the callbacks.
//
// Handles come from the installed factory (the drive service installs one); with none installed,
// or for a host name that can't be probed, creation fails.
class ReachabilityMonitor {
public:
    using Flags = quint32;
    static constexpr Flags Reachable = 0x2;
    // The route goes through the cellular network.
    static constexpr Flags IsWWAN = 0x40000;

    // Runs on the monitor's queue with the new flags and the context given with it. The context
    // is not retained: its owner removes the callback before it goes away.
    using Callback = std::function<void(Flags flags, void* context)>;
    using Factory = std::function<std::unique_ptr<ReachabilityMonitor>(const QString& hostName)>;

    // A monitor for the host, or null when it can't be made.
    static std::unique_ptr<ReachabilityMonitor> createWithName(const QString& hostName);
    static void setFactory(Factory factory);

    virtual ~ReachabilityMonitor() = default;

    // Sets the callback, or removes it with an empty one. False when it can't be set.
    virtual bool setCallback(Callback callback, void* context) = 0;
    // Sets the queue of the callbacks, or removes it with null. False when it can't be set.
    virtual bool setDispatchQueue(DispatchQueuePtr queue) = 0;
    // The flags now, read synchronously.
    virtual Flags flags() const = 0;
};

}  // namespace vl
