#pragma once

#include "toolkit/ActivitySpinner.h"

#include <QList>
#include <QPointer>
#include <QToolButton>
#include <QWidget>

#include <functional>
#include <memory>

class QHBoxLayout;
class QLabel;

namespace vl {

class BarButtonItem;
class NavigationItem;
class Toolbar;

// The bar at the top of a navigation controller: a back button titled with the previous
// controller's title, the top controller's left items, its title (or title view) centred, its
// right items, and a small spinner while the network activity indicator is on.
class NavigationBar : public QWidget {
    Q_OBJECT
public:
    explicit NavigationBar(QWidget* parent = nullptr);
    ~NavigationBar() override;

    // Shows `item`; `backTitle` absent (null) means there is nothing to go back to.
    void setItem(const std::shared_ptr<NavigationItem>& item, const QString& fallbackTitle,
                 const QString& backTitle);
    void setBackAction(std::function<void()> action) { backAction_ = std::move(action); }

    QString displayedTitle() const;
    bool isBackButtonVisible() const;
    QToolButton* backButton() const { return backButton_; }
    ActivitySpinner* activitySpinner() const { return spinner_; }
    // The widget drawn for a bar item shown in this bar, or null.
    QWidget* widgetForItem(const std::shared_ptr<BarButtonItem>& item) const;

private:
    void rebuild();

    std::shared_ptr<NavigationItem> item_;
    QString fallbackTitle_;
    QString backTitle_;
    bool hasBack_ = false;
    std::function<void()> backAction_;
    QPointer<QToolButton> backButton_;
    QPointer<QLabel> titleLabel_;
    QPointer<Toolbar> leftItems_;
    QPointer<Toolbar> rightItems_;
    QPointer<QWidget> titleViewSlot_;
    QPointer<ActivitySpinner> spinner_;
    std::shared_ptr<void> indicatorToken_;
    QMetaObject::Connection itemConnection_;
};

}  // namespace vl
