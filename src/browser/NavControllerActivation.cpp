// Item activation: a tapped document opens in its default app or in the app's own preview, the
// per-item actions menu, details and share, and the stack built for a URL from outside.

#include "browser/NavController.h"

#include "app/Settings.h"
#include "fileops/FileUtils.h"
#include "fileops/LaunchUtils.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Strings.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/PopoverPresentationController.h"

namespace vl {

namespace {

// The anchor of a popover beside a row: the view's vertical middle, as a line across it.
QRect middleLineOf(QWidget* view) {
    if (!view) {
        return QRect();
    }
    const QRect bounds = view->rect();
    return QRect(bounds.left(), bounds.center().y(), bounds.width(), 0);
}

}  // namespace

void NavController::documentListControllerDidSelectItemAtURL(
    const std::shared_ptr<DocumentListController>&, const Url& url) {
    VLLOG(7, "Picked URL: %@", url);
    const std::shared_ptr<VLItem> item = VLItem::initWithURL(url);
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    if (!item) {
        UIUtils::showErrorParentViewController(
            Error::fileError(Error::FileReadNoSuchFile, url.path()), alertParent());
        Dispatch::mainQueue()->async([weakSelf] {
            if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                self->setupInitialViewController();
            }
        });
        return;
    }
    if (editMode_) {
        VLLOG(7, "DLC Selection not allowed while in edit mode");
        return;
    }
    const auto previewLater = [weakSelf, item] {
        Dispatch::mainQueue()->async([weakSelf, item] {
            if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                self->showPreviewPreviewMode(item, PreviewItemManager::PreviewModePreview);
            }
        });
    };
    if (!Settings::quickLaunch()) {
        previewLater();
        return;
    }
    LaunchUtils::openInDefaultAppRequireOpenInWithCompletionBlock(
        item->url(), true, [previewLater](bool launched) {
            if (launched) {
                VLLOG(7, "openInDefaultApp returned YES, app launched");
                return;
            }
            VLLOG(7, "openInDefaultApp returned NO, showing preview");
            previewLater();
        });
}

bool NavController::documentListControllerCanPerformAction(
    const std::shared_ptr<DocumentListController>&, int action) {
    return action >= DocumentListController::Delete && action <= DocumentListController::Rename;
}

void NavController::documentListControllerPerformActionURLOriginatingViewCompletion(
    const std::shared_ptr<DocumentListController>& list, int action, const Url& url,
    QWidget* originatingView, std::function<void()> completion) {
    const auto finish = [completion] {
        if (completion) {
            completion();
        }
    };
    switch (action) {
        case DocumentListController::Delete:
            performActionCompletionBlock_ = completion;
            showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(
                {url}, originatingView, nullptr, finish);
            return;
        case DocumentListController::ActionsMenu:
            showActionsMenuFromViewUrlPresentedURLCompletion(
                originatingView, url, list ? list->presentedURL() : Url(), finish);
            return;
        case DocumentListController::Details:
            showPreviewPreviewMode(VLItem::initWithURL(url),
                                   PreviewItemManager::PreviewModeDetails);
            finish();
            return;
        case DocumentListController::Rename:
            VLLOG(6, "Rename action: %@", url);
            showRenamePrompt(url);
            return;
        default:
            VLLOG(4, "performAction:%@ -- unexpected value", action);
            finish();
    }
}

void NavController::documentListControllerPerformActionURL(
    const std::shared_ptr<DocumentListController>& list, int action, const Url& url) {
    documentListControllerPerformActionURLOriginatingViewCompletion(list, action, url, view(),
                                                                    [] {});
}

void NavController::showActionsMenuFromViewUrlPresentedURLCompletion(
    QWidget* view, const Url& url, const Url& presentedURL, std::function<void()> completion) {
    const std::shared_ptr<VLItem> item = VLItem::initWithURL(url);
    if (!item) {
        return;
    }
    const auto finish = [completion] {
        if (completion) {
            completion();
        }
    };
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    const QPointer<QWidget> anchor(view);
    const auto sheet = AlertController::alertControllerWithTitle(
        QString(), QString(), AlertController::Style::ActionSheet);
    QList<std::shared_ptr<AlertAction>> entries;

    const auto rename = AlertAction::actionWithTitle(
        Strings::localized("Rename Item…"), AlertAction::Style::Default,
        [weakSelf, url, finish](const std::shared_ptr<AlertAction>&) {
            if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                self->showRenamePrompt(url);
            }
            finish();
        });
    rename->setEnabled(item->renameable());
    entries.append(rename);

    if (!item->isDirectory()) {
        entries.append(AlertAction::actionWithTitle(
            Strings::localized("Share Item…"), AlertAction::Style::Default,
            [weakSelf, anchor, url, finish](const std::shared_ptr<AlertAction>&) {
                if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                    self->showDICUrlCompletion(anchor.data(), url, finish);
                }
                finish();
            }));
    }
    if (!item->isContainer() && containerHasSubfolders(url)) {
        entries.append(AlertAction::actionWithTitle(
            Strings::localized("Move to Folder…"), AlertAction::Style::Default,
            [weakSelf, url, presentedURL, finish](const std::shared_ptr<AlertAction>&) {
                if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                    self->showMoveTargetForItemsInFolder({url}, presentedURL);
                }
                finish();
            }));
    }
    entries.append(offlineActionsForItem(*item, finish));
    for (const std::shared_ptr<AlertAction>& entry : entries) {
        if (item->isContainer()) {
            entry->setEnabled(false);
        }
        sheet->addAction(entry);
    }
    sheet->addAction(
        AlertAction::actionWithTitle(Strings::localized("Cancel"), AlertAction::Style::Cancel,
                                     [finish](const std::shared_ptr<AlertAction>&) { finish(); }));

    const std::shared_ptr<PopoverPresentationController>& popover =
        sheet->popoverPresentationController();
    popover->setSourceView(view);
    popover->setSourceRect(middleLineOf(view));
    popover->setPermittedArrowDirections(PopoverPresentationController::ArrowDirections(
                                             PopoverPresentationController::ArrowDirection::Left) |
                                         PopoverPresentationController::ArrowDirection::Right);
    presentViewController(sheet, true);
}

void NavController::showDICUrlCompletion(QWidget* view, const Url& url,
                                         std::function<void()> completion) {
    if (url.isEmpty()) {
        VLLOG(4, "showDIC: url is wrong class: %@", QStringLiteral("(null)"));
        return;
    }
    VLLOG(6, "showDIC: %@", url);
    performActionCompletionBlock_ = std::move(completion);
    const QRect rect = middleLineOf(view);
    QWidget* from = view ? view : this->view();
    documentInteractionController_ =
        DocumentInteractionController::interactionControllerWithURL(url);
    documentInteractionController_->setDelegate(sharedAs<NavController>());
    documentInteractionController_->presentOptionsMenuFromRectInViewAnimated(rect, from, true);
}

void NavController::documentInteractionControllerDidDismissOptionsMenu(
    DocumentInteractionController*) {}

void NavController::replaceItemManager() {
    // The old manager may outlive this (a download in progress holds it): it stops presenting
    // its item now, not when it is finally released.
    if (itemManager_) {
        itemManager_->unregisterAsFilePresenter();
    }
    itemManager_ = PreviewItemManager::create();
}

void NavController::showPreviewPreviewMode(const std::shared_ptr<VLItem>& item, int mode) {
    if (!item) {
        return;
    }
    replaceItemManager();
    itemManager_->setMode(mode);
    itemManager_->setNavigationController(sharedAs<NavigationController>());
    itemManager_->previewItem(item);
}

bool NavController::showURLPreviewPreviewMode(const Url& url, int mode) {
    if (url.isEmpty()) {
        return false;
    }
    if (!CloudDocuments::isInstalled() || !CloudDocuments::shared().isDriveItemAtURL(url)) {
        VLLOG(7, "Preview URL is not in the Nimbra Store dir: %@", url);
        return false;
    }
    const bool isDirectory = FileUtils::isDir(url);
    const Url folder =
        isDirectory ? Url::fromPath(url.path(), true) : url.deletingLastPathComponent();
    if (folder.isEmpty()) {
        VLLOG(3, "Can't get directory for %@. Not previewing", url);
        return false;
    }
    VLLOG(7, "Building DLC stack for %@", folder);
    const auto hierarchy = DocumentListController::hierarchyForURL(folder);
    if (!hierarchy) {
        VLLOG(3, "Couldn't build DLC stack for %@. Not previewing", folder);
        return false;
    }
    QList<std::shared_ptr<ViewController>> stack(hierarchy->begin(), hierarchy->end());
    replaceItemManager();
    itemManager_->setMode(mode);
    itemManager_->setNavigationController(sharedAs<NavigationController>());
    if (const std::shared_ptr<VLItem> item = VLItem::initWithURL(url)) {
        if (const std::shared_ptr<ViewController> screen =
                itemManager_->prepareToPreviewItem(item)) {
            stack.append(screen);
            setViewControllers(stack, true);
            itemManager_->finishPreviewingItem();
        } else {
            setViewControllers(stack, true);
        }
    }
    return true;
}

}  // namespace vl
