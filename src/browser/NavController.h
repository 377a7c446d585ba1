#pragma once

#include "platform/cloud/CloudAccount.h"
#include "platform/app/NotificationCenter.h"
#include "toolkit/NavigationController.h"
#include "toolkit/NavigationControllerDelegate.h"

#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace vl {

class BarButtonItem;
class DocumentInteractionController;
class DocumentListController;
class FilenamePrompt;
class PreviewItemManager;
class QuotaFetcher;

// The app's root view controller: a navigation stack of folder lists, one per level of the drive,
// with a preview screen on top when an item is shown. It shows the browser while a cloud account
// is signed in and the unavailable placeholder otherwise, and builds the stack again whenever the
// account's identity token differs from the one it last stored in the standard preferences: on
// every activation of the app and on every identity-change notification. Main thread only.
class NavController : public NavigationController, public NavigationControllerDelegate {
    Q_OBJECT
public:
    static inline const QString NimbraIdentityTokenKey =
        QStringLiteral("com.tessaly.VelloraApp.NimbraIdentityToken");

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
    // Configures a folder list that is about to be shown.
    void initNewListController(const std::shared_ptr<DocumentListController>& list);

    void navigationControllerDidShowViewController(
        const std::shared_ptr<NavigationController>& navigationController,
        const std::shared_ptr<ViewController>& viewController, bool animated) override;

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
    void showUnavailableAlert();
    void stopObserving();

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

    NotificationCenter::TokenPtr becameActiveObserver_;
    NotificationCenter::TokenPtr accountObserver_;
};

}  // namespace vl
