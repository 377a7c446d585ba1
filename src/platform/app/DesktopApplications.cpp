#include "platform/app/DesktopApplications.h"

#include "platform/app/GioDesktopApplications.h"

#include <mutex>

namespace vl {

namespace {

std::mutex installedMutex;
std::shared_ptr<DesktopApplications> installed;  // guarded by installedMutex

}  // namespace

DesktopApplications& DesktopApplications::shared() {
    std::lock_guard lock(installedMutex);
    if (!installed) {
        installed = std::make_shared<GioDesktopApplications>();
    }
    return *installed;
}

void DesktopApplications::setShared(std::shared_ptr<DesktopApplications> applications) {
    std::lock_guard lock(installedMutex);
    installed = std::move(applications);
}

}  // namespace vl
