#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

namespace vl {

class BarButtonItem;

// What the navigation bar shows while its controller is on top: title (or a custom title
// view), left and right bar items, and whether the back button is hidden. Every change emits
// changed() so that a bar showing the item redraws.
class NavigationItem : public QObject {
    Q_OBJECT
public:
    NavigationItem() = default;

    QString title() const { return title_; }
    void setTitle(const QString& title);

    // A widget shown in place of the title; the navigation item does not own it.
    QWidget* titleView() const { return titleView_; }
    void setTitleView(QWidget* view);

    bool hidesBackButton() const { return hidesBackButton_; }
    void setHidesBackButton(bool hidden, bool animated = false);

    std::shared_ptr<BarButtonItem> rightBarButtonItem() const;
    void setRightBarButtonItem(const std::shared_ptr<BarButtonItem>& item, bool animated = false);
    const QList<std::shared_ptr<BarButtonItem>>& rightBarButtonItems() const { return right_; }
    void setRightBarButtonItems(const QList<std::shared_ptr<BarButtonItem>>& items,
                                bool animated = false);

    std::shared_ptr<BarButtonItem> leftBarButtonItem() const;
    void setLeftBarButtonItem(const std::shared_ptr<BarButtonItem>& item, bool animated = false);
    const QList<std::shared_ptr<BarButtonItem>>& leftBarButtonItems() const { return left_; }
    void setLeftBarButtonItems(const QList<std::shared_ptr<BarButtonItem>>& items,
                               bool animated = false);

signals:
    void changed();

private:
    QString title_;
    QPointer<QWidget> titleView_;
    bool hidesBackButton_ = false;
    QList<std::shared_ptr<BarButtonItem>> right_;
    QList<std::shared_ptr<BarButtonItem>> left_;
};

}  // namespace vl
