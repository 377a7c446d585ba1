#pragma once

#include "drive/store/DriveHome.h"
#include "platform/cloud/ReachabilityMonitor.h"

#include <memory>

namespace vl {

class NetworkStateSource;

// The reachability monitor of the drive service: the flags of its home's NetworkStateSource
// (the service.json override, else the machine's state), delivered on the monitor's queue. The
// probe host is only checked for being a host name: the state is the machine's, not one route's.
class DriveReachabilityMonitor : public ReachabilityMonitor {
public:
    // Installs the factory that makes monitors for this home.
    static void install(const DriveHome& home);
    static bool isValidHostName(const QString& hostName);

    DriveReachabilityMonitor(QString hostName, std::shared_ptr<NetworkStateSource> source);
    ~DriveReachabilityMonitor() override;

    bool setCallback(Callback callback, void* context) override;
    bool setDispatchQueue(DispatchQueuePtr queue) override;
    Flags flags() const override;

    const QString& hostName() const { return hostName_; }

private:
    struct Delivery;

    // Starts or stops listening as callback and queue come and go; the first delivery after both
    // are set carries the current flags.
    void updateListening();

    const QString hostName_;
    const std::shared_ptr<NetworkStateSource> source_;
    // Shared with blocks in flight on the queue, so that they outlive the monitor safely and
    // drop deliveries meant for a callback that has since been replaced or removed.
    const std::shared_ptr<Delivery> delivery_;
};

}  // namespace vl
