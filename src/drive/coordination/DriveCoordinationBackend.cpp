#include "drive/coordination/DriveCoordinationBackend.h"

#include "drive/coordination/DriveCoordinationSession.h"
#include "drive/store/DriveStore.h"

namespace vl {

DriveCoordinationBackend::DriveCoordinationBackend(std::shared_ptr<DriveStore> store)
    : store_(std::move(store)),
      presenters_(std::make_shared<PresenterRegistry>()),
      watcher_(store_->home().driveDir(),
               [registry = presenters_](const DriveChange& change) { registry->deliver(change); }),
      downloader_(store_, locks_, watcher_, presenters_) {}

DriveCoordinationBackend::~DriveCoordinationBackend() {
    watcher_.stop();
}

std::shared_ptr<DriveCoordinationBackend> DriveCoordinationBackend::install(
    std::shared_ptr<DriveStore> store) {
    auto backend = std::make_shared<DriveCoordinationBackend>(std::move(store));
    backend->startWatching();
    FileCoordinator::Backend::setShared(backend);
    return backend;
}

bool DriveCoordinationBackend::startWatching() {
    return watcher_.start();
}

void DriveCoordinationBackend::stopWatching() {
    watcher_.stop();
}

void DriveCoordinationBackend::waitUntilExternalChangesDelivered() {
    watcher_.waitUntilDelivered();
}

std::unique_ptr<FileCoordinator::Session> DriveCoordinationBackend::makeSession(
    const FilePresenter* filePresenter) {
    return std::make_unique<DriveCoordinationSession>(shared_from_this(), filePresenter);
}

void DriveCoordinationBackend::addFilePresenter(
    const std::shared_ptr<FilePresenter>& filePresenter) {
    presenters_->add(filePresenter);
}

void DriveCoordinationBackend::removeFilePresenter(const FilePresenter* filePresenter) {
    presenters_->remove(filePresenter);
}

std::vector<std::shared_ptr<FilePresenter>> DriveCoordinationBackend::filePresenters() const {
    return presenters_->presenters();
}

}  // namespace vl
