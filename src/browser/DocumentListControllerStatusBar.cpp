#include "browser/DocumentListControllerStatusBar.h"

#include "app/Settings.h"
#include "platform/text/Strings.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/ToolkitIcons.h"

#include <QApplication>
#include <QLabel>
#include <QToolButton>

namespace vl {

namespace {
constexpr int kToggleSize = 36;
}

void DocumentListControllerStatusBar::createStatusBar(
    const std::weak_ptr<DocumentListController>& list) {
    auto* label = new QLabel;
    label->setObjectName(QStringLiteral("statusLabel"));
    label->setAlignment(Qt::AlignCenter);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, Settings::statusLabelColor());
    label->setPalette(palette);
    // A footnote-sized line: a little smaller than the body text.
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * 0.85);
    label->setFont(font);
    statusLabel_ = label;

    auto* toggle = new QToolButton;
    toggle->setObjectName(QStringLiteral("listModeToggle"));
    toggle->setAutoRaise(true);
    toggle->setFixedSize(kToggleSize, kToggleSize);
    toggle->setIconSize(QSize(22, 22));
    toggle->setCursor(Qt::PointingHandCursor);
    listModeToggle_ = toggle;
    const std::shared_ptr<DocumentListController> shown = list.lock();
    showListMode(shown && shown->isGridMode());
    QObject::connect(toggle, &QToolButton::clicked, toggle, [this, list] {
        const std::shared_ptr<DocumentListController> strong = list.lock();
        if (!strong) {
            return;
        }
        const bool grid = !strong->isGridMode();
        strong->setGridMode(grid);
        Settings::setGridMode(grid);
        showListMode(grid);
    });

    // The same width on the left as the toggle takes on the right keeps the label centred.
    const std::shared_ptr<BarButtonItem> balance =
        BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FixedSpace);
    balance->setWidth(kToggleSize);
    const std::shared_ptr<BarButtonItem> flexible =
        BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FlexibleSpace);
    toolbarItems_ = {balance, flexible, BarButtonItem::withCustomView(label), flexible,
                     BarButtonItem::withCustomView(toggle)};
}

void DocumentListControllerStatusBar::showListMode(bool grid) {
    if (!listModeToggle_) {
        return;
    }
    // The button offers the other layout.
    const QString title = Strings::localized(grid ? "Show as List" : "Show as Grid");
    listModeToggle_->setIcon(ToolkitIcons::icon(grid ? QStringLiteral("view-list-details")
                                                     : QStringLiteral("view-grid")));
    listModeToggle_->setToolTip(title);
    listModeToggle_->setAccessibleName(title);
}

std::shared_ptr<DocumentListControllerStatusBar> DocumentListControllerStatusBar::statusBar(
    const std::shared_ptr<DocumentListController>& list) {
    return std::static_pointer_cast<DocumentListControllerStatusBar>(
        list->associatedObject(AssociationKey));
}

void DocumentListControllerStatusBar::setStatusBar(
    const std::shared_ptr<DocumentListController>& list,
    const std::shared_ptr<DocumentListControllerStatusBar>& statusBar) {
    list->setAssociatedObject(AssociationKey, statusBar);
}

void DocumentListControllerStatusBar::createStatusBar(
    const std::shared_ptr<DocumentListController>& list) {
    auto bar = std::make_shared<DocumentListControllerStatusBar>();
    setStatusBar(list, bar);
    bar->createStatusBar(std::weak_ptr<DocumentListController>(list));
}

void DocumentListControllerStatusBar::displayStatusBar(
    const std::shared_ptr<DocumentListController>& list) {
    if (const std::shared_ptr<DocumentListControllerStatusBar> bar = statusBar(list)) {
        list->setToolbarItems(bar->toolbarItems());
    }
}

}  // namespace vl
