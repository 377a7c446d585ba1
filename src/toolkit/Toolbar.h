#pragma once

#include <QList>
#include <QMap>
#include <QPointer>
#include <QWidget>

#include <memory>

class QHBoxLayout;

namespace vl {

class BarButtonItem;

// A row of bar items: titled and icon items as flat buttons, custom views as they are, flexible
// spaces as stretch and fixed spaces as gaps. Redraws an item when it changes. Used as the
// navigation controller's toolbar and for the item groups of the navigation bar.
class Toolbar : public QWidget {
    Q_OBJECT
public:
    explicit Toolbar(QWidget* parent = nullptr);
    ~Toolbar() override;

    const QList<std::shared_ptr<BarButtonItem>>& items() const { return items_; }
    void setItems(const QList<std::shared_ptr<BarButtonItem>>& items);
    // The widget drawn for `item`, or null when the item is not shown here or is a space.
    QWidget* widgetForItem(const std::shared_ptr<BarButtonItem>& item) const;

private:
    void clear();
    QWidget* makeWidget(const std::shared_ptr<BarButtonItem>& item);
    void update(BarButtonItem* item);

    QHBoxLayout* layout_;
    QList<std::shared_ptr<BarButtonItem>> items_;
    QMap<const BarButtonItem*, QPointer<QWidget>> widgets_;
    QList<QMetaObject::Connection> connections_;
};

}  // namespace vl
