#pragma once

#include "platform/app/NotificationCenter.h"
#include "platform/cloud/FilePresenter.h"
#include "platform/files/Url.h"
#include "toolkit/DocumentTargetSelectionControllerDelegate.h"

#include <QDateTime>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

namespace vl {

class BarButtonItem;
class DocumentInteractionController;
class NavigationController;
class PreviewDetailsViewController;
class VLItem;
class ViewController;

// The presentation of one item after the person asked to look at it: which screen it gets (the
// quick preview of a local document, or its details), putting that screen on the navigation
// stack, and the Move and Delete buttons of the screens. The root controller makes one per
// activation and keeps it until the next; screens hold it weakly. Main thread only, except the
// file-presenter operations, which say what they guard.
class PreviewItemManager : public DocumentTargetSelectionControllerDelegate,
                           public FilePresenter,
                           public std::enable_shared_from_this<PreviewItemManager> {
public:
    // Any mode other than PreviewModePreview shows the details screen.
    enum PreviewMode { PreviewModePreview = 0, PreviewModeDetails = 1 };

    // Also makes the shared quick-preview controller, ahead of its first use.
    static std::shared_ptr<PreviewItemManager> create();
    PreviewItemManager();
    ~PreviewItemManager() override;

    const std::shared_ptr<VLItem>& item() const { return item_; }
    // Shows the item (setItemUpdatePreview with yes).
    void setItem(const std::shared_ptr<VLItem>& item);
    void previewItem(const std::shared_ptr<VLItem>& item);
    // With an item and yes, puts the item's screen on the stack; otherwise only stores the item.
    void setItemUpdatePreview(const std::shared_ptr<VLItem>& item, bool updatePreview);
    void setItemWithoutPreview(const std::shared_ptr<VLItem>& item) {
        setItemUpdatePreview(item, false);
    }

    int mode() const { return mode_; }
    void setMode(int mode) { mode_ = mode; }
    std::shared_ptr<NavigationController> navigationController() const {
        return navigationController_.lock();
    }
    void setNavigationController(const std::shared_ptr<NavigationController>& controller) {
        navigationController_ = controller;
    }
    // The share sheet a screen opened last; kept here so that it outlives the button's call.
    std::shared_ptr<DocumentInteractionController> documentInteractionController() const {
        return documentInteractionController_;
    }
    void setDocumentInteractionController(std::shared_ptr<DocumentInteractionController> sheet) {
        documentInteractionController_ = std::move(sheet);
    }
    std::optional<QDateTime> modifiedDate() const { return modifiedDate_; }
    // The details screen this manager made and that is still on screen.
    std::shared_ptr<PreviewDetailsViewController> detailsViewController() const {
        return detailsViewController_;
    }

    // Stores the item and returns the screen for it by the mode and whether its content is
    // here; none when it has no file to show, or in preview mode when its content is not here
    // (cloud-only items get no screen yet).
    std::shared_ptr<ViewController> prepareToPreviewItem(const std::shared_ptr<VLItem>& item);
    // After the chosen screen is on the stack.
    void finishPreviewingItem();
    std::shared_ptr<PreviewDetailsViewController> createDetailsViewController();
    std::shared_ptr<ViewController> createGlimpseController();

    // Replaces a preview screen on top in place, else pushes (after ending a search on top).
    void replaceLastViewController(const std::shared_ptr<ViewController>& controller);
    static bool isPreviewControllerDisplayed(const std::shared_ptr<ViewController>& controller);
    // From each screen's will-disappear: a screen of this manager's is forgotten.
    void viewControllerWillDisappear(const std::shared_ptr<ViewController>& controller);

    // The Delete and Move buttons of the screens: `presenter` is the screen whose button it was.
    // A confirmed delete leaves the screen, then deletes the item.
    void showWarningAndDeleteDocumentBarButton(const std::shared_ptr<ViewController>& presenter,
                                               const std::shared_ptr<BarButtonItem>& button);
    void showMoveTarget(const std::shared_ptr<ViewController>& presenter);
    void documentTargetSelectionControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentTargetSelectionController>& chooser, const Url& url) override;

    // Following the item while it changes, moves or disappears (PreviewItemManagerPresenter.cpp).
    // The manager is the presenter of its item's URL while it has one and the app is active.
    std::optional<Url> presentedItemURL() const override;  // any thread
    DispatchQueuePtr presentedItemOperationQueue() const override { return fcQueue_; }
    DispatchQueuePtr fcQueue() const { return fcQueue_; }
    bool filePresenterRegistered() const;
    // Both are idempotent and may be called from any thread.
    void registerAsFilePresenter();
    void unregisterAsFilePresenter();
    // On fcQueue: they log, take the lock, unregister, answer and hand the rest to the main
    // queue. A burst of changes makes one refresh, a second after its first change.
    void presentedItemDidChange() override;
    void presentedItemDidMoveToURL(const Url& newURL) override;
    void accommodatePresentedItemDeletionWithCompletionHandler(
        CompletionHandler completionHandler) override;
    void accommodatePresentedSubitemDeletionAtURLCompletionHandler(
        const Url& url, CompletionHandler completionHandler) override;
    bool refreshPending() const;
    // Main thread: reads the item at `url` again and keeps or rebuilds the screen for it.
    void refreshItem(const Url& url);
    // Presenting stops while the app is in the background.
    void didBecomeActiveNotification(const Notification& notification);
    void willResignActiveNotification(const Notification& notification);

    static constexpr std::chrono::seconds RefreshDelay{1};

private:
    // Stores the item and the URL the presenter answers with.
    void storeItem(const std::shared_ptr<VLItem>& item);
    void observeApplicationState();
    // Unregisters and stops observing the app's state.
    void stopFollowing();
    void refreshQuickPreview(bool contentChanged);

    // Presenter operations come on fcQueue_, several at a time: the fields below are guarded by
    // lock_ (the manager's monitor); everything else stays on the main thread.
    mutable std::mutex lock_;
    DispatchQueuePtr fcQueue_;
    std::optional<Url> presentedURL_;       // guarded by lock_
    bool filePresenterRegistered_ = false;  // guarded by lock_
    bool refreshPending_ = false;           // guarded by lock_
    NotificationCenter::TokenPtr becameActiveObserver_;
    NotificationCenter::TokenPtr willResignObserver_;

    std::shared_ptr<VLItem> item_;
    int mode_ = PreviewModePreview;
    std::weak_ptr<NavigationController> navigationController_;
    std::shared_ptr<DocumentInteractionController> documentInteractionController_;
    std::optional<QDateTime> modifiedDate_;
    std::shared_ptr<PreviewDetailsViewController> detailsViewController_;
};

}  // namespace vl
