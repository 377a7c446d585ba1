#include "preview/PreviewItemManager.h"

#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "platform/cloud/FileCoordinator.h"
#include "preview/GlimpseItemController.h"
#include "preview/PreviewDetailsViewController.h"
#include "toolkit/NavigationController.h"

namespace vl {

std::optional<Url> PreviewItemManager::presentedItemURL() const {
    std::lock_guard guard(lock_);
    return presentedURL_;
}

bool PreviewItemManager::filePresenterRegistered() const {
    std::lock_guard guard(lock_);
    return filePresenterRegistered_;
}

bool PreviewItemManager::refreshPending() const {
    std::lock_guard guard(lock_);
    return refreshPending_;
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
    std::lock_guard guard(lock_);
    item_ = item;
    presentedURL_ = item ? std::optional<Url>(item->url()) : std::nullopt;
}

void PreviewItemManager::observeApplicationState() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    const std::weak_ptr<PreviewItemManager> weak = weak_from_this();
    becameActiveObserver_ =
        center.addObserver(Notifications::ApplicationDidBecomeActive, Dispatch::mainQueue(),
                           [weak](const Notification& notification) {
                               if (const auto self = weak.lock()) {
                                   self->didBecomeActiveNotification(notification);
                               }
                           });
    willResignObserver_ =
        center.addObserver(Notifications::ApplicationWillResignActive, Dispatch::mainQueue(),
                           [weak](const Notification& notification) {
                               if (const auto self = weak.lock()) {
                                   self->willResignActiveNotification(notification);
                               }
                           });
}

void PreviewItemManager::stopFollowing() {
    unregisterAsFilePresenter();
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.removeObserver(becameActiveObserver_);
    center.removeObserver(willResignObserver_);
}

void PreviewItemManager::didBecomeActiveNotification(const Notification&) {
    VLLOG(7, "Becoming active for %@", item_ ? item_->url() : Url());
    registerAsFilePresenter();
    // Nothing was heard while away (on a desktop, whenever another window had the focus): an
    // edit or a download made meanwhile shows once the usual refresh has looked again.
    if (item_) {
        scheduleRefresh();
    }
}

void PreviewItemManager::willResignActiveNotification(const Notification&) {
    VLLOG(7, "Resigning active for %@", item_ ? item_->url() : Url());
    unregisterAsFilePresenter();
}

void PreviewItemManager::presentedItemDidChange() {
    VLLOG(6, "%@ changed", presentedItemURL());
    scheduleRefresh();
}

void PreviewItemManager::scheduleRefresh() {
    {
        std::lock_guard guard(lock_);
        if (refreshPending_) {
            return;
        }
        refreshPending_ = true;
    }
    Dispatch::mainQueue()->after(RefreshDelay, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->refreshItem(self->item_ ? self->item_->url() : Url());
            std::lock_guard guard(self->lock_);
            self->refreshPending_ = false;
        }
    });
}

void PreviewItemManager::presentedItemDidMoveToURL(const Url& newURL) {
    VLLOG(6, "presentedItemDidMoveToURL: %@ changed to %@", presentedItemURL(), newURL);
    {
        // Whatever the drive tells next is about the new place, before the main queue has
        // caught up with the item.
        std::lock_guard guard(lock_);
        presentedURL_ = newURL;
    }
    Dispatch::mainQueue()->async([weak = weak_from_this(), newURL] {
        if (const auto self = weak.lock()) {
            self->refreshItem(newURL);
        }
    });
}

void PreviewItemManager::accommodatePresentedItemDeletionWithCompletionHandler(
    CompletionHandler completionHandler) {
    VLLOG(6, "%@ accommodate deletion", presentedItemURL());
    // Nothing holds the file open: the deletion may go ahead at once.
    completionHandler(std::nullopt);
    unregisterAsFilePresenter();
    // Held strongly: the preview leaves even when nobody else keeps the manager any more.
    Dispatch::mainQueue()->async([self = weak_from_this().lock()] {
        const std::shared_ptr<NavigationController> navigation =
            self ? self->navigationController() : nullptr;
        // Only a preview leaves: a folder list on top means the person has already gone back.
        if (navigation && isPreviewControllerDisplayed(navigation->topViewController())) {
            navigation->popViewControllerAnimated(true);
        }
    });
}

void PreviewItemManager::accommodatePresentedSubitemDeletionAtURLCompletionHandler(
    const Url& url, CompletionHandler completionHandler) {
    VLLOG(6, "%@ accommodate subitem deletion at %@", presentedItemURL(), url);
    completionHandler(std::nullopt);
    unregisterAsFilePresenter();
    Dispatch::mainQueue()->after(RefreshDelay, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            VLLOG(6, "Refreshing %@", self->item_ ? self->item_->url() : Url());
            self->refreshQuickPreview(true);
            std::lock_guard guard(self->lock_);
            self->refreshPending_ = false;
        }
    });
}

void PreviewItemManager::refreshItem(const Url& url) {
    const std::shared_ptr<VLItem> newItem = VLItem::initWithURL(url);
    if (!newItem) {
        return;
    }
    const std::optional<QDateTime> newDate = newItem->contentModificationDate();
    VLLOG(7, "%@: %@ vs %@", newItem->url(), modifiedDate_, newDate);
    const bool newer = modifiedDate_ && newDate && *modifiedDate_ < *newDate;
    modifiedDate_ = newDate;

    bool updatePreview = false;
    if (!(item_ && item_->isDownloaded()) && newItem->isDownloaded()) {
        // It has just become local: the download screen gives way to the document, but details
        // on screen stay and show the new state.
        const bool detailsShown = detailsViewController_ &&
                                  detailsViewController_->isViewLoaded() &&
                                  !detailsViewController_->view()->isHidden();
        updatePreview = !detailsShown;
    }
    setItemUpdatePreview(newItem, updatePreview);
    VLLOG(6, "Refreshing %@", item_ ? item_->url() : Url());
    refreshQuickPreview(newer);
    if (detailsViewController_) {
        detailsViewController_->refreshItem();
    }
}

void PreviewItemManager::refreshQuickPreview(bool contentChanged) {
    const std::shared_ptr<GlimpseItemController> glimpse =
        GlimpseItemController::defaultController();
    if (!glimpse->isVisible()) {
        return;
    }
    // After a move the quick preview would still read the old path: it takes the item's new
    // file, which also gives it its new name.
    const bool ours = glimpse->itemManager().get() == this;
    if (ours && item_ && glimpse->arrayOfDocuments() != QList<Url>{item_->resolvedURL()}) {
        glimpse->glimpseNewItem(shared_from_this());
        return;
    }
    if (contentChanged) {
        glimpse->refreshCurrentPreviewItem();
    }
}

}  // namespace vl
