#include "preview/GlimpseItemController.h"

#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentInteractionController.h"

#include <mutex>

namespace vl {

std::shared_ptr<GlimpseItemController> GlimpseItemController::defaultController() {
    // Held by a pointer that is never freed: the controller owns widgets, which must not be
    // destroyed after the application object at exit.
    static std::once_flag once;
    static std::shared_ptr<GlimpseItemController>* shared = nullptr;
    std::call_once(once, [] { shared = new std::shared_ptr<GlimpseItemController>(create()); });
    return *shared;
}

std::shared_ptr<GlimpseItemController> GlimpseItemController::create() {
    auto controller = std::make_shared<GlimpseItemController>();
    controller->setUp();
    return controller;
}

GlimpseItemController::GlimpseItemController() = default;

void GlimpseItemController::setUp() {
    const std::shared_ptr<GlimpseItemController> self = sharedAs<GlimpseItemController>();
    setDelegate(self);
    setDataSource(self);
    barButtonMoveItem_ = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Organize);
    barButtonMoveItem_->setTarget(self, &GlimpseItemController::showMoveTarget);
    barButtonDeleteItem_ = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Trash);
    barButtonDeleteItem_->setTarget(self, &GlimpseItemController::showWarningAndDeleteDocument);
    // The platform's quick preview has a share button of its own; this one stands in for it.
    barButtonActionItem_ = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Action);
    barButtonActionItem_->setTarget(self, &GlimpseItemController::showDocumentActivities);
    setAdditionalRightBarButtonItems(
        {barButtonActionItem_, barButtonDeleteItem_, barButtonMoveItem_});
}

void GlimpseItemController::initWithItemManager(
    const std::shared_ptr<PreviewItemManager>& manager) {
    itemManager_ = manager;
    if (manager && manager->item()) {
        arrayOfDocuments_ = QList<Url>{manager->item()->resolvedURL()};
    } else {
        arrayOfDocuments_.reset();
    }
}

void GlimpseItemController::glimpseNewItem(const std::shared_ptr<PreviewItemManager>& manager) {
    initWithItemManager(manager);
    reloadData();
}

bool GlimpseItemController::isVisible() {
    return isViewLoaded() && view()->window() && view()->isVisible();
}

void GlimpseItemController::viewWillDisappear(bool animated) {
    if (const std::shared_ptr<PreviewItemManager> manager = itemManager()) {
        manager->viewControllerWillDisappear(sharedAs<ViewController>());
    }
    PreviewController::viewWillDisappear(animated);
}

int GlimpseItemController::numberOfPreviewItemsInPreviewController(PreviewController&) {
    return arrayOfDocuments_ ? int(arrayOfDocuments_->size()) : 0;
}

Url GlimpseItemController::previewControllerPreviewItemAtIndex(PreviewController&, int index) {
    if (!arrayOfDocuments_ || index < 0 || index >= arrayOfDocuments_->size()) {
        return Url();
    }
    return arrayOfDocuments_->at(index);
}

void GlimpseItemController::showMoveTarget(const std::shared_ptr<BarButtonItem>&) {
    VLLOG(6, "Pressed Move");
    if (const std::shared_ptr<PreviewItemManager> manager = itemManager()) {
        manager->showMoveTarget(sharedAs<ViewController>());
    }
}

void GlimpseItemController::showWarningAndDeleteDocument(const std::shared_ptr<BarButtonItem>&) {
    if (const std::shared_ptr<PreviewItemManager> manager = itemManager()) {
        manager->showWarningAndDeleteDocumentBarButton(sharedAs<ViewController>(),
                                                       barButtonDeleteItem_);
    }
}

void GlimpseItemController::showDocumentActivities(const std::shared_ptr<BarButtonItem>&) {
    const std::shared_ptr<PreviewItemManager> manager = itemManager();
    if (!manager || !manager->item() || !manager->item()->resolvedURL().isFileURL()) {
        return;
    }
    const Url url = manager->item()->resolvedURL();
    VLLOG(6, "showDocumentActivities: %@", url);
    const auto sheet = DocumentInteractionController::interactionControllerWithURL(url);
    manager->setDocumentInteractionController(sheet);
    sheet->presentOptionsMenuFromBarButtonItemAnimated(barButtonActionItem_, true);
}

}  // namespace vl
