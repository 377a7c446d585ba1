#include "platform/cloud/CloudDocuments.h"

#include <QtGlobal>

#include <mutex>

namespace vl {

namespace {

std::mutex& installedMutex() {
    static std::mutex mutex;
    return mutex;
}

// Guarded by installedMutex().
std::shared_ptr<CloudDocuments>& installed() {
    static std::shared_ptr<CloudDocuments> instance;
    return instance;
}

}  // namespace

CloudDocuments& CloudDocuments::shared() {
    std::lock_guard lock(installedMutex());
    if (!installed()) {
        qFatal("No CloudDocuments is installed");
    }
    return *installed();
}

void CloudDocuments::setShared(std::shared_ptr<CloudDocuments> service) {
    std::lock_guard lock(installedMutex());
    installed() = std::move(service);
}

bool CloudDocuments::isInstalled() {
    std::lock_guard lock(installedMutex());
    return installed() != nullptr;
}

}  // namespace vl
