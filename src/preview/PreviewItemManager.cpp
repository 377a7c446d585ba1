#include "preview/PreviewItemManager.h"

#include "fileops/FileUtils.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "preview/GlimpseItemController.h"
#include "preview/PreviewBaseViewController.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewDownloadViewController.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentTargetSelectionController.h"
#include "toolkit/NavigationController.h"

#include <QFileInfo>

namespace vl {

std::shared_ptr<PreviewItemManager> PreviewItemManager::create() {
    auto manager = std::make_shared<PreviewItemManager>();
    manager->observeApplicationState();
    return manager;
}

// The presenter's queue is concurrent, like an operation queue left at its defaults: callbacks
// may overlap, which is why the flags they touch are taken under lock_.
PreviewItemManager::PreviewItemManager()
    : fcQueue_(Dispatch::globalQueue(QualityOfService::Default)) {
    GlimpseItemController::defaultController();
}

PreviewItemManager::~PreviewItemManager() {
    cancelDownload();
    stopFollowing();
}

void PreviewItemManager::setItem(const std::shared_ptr<VLItem>& item) {
    setItemUpdatePreview(item, true);
}

void PreviewItemManager::previewItem(const std::shared_ptr<VLItem>& item) {
    setItemUpdatePreview(item, true);
}

void PreviewItemManager::setItemUpdatePreview(const std::shared_ptr<VLItem>& item,
                                              bool updatePreview) {
    VLLOG(7, "Previewing %@", item ? item->url() : Url());
    if (item && updatePreview) {
        if (const std::shared_ptr<ViewController> screen = prepareToPreviewItem(item)) {
            replaceLastViewController(screen);
            finishPreviewingItem();
        }
        return;
    }
    storeItem(item);
}

std::shared_ptr<ViewController> PreviewItemManager::prepareToPreviewItem(
    const std::shared_ptr<VLItem>& item) {
    cancelDownload();
    const Url oldURL = item_ ? item_->url() : Url();
    const Url newURL = item ? item->url() : Url();
    if (oldURL != newURL) {
        unregisterAsFilePresenter();
    }
    storeItem(item);
    if (!item_ || item_->resolvedURL().path().isEmpty()) {
        VLLOG(4, "no preview URL, nothing to show");
        return nullptr;
    }
    modifiedDate_ = item_->contentModificationDate();
    registerAsFilePresenter();
    // A plain look at the disk: a cloud-only item has only its placeholder.
    const bool exists = QFileInfo::exists(item_->resolvedURL().path());
    {
        std::lock_guard lock(downloadMutex_);
        downloadViewController_.reset();
    }
    detailsViewController_.reset();
    std::shared_ptr<ViewController> screen;
    if (mode_ != PreviewModePreview) {
        screen = createDetailsViewController();
    } else if (exists) {
        screen = createGlimpseController();
    } else {
        autoDownload_ = shouldAutoDownload();
        screen = createDownloadViewController();
    }
    if (exists) {
        VLLOG(7, "Preview: File exists, using %@", screen->metaObject()->className());
    } else {
        VLLOG(7, "Preview: File doesn't exist, using %@", screen->metaObject()->className());
    }
    return screen;
}

void PreviewItemManager::finishPreviewingItem() {
    const std::shared_ptr<NavigationController> navigation = navigationController();
    const std::shared_ptr<ViewController> top =
        navigation ? navigation->topViewController() : nullptr;
    if (!top || mode_ != PreviewModePreview ||
        !std::dynamic_pointer_cast<PreviewDownloadViewController>(top)) {
        return;
    }
    if (!autoDownload_) {
        // Logged as the automatic start is, so that the decision shows either way.
        const std::shared_ptr<VLItem> item = this->item();
        VLLOG(6, "Not downloading %@ by itself", item ? item->url() : Url());
        return;
    }
    if (const auto screen = downloadViewController()) {
        screen->setDownloading(true);
    }
    startDownload();
}

std::shared_ptr<PreviewDetailsViewController> PreviewItemManager::createDetailsViewController() {
    auto controller = std::make_shared<PreviewDetailsViewController>();
    controller->setMode(mode_);
    controller->setItemManager(shared_from_this());
    detailsViewController_ = controller;
    return controller;
}

std::shared_ptr<ViewController> PreviewItemManager::createGlimpseController() {
    const std::shared_ptr<GlimpseItemController> glimpse =
        GlimpseItemController::defaultController();
    glimpse->glimpseNewItem(shared_from_this());
    return glimpse;
}

void PreviewItemManager::replaceLastViewController(
    const std::shared_ptr<ViewController>& controller) {
    const std::shared_ptr<NavigationController> navigation = navigationController();
    if (!navigation || !controller) {
        return;
    }
    QList<std::shared_ptr<ViewController>> stack = navigation->viewControllers();
    const std::shared_ptr<ViewController> last = stack.isEmpty() ? nullptr : stack.last();
    if (isPreviewControllerDisplayed(last)) {
        if (last == controller) {
            return;
        }
        stack.last() = controller;
        navigation->setViewControllers(stack, false);
        return;
    }
    // A list's search results play the platform's search controller: they end before the
    // preview shows, so that going back finds the folder itself.
    if (const auto list = std::dynamic_pointer_cast<DocumentListController>(last);
        list && list->isShowingSearchResults()) {
        list->endSearch();
    }
    navigation->pushViewController(controller, true);
}

bool PreviewItemManager::isPreviewControllerDisplayed(
    const std::shared_ptr<ViewController>& controller) {
    return std::dynamic_pointer_cast<PreviewBaseViewController>(controller) ||
           std::dynamic_pointer_cast<GlimpseItemController>(controller);
}

void PreviewItemManager::viewControllerWillDisappear(
    const std::shared_ptr<ViewController>& controller) {
    // The quick preview is shared and never this manager's own.
    if (!controller) {
        return;
    }
    if (controller == downloadViewController()) {
        cancelDownload();
        std::lock_guard lock(downloadMutex_);
        downloadViewController_.reset();
    } else if (controller == detailsViewController_) {
        detailsViewController_.reset();
    }
}

void PreviewItemManager::showWarningAndDeleteDocumentBarButton(
    const std::shared_ptr<ViewController>& presenter,
    const std::shared_ptr<BarButtonItem>& button) {
    if (!item_ || !presenter) {
        return;
    }
    const Url url = item_->url();
    const std::weak_ptr<PreviewItemManager> weakSelf = weak_from_this();
    const std::weak_ptr<ViewController> weakPresenter = presenter;
    UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
        {url}, false, presenter, nullptr, button,
        [weakSelf, weakPresenter, url](const std::shared_ptr<AlertAction>&, bool cancelled) {
            if (cancelled) {
                return;
            }
            const std::shared_ptr<ViewController> screen = weakPresenter.lock();
            std::shared_ptr<NavigationController> navigation =
                screen ? screen->navigationController() : nullptr;
            if (!navigation) {
                if (const std::shared_ptr<PreviewItemManager> self = weakSelf.lock()) {
                    navigation = self->navigationController();
                }
            }
            if (navigation) {
                navigation->popViewControllerAnimated(true);
            }
            if (const std::optional<Error> error = FileUtils::remove(url)) {
                // The screen has left the window: the alert comes from what is on top now.
                UIUtils::showErrorParentViewController(
                    error,
                    navigation ? std::static_pointer_cast<ViewController>(navigation) : screen);
            }
        });
}

void PreviewItemManager::showMoveTarget(const std::shared_ptr<ViewController>& presenter) {
    VLLOG(6, "Pressed Move");
    if (!item_ || item_->url().isEmpty()) {
        return;
    }
    std::shared_ptr<NavigationController> navigation =
        presenter ? presenter->navigationController() : nullptr;
    if (!navigation) {
        navigation = navigationController();
    }
    if (!navigation) {
        return;
    }
    const auto chooser =
        std::make_shared<DocumentTargetSelectionController>(QList<Url>{item_->url()});
    chooser->setDelegate(weak_from_this());
    chooser->setModalPresentationStyle(ModalPresentationStyle::OverCurrentContext);
    navigation->presentViewController(chooser, true, [] { VLLOG(7, "Presented moveTarget"); });
}

void PreviewItemManager::documentTargetSelectionControllerDidSelectItemAtURL(
    const std::shared_ptr<DocumentTargetSelectionController>& chooser, const Url& url) {
    const QList<Url> items = chooser->itemsToMove();
    VLLOG(7, "MoveTarget = %@", url);
    VLLOG(7, "ItemsToMove = %@", items);
    chooser->dismissViewControllerAnimated(true);
    const std::shared_ptr<NavigationController> navigation = navigationController();
    for (const Url& source : items) {
        const Url destination = url.appendingPathComponent(source.lastPathComponent(), false);
        if (const std::optional<Error> error = FileUtils::moveTo(source, destination)) {
            UIUtils::showErrorParentViewController(
                error, navigation ? navigation->topViewController() : nullptr);
        }
    }
}

}  // namespace vl
