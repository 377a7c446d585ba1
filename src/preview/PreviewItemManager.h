#pragma once

#include "toolkit/DocumentTargetSelectionControllerDelegate.h"

#include <QString>

#include <memory>

namespace vl {

class BarButtonItem;
class DocumentInteractionController;
class NavigationController;
class PreviewBaseViewController;
class PreviewDetailsViewController;
class VLItem;
class ViewController;

// The presentation of one item after the user asked to look at it: it makes the item's screens,
// which refer back to it weakly, and serves their Move and Delete buttons. Main thread only.
class PreviewItemManager : public DocumentTargetSelectionControllerDelegate,
                           public std::enable_shared_from_this<PreviewItemManager> {
public:
    enum PreviewMode { PreviewModePreview = 0, PreviewModeDetails = 1 };

    PreviewItemManager() = default;

    const std::shared_ptr<VLItem>& item() const { return item_; }
    // Stores the item without choosing a screen.
    void setItemWithoutPreview(const std::shared_ptr<VLItem>& item) { item_ = item; }
    int mode() const { return mode_; }
    void setMode(int mode) { mode_ = mode; }
    std::shared_ptr<NavigationController> navigationController() const {
        return navigationController_.lock();
    }
    void setNavigationController(const std::shared_ptr<NavigationController>& controller) {
        navigationController_ = controller;
    }
    std::shared_ptr<PreviewDetailsViewController> detailsViewController() const {
        return detailsViewController_;
    }

    // The share sheet's controller, kept alive while its sheet is shown.
    const std::shared_ptr<DocumentInteractionController>& documentInteractionController() const {
        return documentInteractionController_;
    }
    void setDocumentInteractionController(
        const std::shared_ptr<DocumentInteractionController>& controller) {
        documentInteractionController_ = controller;
    }

    std::shared_ptr<PreviewDetailsViewController> createDetailsViewController();
    // A screen this manager made goes away: it is forgotten.
    void viewControllerWillDisappear(const std::shared_ptr<ViewController>& controller);
    // Asks before deleting; a confirmed delete leaves the screen and then deletes the item.
    void showWarningAndDeleteDocumentBarButton(const std::shared_ptr<ViewController>& screen,
                                               const std::shared_ptr<BarButtonItem>& button);
    void showMoveTarget(const std::shared_ptr<ViewController>& screen);
    void documentTargetSelectionControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentTargetSelectionController>& controller,
        const Url& url) override;

private:
    std::shared_ptr<VLItem> item_;
    int mode_ = PreviewModePreview;
    std::weak_ptr<NavigationController> navigationController_;
    std::shared_ptr<PreviewDetailsViewController> detailsViewController_;
    std::shared_ptr<DocumentInteractionController> documentInteractionController_;
};

}  // namespace vl
