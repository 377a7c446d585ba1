#pragma once

#include "drive/coordination/PathLockTable.h"
#include "drive/coordination/PresenterRegistry.h"
#include "drive/service/ItemDownloader.h"
#include "drive/watch/DriveChangeWatcher.h"
#include "platform/cloud/FileCoordinator.h"

#include <memory>

namespace vl {

class DriveStore;

// File coordination for one drive home: the path locks every coordinator shares, the registered
// presenters, the downloads of cloud-only items and the watcher that brings other processes'
// changes to the presenters. Sessions (one per FileCoordinator) keep it alive.
class DriveCoordinationBackend : public FileCoordinator::Backend,
                                 public std::enable_shared_from_this<DriveCoordinationBackend> {
public:
    explicit DriveCoordinationBackend(std::shared_ptr<DriveStore> store);
    ~DriveCoordinationBackend() override;

    // Makes a backend for the store, starts its watcher and installs it behind FileCoordinator.
    static std::shared_ptr<DriveCoordinationBackend> install(std::shared_ptr<DriveStore> store);

    // False when inotify is not available: coordination still works, other processes' changes
    // go unnoticed.
    bool startWatching();
    void stopWatching();
    // Returns once the changes other processes made before the call have been handed to the
    // presenters' queues.
    void waitUntilExternalChangesDelivered();

    std::unique_ptr<FileCoordinator::Session> makeSession(
        const FilePresenter* filePresenter) override;
    void addFilePresenter(const std::shared_ptr<FilePresenter>& filePresenter) override;
    void removeFilePresenter(const FilePresenter* filePresenter) override;
    std::vector<std::shared_ptr<FilePresenter>> filePresenters() const override;

    DriveStore& store() { return *store_; }
    PathLockTable& locks() { return locks_; }
    PresenterRegistry& presenters() { return *presenters_; }
    DriveChangeWatcher& watcher() { return watcher_; }
    ItemDownloader& downloader() { return downloader_; }

private:
    std::shared_ptr<DriveStore> store_;
    std::shared_ptr<PresenterRegistry> presenters_;
    PathLockTable locks_;
    DriveChangeWatcher watcher_;
    ItemDownloader downloader_;
};

}  // namespace vl
