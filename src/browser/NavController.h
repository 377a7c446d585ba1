#pragma once

#include "platform/app/NotificationCenter.h"
#include "platform/cloud/CloudAccount.h"
#include "services/QuotaFetcherDelegate.h"
#include "toolkit/DocumentInteractionControllerDelegate.h"
#include "toolkit/DocumentListControllerDelegate.h"
#include "toolkit/DocumentTargetSelectionControllerDelegate.h"
#include "toolkit/NavigationController.h"
#include "toolkit/NavigationControllerDelegate.h"

#include <QDateTime>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace vl {

class AlertAction;
class BarButtonItem;
class DocumentInteractionController;
class DocumentListController;
class DocumentTargetSelectionController;
class FilenamePrompt;
class OfflineKeeper;
class PreviewItemManager;
class QuotaFetcher;
class UndoBar;
class VLItem;

// The app's root view controller: a navigation stack of folder lists, one per level of the drive,
// with a preview screen on top when an item is shown. It shows the browser while a cloud account
// is signed in and the unavailable placeholder otherwise, and builds the stack again whenever the
// account's identity token differs from the one it last stored in the standard preferences: on
// every activation of the app and on every identity-change notification. It is the delegate of
// every folder list and runs edit mode, whose selection always belongs to the top list, and the
// status line under each list. Main thread only.
//
// The flows live in one file each: NavController.cpp (start and account), NavControllerLists.cpp
// (list configuration, edit mode, folder taps), NavControllerRules.cpp (when New Folder, Move
// and Delete are offered), NavControllerMove.cpp (new folders and moves), NavControllerDelete.cpp
// (the delete flow), NavControllerActions.cpp (rename), NavControllerActivation.cpp (item taps,
// per-item actions, share, previews and the stack for a URL), NavControllerRestoration.cpp
// (the previewed item kept for the next start), NavControllerUndo.cpp
// (the undo bar after a move or a rename), NavControllerStatus.cpp (the status line and the free
// space), NavControllerOffline.cpp (Keep Offline, Remove Download, the bytes on this device).
class NavController : public NavigationController,
                      public NavigationControllerDelegate,
                      public DocumentListControllerDelegate,
                      public DocumentTargetSelectionControllerDelegate,
                      public DocumentInteractionControllerDelegate,
                      public QuotaFetcherDelegate {
    Q_OBJECT
public:
    static inline const QString NimbraIdentityTokenKey =
        QStringLiteral("com.tessaly.VelloraApp.NimbraIdentityToken");
    // What the root controller keeps in the restoration archive.
    static inline const QString RestorationURLKey = QStringLiteral("url");
    static inline const QString RestorationPreviewModeKey = QStringLiteral("PreviewMode");

    NavController();
    ~NavController() override;

    // (Re)builds the whole stack for the current account state.
    void setupInitialViewController();
    // Whether a cloud account token exists now.
    bool checkNimbraState() const;
    // Compares the current token with the stored one and rebuilds on a difference.
    void handleAccountChanges();
    // Stores the token, or removes the stored one when absent.
    void saveNimbraToken(const std::optional<CloudAccountToken>& token);
    void didBecomeActiveNotification(const Notification& notification);
    void nimbraAccountAvailabilityChanged(const Notification& notification);
    void logContainerURL();

    // --- Folder lists and edit mode (NavControllerLists.cpp) ---
    // Configures a folder list that is about to be shown.
    void initNewListController(const std::shared_ptr<DocumentListController>& list);
    void configureNavBar(const std::shared_ptr<DocumentListController>& list);
    void configureToolbar(const std::shared_ptr<DocumentListController>& list);
    // Re-applies the nav bar, the toolbar and the status line to the top list.
    void configureVisibleControllerForMode();
    // The one entry that switches edit mode.
    void setEditModeAndUpdateUIForViewController(
        bool editMode, const std::shared_ptr<DocumentListController>& list);
    void beginEditMode(const std::shared_ptr<BarButtonItem>& sender);
    void endEditMode(const std::shared_ptr<BarButtonItem>& sender);
    void selectAllItems(const std::shared_ptr<BarButtonItem>& sender);
    // The top of the stack when it is a folder list.
    std::shared_ptr<DocumentListController> getTopDocumentListController() const;
    // The status line and, in edit mode, the selection title and the Move and Delete buttons, of
    // `list` or (null) of the top list.
    void updateStatusUI(const std::shared_ptr<DocumentListController>& list);

    // Targets of the edit-mode toolbar buttons.
    void promtForNewFolderAndCreate(const std::shared_ptr<BarButtonItem>& sender);
    void showMoveTargetForSelectedItems(const std::shared_ptr<BarButtonItem>& sender);
    void showWarningAndDeleteDocument(const std::shared_ptr<BarButtonItem>& sender);

    void documentListControllerItemsChanged(
        const std::shared_ptr<DocumentListController>& list) override;
    void documentListControllerDidSelectContainerWithViewController(
        const std::shared_ptr<DocumentListController>& list,
        const std::shared_ptr<DocumentListController>& newList) override;
    void documentListControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentListController>& list, const Url& url) override;
    void documentListControllerPerformActionURLOriginatingViewCompletion(
        const std::shared_ptr<DocumentListController>& list, int action, const Url& url,
        QWidget* originatingView, std::function<void()> completion) override;
    void documentListControllerPerformActionURL(const std::shared_ptr<DocumentListController>& list,
                                                int action, const Url& url) override;
    bool documentListControllerCanPerformAction(const std::shared_ptr<DocumentListController>& list,
                                                int action) override;

    void navigationControllerDidShowViewController(
        const std::shared_ptr<NavigationController>& navigationController,
        const std::shared_ptr<ViewController>& viewController, bool animated) override;

    // --- When New Folder, Move and Delete are offered (NavControllerRules.cpp) ---
    // Looks only at the folder shown, not at the selection.
    static bool canEnableNewFolderForSelectedItems(
        const std::shared_ptr<DocumentListController>& list);
    static bool canShowMoveForSelectedItems(const std::shared_ptr<DocumentListController>& list);
    static bool containerSupportsAnyDepth(const std::shared_ptr<DocumentListController>& list);
    static bool containerHasSubfolders(const Url& url);
    static unsigned numContainersInURLArray(const QList<Url>& urls);
    // 1 when any URL is a folder (a directory that is not a package), else 0.
    static unsigned numFoldersInURLArray(const QList<Url>& urls);
    static bool canShowDeleteForSelectedItems(const std::shared_ptr<DocumentListController>& list);

    // --- New folders and moves (NavControllerMove.cpp) ---
    // The chooser when the folder's container has a folder to move into, else the new-folder
    // prompt that moves the items into the folder it makes.
    void showMoveTargetForItemsInFolder(const QList<Url>& items, const Url& folder);
    // Without items, a plain new folder.
    void showNewFolderPromptDuringMoveItemsToMove(const Url& folder,
                                                  const std::optional<QList<Url>>& items);
    void documentTargetSelectionControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentTargetSelectionController>& chooser, const Url& url) override;
    // Moves each item into the folder, never over anything; the errors in the order of the items.
    // What moved can be taken back from the undo bar.
    QList<Error> moveItemsToDirectoryToDirectory(const QList<Url>& items, const Url& target);
    void moveItemsToDirectoryAndShowErrorsToDirectory(const QList<Url>& items, const Url& target);

    // --- The delete flow (NavControllerDelete.cpp) ---
    // Items, or app libraries, never a mix; confirmed by the delete warning first.
    void showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(
        const QList<Url>& urls, QWidget* view, const std::shared_ptr<DocumentListController>& list,
        std::function<void()> completion);

    // --- Rename (NavControllerActions.cpp) ---
    void showRenamePrompt(const Url& url);

    // --- Item activation (NavControllerActivation.cpp) ---
    // Rename, Share (documents), Move to Folder (when the item's container has a folder to move
    // into), all disabled for an app library; anchored beside `view` on a tablet.
    void showActionsMenuFromViewUrlPresentedURLCompletion(QWidget* view, const Url& url,
                                                          const Url& presentedURL,
                                                          std::function<void()> completion);
    // The share sheet, pointing at `view` (this controller's view when null).
    void showDICUrlCompletion(QWidget* view, const Url& url, std::function<void()> completion);
    void documentInteractionControllerDidDismissOptionsMenu(
        DocumentInteractionController* controller) override;
    // A new preview manager for the item in the mode (PreviewItemManager's modes).
    void showPreviewPreviewMode(const std::shared_ptr<VLItem>& item, int mode);
    // The lists from the drive's root down to the URL's folder, with the item's screen on top;
    // no for a URL outside the drive or a folder without lists.
    bool showURLPreviewPreviewMode(const Url& url, int mode);

    // --- State restoration (NavControllerRestoration.cpp) ---
    // The item the preview manager shows and its mode; at the next start, that item's screen
    // again over the root list (not for a folder, nor an item gone since).
    void encodeRestorableStateWithCoder(StateCoder& coder) override;
    void decodeRestorableStateWithCoder(const StateCoder& coder) override;

    // --- Keep Offline and Remove Download (NavControllerOffline.cpp) ---
    // "Keep Offline" (unless the item is kept offline or being downloaded for that already) and
    // "Remove Download" (when the item is kept offline, being downloaded, or anything of it is on
    // the device); each calls `finish` once chosen.
    QList<std::shared_ptr<AlertAction>> offlineActionsForItem(const VLItem& item,
                                                              std::function<void()> finish);
    // Pins the item and downloads what of it is only in the cloud; failures in one alert.
    void keepItemOffline(const Url& url);
    // Cancels its keep-offline, unpins it and evicts it; an item kept by a folder above it stays
    // and the alert says so.
    void removeItemDownload(const Url& url);
    std::shared_ptr<OfflineKeeper> offlineKeeper();
    // Measures again, off the main thread, how much of the drive is on this device, then
    // refreshes the status line.
    void refreshBytesOnDevice();
    std::optional<quint64> bytesOnDevice() const { return bytesOnDevice_; }
    void setBytesOnDevice(std::optional<quint64> bytes) { bytesOnDevice_ = bytes; }
    // "1.2 GB on this device"; empty until measured.
    QString bytesOnDeviceString() const;

    // --- Undo of moves and renames (NavControllerUndo.cpp) ---
    // The bar along the bottom of the window; made on first use.
    UndoBar* undoBar();

    // --- The status line (NavControllerStatus.cpp) ---
    bool okToShowQuota() const { return lastQuotaFetch_.has_value(); }
    QString toolbarStatusText(unsigned itemCount) const;
    QString quotaAvailableString() const;
    void quotaFetcherDidUpdateValue(const std::shared_ptr<QuotaFetcher>& fetcher,
                                    quint64 freeBytes) override;

    bool editMode() const { return editMode_; }
    void setEditMode(bool editMode) { editMode_ = editMode; }
    // Whether the current root list has reported its items since the last set-up.
    bool pickerIsAlive() const { return pickerIsAlive_; }
    void setPickerIsAlive(bool alive) { pickerIsAlive_ = alive; }
    QString viewTitle() const { return viewTitle_; }
    void setViewTitle(const QString& title) { viewTitle_ = title; }

    std::shared_ptr<BarButtonItem> barButtonNewFolder() const { return barButtonNewFolder_; }
    void setBarButtonNewFolder(std::shared_ptr<BarButtonItem> item) {
        barButtonNewFolder_ = std::move(item);
    }
    std::shared_ptr<BarButtonItem> barButtonMoveItem() const { return barButtonMoveItem_; }
    void setBarButtonMoveItem(std::shared_ptr<BarButtonItem> item) {
        barButtonMoveItem_ = std::move(item);
    }
    std::shared_ptr<BarButtonItem> barButtonDeleteItem() const { return barButtonDeleteItem_; }
    void setBarButtonDeleteItem(std::shared_ptr<BarButtonItem> item) {
        barButtonDeleteItem_ = std::move(item);
    }

    quint64 quotaBytes() const { return quotaBytes_; }
    void setQuotaBytes(quint64 bytes) { quotaBytes_ = bytes; }
    std::optional<QDateTime> lastQuotaFetch() const { return lastQuotaFetch_; }
    void setLastQuotaFetch(std::optional<QDateTime> when) { lastQuotaFetch_ = std::move(when); }
    std::shared_ptr<QuotaFetcher> quotaFetcher() const { return quotaFetcher_; }
    void setQuotaFetcher(std::shared_ptr<QuotaFetcher> fetcher) {
        quotaFetcher_ = std::move(fetcher);
    }

    std::shared_ptr<DocumentInteractionController> documentInteractionController() const {
        return documentInteractionController_;
    }
    void setDocumentInteractionController(std::shared_ptr<DocumentInteractionController> sheet) {
        documentInteractionController_ = std::move(sheet);
    }
    const std::function<void()>& performActionCompletionBlock() const {
        return performActionCompletionBlock_;
    }
    void setPerformActionCompletionBlock(std::function<void()> block) {
        performActionCompletionBlock_ = std::move(block);
    }
    std::shared_ptr<FilenamePrompt> folderPromptAlert() const { return folderPromptAlert_; }
    void setFolderPromptAlert(std::shared_ptr<FilenamePrompt> prompt) {
        folderPromptAlert_ = std::move(prompt);
    }
    std::shared_ptr<PreviewItemManager> itemManager() const { return itemManager_; }
    void setItemManager(std::shared_ptr<PreviewItemManager> manager) {
        itemManager_ = std::move(manager);
    }

protected:
    void viewDidLoad() override;

private:
    // One item moved by a move or a rename, and how it looked right after: undo moves it back
    // only while it still looks so.
    struct MovedItem {
        Url from;
        Url to;
        QString signature;
    };
    // The URL a move onto `destination` gives the item: the next free name when it is taken.
    static Url freeDestinationFor(const Url& destination);
    static QString itemSignature(const Url& url);
    void offerUndo(const QList<MovedItem>& moved, const QString& message);
    void undoMoves(const QList<MovedItem>& moved, bool isRename);
    // The top controller, which alerts about a request are shown from.
    std::shared_ptr<ViewController> alertParent();

    void showUnavailableAlert();
    void stopObserving();
    // A new manager for the next activation; the old one stops presenting its item first.
    void replaceItemManager();
    std::shared_ptr<BarButtonItem> makeToolbarButton(
        const char* titleKey, void (NavController::*action)(const std::shared_ptr<BarButtonItem>&));

    bool editMode_ = false;
    bool pickerIsAlive_ = false;
    QString viewTitle_;
    std::shared_ptr<BarButtonItem> barButtonNewFolder_;
    std::shared_ptr<BarButtonItem> barButtonMoveItem_;
    std::shared_ptr<BarButtonItem> barButtonDeleteItem_;
    quint64 quotaBytes_ = 0;
    std::optional<QDateTime> lastQuotaFetch_;
    std::shared_ptr<QuotaFetcher> quotaFetcher_;
    std::shared_ptr<DocumentInteractionController> documentInteractionController_;
    std::function<void()> performActionCompletionBlock_;
    std::shared_ptr<FilenamePrompt> folderPromptAlert_;
    std::shared_ptr<PreviewItemManager> itemManager_;
    QPointer<UndoBar> undoBar_;
    std::shared_ptr<OfflineKeeper> offlineKeeper_;
    std::optional<quint64> bytesOnDevice_;
    bool bytesOnDeviceInFlight_ = false;
    bool bytesOnDeviceStale_ = false;

    NotificationCenter::TokenPtr becameActiveObserver_;
    NotificationCenter::TokenPtr accountObserver_;
};

}  // namespace vl
