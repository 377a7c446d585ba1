#include "drive/service/DriveService.h"

#include "drive/coordination/DriveCoordinationBackend.h"
#include "drive/network/DriveReachabilityMonitor.h"
#include "drive/service/CloudAccountService.h"
#include "drive/service/CloudDocumentsService.h"
#include "drive/service/KeyValueStoreService.h"
#include "drive/service/PinnedContentKeeper.h"
#include "logging/VLLogging.h"

#include <QCoreApplication>

#include <mutex>

namespace vl {

namespace {

std::mutex& currentMutex() {
    static std::mutex mutex;
    return mutex;
}

// Guarded by currentMutex().
std::shared_ptr<DriveService>& currentService() {
    static std::shared_ptr<DriveService> service;
    return service;
}

}  // namespace

std::shared_ptr<DriveStore> DriveService::prepareStore(const QString& homePath) {
    auto store = std::make_shared<DriveStore>(DriveHome(homePath));
    if (std::optional<Error> error = store->prepare()) {
        VLLOG(3, "Failed to prepare drive home %@: %@", homePath, *error);
    }
    return store;
}

DriveService::DriveService(std::shared_ptr<DriveStore> store) : store_(std::move(store)) {
    documents_ = std::make_shared<CloudDocumentsService>(store_);
    account_ = std::make_shared<CloudAccountService>(store_);
    keyValueStore_ = std::make_shared<KeyValueStoreService>(store_);
}

DriveService::~DriveService() {
    if (keeper_) {
        keeper_->stop();
    }
}

std::shared_ptr<DriveService> DriveService::install(const QString& homePath) {
    return install(prepareStore(homePath));
}

std::shared_ptr<DriveService> DriveService::install(std::shared_ptr<DriveStore> store) {
    static std::once_flag stopAtExit;
    std::call_once(stopAtExit, [] {
        qAddPostRoutine([] {
            if (const std::shared_ptr<DriveService> service = current()) {
                service->stopWatching();
            }
        });
    });
    auto service = std::make_shared<DriveService>(std::move(store));
    service->installShared();
    VLLOG(6, "Drive service installed for %@", service->store_->home().rootPath());
    std::lock_guard lock(currentMutex());
    currentService() = service;
    return service;
}

std::shared_ptr<DriveService> DriveService::current() {
    std::lock_guard lock(currentMutex());
    return currentService();
}

void DriveService::stopWatching() {
    account_->stopWatching();
    keyValueStore_->stopWatching();
    if (keeper_) {
        keeper_->stop();
    }
    if (coordination_) {
        coordination_->stopWatching();
    }
}

void DriveService::installShared() {
    CloudDocuments::setShared(documents_);
    CloudAccount::setShared(account_);
    KeyValueStore::setShared(keyValueStore_);
    coordination_ = DriveCoordinationBackend::install(store_);
    DriveReachabilityMonitor::install(store_->home());
    keeper_ = std::make_shared<PinnedContentKeeper>(store_);
    keeper_->start();
}

}  // namespace vl
