#include "preview/PreviewItemManager.h"

#include "fileops/FileUtils.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "preview/PreviewDetailsViewController.h"
#include "toolkit/AlertAction.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentTargetSelectionController.h"
#include "toolkit/NavigationController.h"

namespace vl {

std::shared_ptr<PreviewDetailsViewController> PreviewItemManager::createDetailsViewController() {
    auto controller = std::make_shared<PreviewDetailsViewController>();
    controller->setMode(mode_);
    controller->setItemManager(shared_from_this());
    detailsViewController_ = controller;
    return controller;
}

void PreviewItemManager::viewControllerWillDisappear(
    const std::shared_ptr<ViewController>& controller) {
    if (controller && controller == detailsViewController_) {
        detailsViewController_.reset();
    }
}

void PreviewItemManager::showWarningAndDeleteDocumentBarButton(
    const std::shared_ptr<ViewController>& screen, const std::shared_ptr<BarButtonItem>& button) {
    if (!item_ || item_->url().isEmpty()) {
        return;
    }
    const Url url = item_->url();
    std::weak_ptr<ViewController> weakScreen = screen;
    UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
        {url}, false, screen, nullptr, button,
        [weakScreen, url](const std::shared_ptr<AlertAction>&, bool cancelled) {
            if (cancelled) {
                return;
            }
            const auto screen = weakScreen.lock();
            if (screen && screen->navigationController()) {
                screen->navigationController()->popViewControllerAnimated(true);
            }
            if (const std::optional<Error> error = FileUtils::remove(url)) {
                UIUtils::showErrorParentViewController(error, screen);
            }
        });
}

void PreviewItemManager::showMoveTarget(const std::shared_ptr<ViewController>& screen) {
    VLLOG(6, "Pressed Move");
    if (!item_ || item_->url().isEmpty()) {
        return;
    }
    auto chooser = std::make_shared<DocumentTargetSelectionController>(QList<Url>{item_->url()});
    chooser->setDelegate(weak_from_this());
    chooser->setModalPresentationStyle(ModalPresentationStyle::OverCurrentContext);
    std::shared_ptr<ViewController> presenter = screen ? screen->navigationController() : nullptr;
    if (!presenter) {
        presenter = screen;
    }
    if (presenter) {
        presenter->presentViewController(chooser, true, [] { VLLOG(7, "Presented moveTarget"); });
    }
}

void PreviewItemManager::documentTargetSelectionControllerDidSelectItemAtURL(
    const std::shared_ptr<DocumentTargetSelectionController>& controller, const Url& url) {
    VLLOG(7, "MoveTarget = %@", url);
    const QList<Url> items = controller->itemsToMove();
    controller->dismissViewControllerAnimated(true);
    for (const Url& item : items) {
        const Url destination = url.appendingPathComponent(item.lastPathComponent(), false);
        if (const std::optional<Error> error = FileUtils::moveTo(item, destination)) {
            const auto nav = navigationController();
            UIUtils::showErrorParentViewController(error, nav ? nav->topViewController() : nullptr);
        }
    }
}

}  // namespace vl
