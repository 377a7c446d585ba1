#pragma once

#include "platform/files/Url.h"
#include "toolkit/PreviewController.h"
#include "toolkit/PreviewControllerDataSource.h"
#include "toolkit/PreviewControllerDelegate.h"

#include <QList>

#include <memory>
#include <optional>

namespace vl {

class BarButtonItem;
class PreviewItemManager;

// The quick preview of the item a PreviewItemManager shows, with Share, Delete and Move beside
// the preview's own buttons; Move and Delete are the manager's work. One instance serves every
// preview of the process: each new manager re-targets it. Main thread only.
class GlimpseItemController : public PreviewController,
                              public PreviewControllerDataSource,
                              public PreviewControllerDelegate {
    Q_OBJECT
public:
    // The shared instance, made on the first call; it is never destroyed.
    static std::shared_ptr<GlimpseItemController> defaultController();

    // A controller of its own, for callers that must not disturb the shared one; it is its own
    // data source and delegate.
    static std::shared_ptr<GlimpseItemController> create();
    GlimpseItemController();

    // Shows the manager's item (nothing when it has none) without reloading.
    void initWithItemManager(const std::shared_ptr<PreviewItemManager>& manager);
    // Re-targets to the manager and shows its item.
    void glimpseNewItem(const std::shared_ptr<PreviewItemManager>& manager);
    // Whether the view is loaded and in a window.
    bool isVisible();

    std::shared_ptr<PreviewItemManager> itemManager() const { return itemManager_.lock(); }
    const std::optional<QList<Url>>& arrayOfDocuments() const { return arrayOfDocuments_; }
    std::shared_ptr<BarButtonItem> barButtonMoveItem() const { return barButtonMoveItem_; }
    std::shared_ptr<BarButtonItem> barButtonDeleteItem() const { return barButtonDeleteItem_; }
    std::shared_ptr<BarButtonItem> barButtonActionItem() const { return barButtonActionItem_; }

    void viewWillDisappear(bool animated) override;

    int numberOfPreviewItemsInPreviewController(PreviewController& controller) override;
    Url previewControllerPreviewItemAtIndex(PreviewController& controller, int index) override;

    // Targets of the Move, Delete and Share buttons.
    void showMoveTarget(const std::shared_ptr<BarButtonItem>& sender);
    void showWarningAndDeleteDocument(const std::shared_ptr<BarButtonItem>& sender);
    // The share sheet of the document shown, kept alive by the manager while it is up.
    void showDocumentActivities(const std::shared_ptr<BarButtonItem>& sender);

private:
    void setUp();

    std::weak_ptr<PreviewItemManager> itemManager_;
    std::optional<QList<Url>> arrayOfDocuments_;
    std::shared_ptr<BarButtonItem> barButtonMoveItem_;
    std::shared_ptr<BarButtonItem> barButtonDeleteItem_;
    std::shared_ptr<BarButtonItem> barButtonActionItem_;
};

}  // namespace vl
