#include "preview/PreviewItemManager.h"

#include "model/VLItem.h"
#include "platform/cloud/FileCoordinator.h"

namespace vl {

std::optional<Url> PreviewItemManager::presentedItemURL() const {
    std::lock_guard guard(lock_);
    return presentedURL_;
}

bool PreviewItemManager::filePresenterRegistered() const {
    std::lock_guard guard(lock_);
    return filePresenterRegistered_;
}

void PreviewItemManager::registerAsFilePresenter() {
    // The registry holds presenters weakly, so only a manager owned by a shared pointer can be
    // one; without a coordination service there is nothing to hear.
    const std::shared_ptr<PreviewItemManager> self = weak_from_this().lock();
    if (!self || !FileCoordinator::Backend::isInstalled()) {
        return;
    }
    std::lock_guard guard(lock_);
    if (!filePresenterRegistered_) {
        FileCoordinator::addFilePresenter(self);
        filePresenterRegistered_ = true;
    }
}

void PreviewItemManager::unregisterAsFilePresenter() {
    std::lock_guard guard(lock_);
    if (filePresenterRegistered_) {
        FileCoordinator::removeFilePresenter(this);
        filePresenterRegistered_ = false;
    }
}

void PreviewItemManager::storeItem(const std::shared_ptr<VLItem>& item) {
    item_ = item;
    std::lock_guard guard(lock_);
    presentedURL_ = item ? std::optional<Url>(item->url()) : std::nullopt;
}

}  // namespace vl
