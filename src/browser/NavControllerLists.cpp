// Folder lists and edit mode: how each list is configured when it is shown, the Select / Cancel
// switch, the selection title, and entering folders.

#include "browser/NavController.h"

#include "app/Settings.h"
#include "browser/DocumentListControllerStatusBar.h"
#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/Background.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/NavigationItem.h"

#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace vl {

namespace {

// The item count last written to the log by documentListControllerItemsChanged; it only decides
// whether that line is written again.
unsigned lastLoggedItemCount = 0;

}  // namespace

void NavController::initNewListController(const std::shared_ptr<DocumentListController>& list) {
    viewTitle_ = list->title();
    const Url url = list->presentedURL();
    VLLOG(7, "DLC title: %@", list->title());
    VLLOG(7, "DLC URL: %@", url);
    VLLOG(7, "DLC Name: %@",
          FileUtils::getResourceValueForURL(ItemAttributeKey::LocalizedName, url));
    VLLOG(7, "DLC UTI: %@", FileUtils::getResourceValueForURL(ItemAttributeKey::ContentType, url));
    VLLOG(7, "DLC Type: %@",
          FileUtils::getResourceValueForURL(ItemAttributeKey::LocalizedTypeDescription, url));
    const QList<Url> items = list->containedItems();
    VLLOG(7, "DLC has %d items: %@", int(items.size()), items);

    list->setAvailableActions(Settings::quickLaunch() ? 7 : 3);
    list->setAvailableActions(list->availableActions() | 8);
    configureNavBar(list);
    if (list->title().isEmpty()) {
        VLLOG(4, "Warning: newList title not set");
    }
    fillBackground(list->view(), Settings::backgroundColor());
    // Every list shows the layout last chosen with the status bar's toggle.
    list->setGridMode(Settings::gridMode());
    configureToolbar(list);
    list->setDelegate(sharedAs<NavController>());
}

void NavController::configureNavBar(const std::shared_ptr<DocumentListController>& list) {
    const std::shared_ptr<NavigationItem> item = list->navigationItem();
    std::shared_ptr<BarButtonItem> button;
    if (editMode_) {
        button = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Cancel);
        button->setTarget(sharedAs<NavController>(), &NavController::endEditMode);
    } else {
        button =
            BarButtonItem::withTitle(Strings::localized("Select"), BarButtonItem::Style::Plain);
        button->setTarget(sharedAs<NavController>(), &NavController::beginEditMode);
    }
    item->setRightBarButtonItem(button);
    item->setHidesBackButton(editMode_, false);
    item->setTitle(editMode_ ? Strings::localized("Select Items") : viewTitle_);
}

std::shared_ptr<BarButtonItem> NavController::makeToolbarButton(
    const char* titleKey, void (NavController::*action)(const std::shared_ptr<BarButtonItem>&)) {
    const QString title = Strings::localized(titleKey);
    auto* button = new QPushButton(title);
    button->setFlat(true);
    button->setAccessibleName(title);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(
        QStringLiteral("QPushButton { color: #007aff; border: none; padding: "
                       "4px 8px; } QPushButton:disabled { color: #b0b0b0; }"));
    button->adjustSize();
    const std::shared_ptr<BarButtonItem> item = BarButtonItem::withCustomView(button);
    connect(button, &QPushButton::clicked, this,
            [weakSelf = std::weak_ptr<NavController>(sharedAs<NavController>()),
             weakItem = std::weak_ptr<BarButtonItem>(item), action] {
                const std::shared_ptr<NavController> self = weakSelf.lock();
                const std::shared_ptr<BarButtonItem> sender = weakItem.lock();
                if (self && sender) {
                    ((*self).*action)(sender);
                }
            });
    return item;
}

void NavController::configureToolbar(const std::shared_ptr<DocumentListController>& list) {
    barButtonNewFolder_.reset();
    barButtonDeleteItem_.reset();
    barButtonMoveItem_.reset();
    if (editMode_) {
        barButtonNewFolder_ =
            makeToolbarButton("New Folder", &NavController::promtForNewFolderAndCreate);
        barButtonMoveItem_ =
            makeToolbarButton("Move", &NavController::showMoveTargetForSelectedItems);
        barButtonDeleteItem_ =
            makeToolbarButton("Delete", &NavController::showWarningAndDeleteDocument);
        const std::shared_ptr<BarButtonItem> flexible =
            BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FlexibleSpace);
        list->setToolbarItems(
            {barButtonNewFolder_, flexible, barButtonMoveItem_, flexible, barButtonDeleteItem_});
        return;
    }
    if (!DocumentListControllerStatusBar::statusBar(list)) {
        DocumentListControllerStatusBar::createStatusBar(list);
    }
    DocumentListControllerStatusBar::displayStatusBar(list);
    updateStatusUI(list);
}

void NavController::configureVisibleControllerForMode() {
    if (const std::shared_ptr<DocumentListController> list = getTopDocumentListController()) {
        configureNavBar(list);
        configureToolbar(list);
        updateStatusUI(list);
    }
}

void NavController::setEditModeAndUpdateUIForViewController(
    bool editMode, const std::shared_ptr<DocumentListController>& list) {
    editMode_ = editMode;
    if (list) {
        list->setEditing(editMode, true);
    }
    configureVisibleControllerForMode();
    // New Folder depends only on the folder shown, so it is decided once, here.
    if (editMode_ && barButtonNewFolder_ && list) {
        barButtonNewFolder_->setEnabled(canEnableNewFolderForSelectedItems(list));
    }
}

void NavController::beginEditMode(const std::shared_ptr<BarButtonItem>&) {
    VLLOG(6, "Begin Edit mode");
    setEditModeAndUpdateUIForViewController(true, getTopDocumentListController());
}

void NavController::endEditMode(const std::shared_ptr<BarButtonItem>&) {
    const std::shared_ptr<DocumentListController> list = getTopDocumentListController();
    const QList<Url> selected = list ? list->selectedItems() : QList<Url>();
    VLLOG(7, "EndEditMode.  Selected %d items: %@", int(selected.size()), selected);
    setEditModeAndUpdateUIForViewController(false, list);
}

void NavController::selectAllItems(const std::shared_ptr<BarButtonItem>&) {
    VLLOG(6, "Pressed SelectAll");
    const std::shared_ptr<DocumentListController> list = getTopDocumentListController();
    if (!list) {
        return;
    }
    const QList<Url> items = list->containedItems();
    VLLOG(7, "DLC has %d contained items", int(items.size()));
    list->setSelectedItems(items);
    const QList<Url> selected = list->selectedItems();
    VLLOG(7, "Selected all %d: %@", int(selected.size()), selected);
}

std::shared_ptr<DocumentListController> NavController::getTopDocumentListController() const {
    const std::shared_ptr<ViewController> top = topViewController();
    if (!top) {
        VLLOG(4, "ERROR: topViewController is nil");
    }
    return std::dynamic_pointer_cast<DocumentListController>(top);
}

void NavController::updateStatusUI(const std::shared_ptr<DocumentListController>& given) {
    if (!pickerIsAlive_) {
        return;
    }
    const std::shared_ptr<DocumentListController> list =
        given ? given : getTopDocumentListController();
    if (!list) {
        return;
    }
    if (const auto bar = DocumentListControllerStatusBar::statusBar(list);
        bar && bar->statusLabel()) {
        bar->statusLabel()->setText(toolbarStatusText(unsigned(list->itemCount())));
        bar->statusLabel()->updateGeometry();
    }
    if (!editMode_) {
        return;
    }
    const int selected = int(list->selectedItems().size());
    list->navigationItem()->setTitle(
        selected > 0
            ? format(Strings::localizedPlural(QStringLiteral(".DICT.ITEMS_SELECTED.%d"), selected),
                     selected)
            : Strings::localized("Select Items"));
    if (barButtonMoveItem_) {
        barButtonMoveItem_->setEnabled(canShowMoveForSelectedItems(list));
    }
    if (barButtonDeleteItem_) {
        barButtonDeleteItem_->setEnabled(canShowDeleteForSelectedItems(list));
    }
}

void NavController::documentListControllerItemsChanged(
    const std::shared_ptr<DocumentListController>& list) {
    pickerIsAlive_ = true;
    if (list != getTopDocumentListController()) {
        return;
    }
    if (editMode_) {
        VLLOG(7, "DLC selected item count is %@", list->selectedItems().size());
    } else {
        const auto count = unsigned(list->itemCount());
        if (count != lastLoggedItemCount) {
            lastLoggedItemCount = count;
            VLLOG(7, "DLC items changed, count is %@", count);
        }
    }
    updateStatusUI(list);
    refreshBytesOnDevice();
}

void NavController::documentListControllerDidSelectContainerWithViewController(
    const std::shared_ptr<DocumentListController>& list,
    const std::shared_ptr<DocumentListController>& newList) {
    if (editMode_) {
        VLLOG(4, "DLC Navigation not allowed while in edit mode");
        return;
    }
    // A folder found by search opens with the lists of the folders above it.
    if (list && list->isShowingSearchResults()) {
        list->endSearch();
        if (const auto hierarchy =
                DocumentListController::hierarchyForURL(newList->presentedURL())) {
            setViewControllers(
                QList<std::shared_ptr<ViewController>>(hierarchy->begin(), hierarchy->end()),
                false);
            return;
        }
        VLLOG(3, "Search folder tap: Couldn't build DLC stack for %@.", newList->presentedURL());
    }
    initNewListController(newList);
    pushViewController(newList, true);
}

void NavController::navigationControllerDidShowViewController(
    const std::shared_ptr<NavigationController>&, const std::shared_ptr<ViewController>& shown,
    bool) {
    const auto list = std::dynamic_pointer_cast<DocumentListController>(shown);
    if (!list) {
        return;
    }
    // Leaving a preview ends it.
    if (itemManager_) {
        itemManager_->unregisterAsFilePresenter();
    }
    itemManager_.reset();
    if (editMode_) {
        editMode_ = list->isEditing();
    }
    updateStatusUI(list);
    initNewListController(list);
    setToolbarHidden(false);
}

}  // namespace vl
