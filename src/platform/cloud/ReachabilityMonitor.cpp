#include "platform/cloud/ReachabilityMonitor.h"

#include <mutex>

namespace vl {

namespace {

std::mutex factoryMutex;
ReachabilityMonitor::Factory installedFactory;  // guarded by factoryMutex

}  // namespace

std::unique_ptr<ReachabilityMonitor> ReachabilityMonitor::createWithName(const QString& hostName) {
    Factory factory;
    {
        std::lock_guard lock(factoryMutex);
        factory = installedFactory;
    }
    if (!factory || hostName.isEmpty()) {
        return nullptr;
    }
    return factory(hostName);
}

void ReachabilityMonitor::setFactory(Factory factory) {
    std::lock_guard lock(factoryMutex);
    installedFactory = std::move(factory);
}

}  // namespace vl
