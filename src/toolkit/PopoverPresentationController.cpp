#include "toolkit/PopoverPresentationController.h"

#include "toolkit/NavigationBar.h"
#include "toolkit/Toolbar.h"

namespace vl {

namespace {

template <typename Bar>
QWidget* findItemWidget(const QWidget* window, const std::shared_ptr<BarButtonItem>& item) {
    for (Bar* bar : window->findChildren<Bar*>()) {
        if (QWidget* widget = bar->widgetForItem(item); widget && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

}  // namespace

std::optional<QRect> PopoverPresentationController::anchorRectIn(const QWidget* overlay) const {
    if (!overlay) {
        return std::nullopt;
    }
    if (sourceView_ && sourceView_->isVisible() && sourceView_->window() == overlay->window()) {
        const QRect rect = sourceRect_.isNull() ? sourceView_->rect() : sourceRect_;
        const QPoint inWindow = sourceView_->mapTo(overlay->window(), rect.topLeft());
        return QRect(inWindow - overlay->mapTo(overlay->window(), QPoint(0, 0)), rect.size());
    }
    if (std::shared_ptr<BarButtonItem> item = barButtonItem_.lock()) {
        QWidget* widget = findItemWidget<Toolbar>(overlay->window(), item);
        if (!widget) {
            widget = findItemWidget<NavigationBar>(overlay->window(), item);
        }
        if (widget) {
            const QPoint inWindow = widget->mapTo(overlay->window(), QPoint(0, 0));
            return QRect(inWindow - overlay->mapTo(overlay->window(), QPoint(0, 0)),
                         widget->size());
        }
    }
    return std::nullopt;
}

}  // namespace vl
