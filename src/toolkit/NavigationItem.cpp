#include "toolkit/NavigationItem.h"

namespace vl {

void NavigationItem::setTitle(const QString& title) {
    if (title_ != title) {
        title_ = title;
        emit changed();
    }
}

void NavigationItem::setTitleView(QWidget* view) {
    titleView_ = view;
    emit changed();
}

void NavigationItem::setHidesBackButton(bool hidden, bool /*animated*/) {
    if (hidesBackButton_ != hidden) {
        hidesBackButton_ = hidden;
        emit changed();
    }
}

std::shared_ptr<BarButtonItem> NavigationItem::rightBarButtonItem() const {
    return right_.isEmpty() ? nullptr : right_.first();
}

void NavigationItem::setRightBarButtonItem(const std::shared_ptr<BarButtonItem>& item,
                                           bool animated) {
    setRightBarButtonItems(item ? QList{item} : QList<std::shared_ptr<BarButtonItem>>{}, animated);
}

void NavigationItem::setRightBarButtonItems(const QList<std::shared_ptr<BarButtonItem>>& items,
                                            bool /*animated*/) {
    right_ = items;
    emit changed();
}

std::shared_ptr<BarButtonItem> NavigationItem::leftBarButtonItem() const {
    return left_.isEmpty() ? nullptr : left_.first();
}

void NavigationItem::setLeftBarButtonItem(const std::shared_ptr<BarButtonItem>& item,
                                          bool animated) {
    setLeftBarButtonItems(item ? QList{item} : QList<std::shared_ptr<BarButtonItem>>{}, animated);
}

void NavigationItem::setLeftBarButtonItems(const QList<std::shared_ptr<BarButtonItem>>& items,
                                           bool /*animated*/) {
    left_ = items;
    emit changed();
}

}  // namespace vl
