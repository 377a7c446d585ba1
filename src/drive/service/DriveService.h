#pragma once

#include "drive/store/DriveStore.h"

#include <QString>

#include <memory>

namespace vl {

class CloudAccountService;
class CloudDocumentsService;
class DriveCoordinationBackend;
class KeyValueStoreService;
class PinnedContentKeeper;

// Creates the drive service of one home and installs its implementations behind the platform
// contracts. The app calls install() once at start-up; tests call it on a temporary home.
class DriveService {
public:
    // Prepares the home (its folders and default container) and installs every service; the
    // returned object keeps them. Installing again replaces the previous services. When the
    // application object goes, the service installed last stops watching.
    static std::shared_ptr<DriveService> install(const QString& homePath);
    // The same in two steps. The first prepares the home alone and may run on any thread: the app
    // runs it on another core while Qt connects to the display, since repairing what an
    // interrupted operation left behind looks at every item of the drive. The second installs the
    // services over that store.
    static std::shared_ptr<DriveStore> prepareStore(const QString& homePath);
    static std::shared_ptr<DriveService> install(std::shared_ptr<DriveStore> store);
    // The service installed last, or null.
    static std::shared_ptr<DriveService> current();

    explicit DriveService(std::shared_ptr<DriveStore> store);
    ~DriveService();

    const std::shared_ptr<DriveStore>& store() const { return store_; }
    const std::shared_ptr<CloudDocumentsService>& documents() const { return documents_; }
    const std::shared_ptr<CloudAccountService>& account() const { return account_; }
    const std::shared_ptr<KeyValueStoreService>& keyValueStore() const { return keyValueStore_; }

    // Stops the threads that watch the home and the drive, so that none of them acts while the
    // process tears down its static objects. Main thread.
    void stopWatching();

private:
    void installShared();

    std::shared_ptr<DriveStore> store_;
    std::shared_ptr<CloudDocumentsService> documents_;
    std::shared_ptr<CloudAccountService> account_;
    std::shared_ptr<KeyValueStoreService> keyValueStore_;
    std::shared_ptr<DriveCoordinationBackend> coordination_;  // set by installShared
    std::shared_ptr<PinnedContentKeeper> keeper_;             // set by installShared
};

}  // namespace vl
