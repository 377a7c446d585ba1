#pragma once

#include "platform/app/NotificationCenter.h"
#include "platform/cloud/FilePresenter.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"
#include "toolkit/DocumentTargetSelectionControllerDelegate.h"

#include <QDateTime>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vl {

class BarButtonItem;
class DocumentInteractionController;
class FileCoordinator;
class NavigationController;
class PreviewDetailsViewController;
class PreviewDownloadViewController;
class VLItem;
class ViewController;

// The presentation of one item after the person asked to look at it: which screen it gets (the
// quick preview of a local document, the download screen of a cloud-only one, or its details),
// putting that screen on the navigation stack, the Move and Delete buttons of the screens, and
// the download of a cloud-only item. The root controller makes one per activation and keeps it
// until the next; screens hold it weakly. Main thread only, except the file-presenter operations
// and the download members, which say what they guard and where they run.
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

    // A copy: the download queue reads it while the main thread may replace it.
    std::shared_ptr<VLItem> item() const;
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

    // Cancels any download, stores the item and returns the screen for it by the mode and
    // whether its content is here; none when it has no file to show.
    std::shared_ptr<ViewController> prepareToPreviewItem(const std::shared_ptr<VLItem>& item);
    // After the chosen screen is on the stack: starts the automatic download.
    void finishPreviewingItem();
    std::shared_ptr<PreviewDetailsViewController> createDetailsViewController();
    std::shared_ptr<ViewController> createGlimpseController();

    // Replaces a preview screen on top in place, else pushes (after ending a search on top).
    void replaceLastViewController(const std::shared_ptr<ViewController>& controller);
    static bool isPreviewControllerDisplayed(const std::shared_ptr<ViewController>& controller);
    // From each screen's will-disappear: a screen of this manager's is forgotten; the download
    // screen's going cancels the download.
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
    // One refresh a second from now, unless one is already on its way.
    void scheduleRefresh();

    // Presenter operations come on fcQueue_, several at a time: the fields below are guarded by
    // lock_ (the manager's monitor); everything else stays on the main thread.
    mutable std::mutex lock_;
    DispatchQueuePtr fcQueue_;
    std::optional<Url> presentedURL_;       // guarded by lock_
    bool filePresenterRegistered_ = false;  // guarded by lock_
    bool refreshPending_ = false;           // guarded by lock_
    NotificationCenter::TokenPtr becameActiveObserver_;
    NotificationCenter::TokenPtr willResignObserver_;

    std::shared_ptr<VLItem> item_;  // written on the main thread under lock_
    int mode_ = PreviewModePreview;
    std::weak_ptr<NavigationController> navigationController_;
    std::shared_ptr<DocumentInteractionController> documentInteractionController_;
    std::optional<QDateTime> modifiedDate_;
    std::shared_ptr<PreviewDetailsViewController> detailsViewController_;

    // --- Downloading a cloud-only item (PreviewItemManagerDownload.cpp) ---
public:
    // Items this large or larger wait for the Download button.
    static constexpr quint64 kAutoDownloadSizeLimit = 6ull * 1024 * 1024;
    // On cellular, larger items are refused even by hand.
    static constexpr quint64 kCellularDownloadSizeLimit = 100ull * 1024 * 1024;
    static inline const QString kNetworkActivityKey = QStringLiteral("PreviewDownload");

    // (the item's resolved URL when the outcome was known, the URL to read the content at or
    // none, the error or none); on the main thread.
    using DownloadCompletion =
        std::function<void(const Url& oldURL, const Url& newURL, const std::optional<Error>&)>;

    std::shared_ptr<PreviewDownloadViewController> createDownloadViewController();
    // The download screen this manager made and that is still on screen.
    std::shared_ptr<PreviewDownloadViewController> downloadViewController() const;
    bool autoDownload() const { return autoDownload_; }
    void setAutoDownload(bool autoDownload) { autoDownload_ = autoDownload; }
    // Wi-Fi, smaller than kAutoDownloadSizeLimit (an unknown size counts as 0) and previewable.
    bool shouldAutoDownload();
    // A download whose success shows the quick preview in place of the download screen.
    void startDownload();
    // Queues a download on downloadQueue; downloads run one at a time, in order.
    void startDownloading(DownloadCompletion completion);
    // Runs a download on downloadQueue, blocking it until the content is here or the read fails.
    void startDownloadingNow(const DownloadCompletion& completion);
    // Thread-safe. A cancelled download leaves the item cloud-only.
    void cancelDownload();
    // Says nothing for a cancelled download.
    void showDownloadError(const std::optional<Error>& error);
    bool hasDownloadInProgress() const;
    const DispatchQueuePtr& downloadQueue() const { return downloadQueue_; }

private:
    void startDownloadingNow(const DownloadCompletion& completion, quint64 requestGeneration);
    void cancelDownloadCoordinator();
    void clearDownloadCoordinator(const std::shared_ptr<FileCoordinator>& coordinator);

    mutable std::mutex downloadMutex_;  // guards downloadFC_, downloadViewController_
    std::shared_ptr<FileCoordinator> downloadFC_;
    std::shared_ptr<PreviewDownloadViewController> downloadViewController_;
    bool autoDownload_ = false;  // main thread
    // Counts cancelDownload calls, so that a download cancelled while it waited in the queue is
    // cancelled as it starts.
    std::atomic<quint64> cancelGeneration_{0};
    const DispatchQueuePtr downloadQueue_ = Dispatch::serialQueue(QStringLiteral("downloadQueue"));
};

}  // namespace vl
