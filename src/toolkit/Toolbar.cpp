#include "toolkit/Toolbar.h"

#include "toolkit/BarButtonItem.h"

#include <QFont>
#include <QHBoxLayout>
#include <QToolButton>

namespace vl {

namespace {
constexpr int kDefaultGap = 8;
}

Toolbar::Toolbar(QWidget* parent) : QWidget(parent), layout_(new QHBoxLayout(this)) {
    layout_->setContentsMargins(8, 4, 8, 4);
    layout_->setSpacing(kDefaultGap);
}

Toolbar::~Toolbar() {
    clear();
}

void Toolbar::clear() {
    for (const QMetaObject::Connection& c : connections_) {
        disconnect(c);
    }
    connections_.clear();
    while (QLayoutItem* entry = layout_->takeAt(0)) {
        delete entry;
    }
    for (auto it = widgets_.begin(); it != widgets_.end(); ++it) {
        QWidget* widget = it.value();
        if (!widget) {
            continue;
        }
        if (const auto match =
                std::find_if(items_.begin(), items_.end(),
                             [&](const auto& item) { return item->customView() == widget; });
            match != items_.end()) {
            // A custom view belongs to its item: hand it back, don't delete it.
            widget->hide();
            widget->setParent(nullptr);
        } else {
            // Later: the tap being handled may be the one on this very button.
            widget->hide();
            widget->deleteLater();
        }
    }
    widgets_.clear();
}

void Toolbar::setItems(const QList<std::shared_ptr<BarButtonItem>>& items) {
    clear();
    items_ = items;
    for (const std::shared_ptr<BarButtonItem>& item : items_) {
        if (item->isFlexibleSpace()) {
            layout_->addStretch(1);
            continue;
        }
        if (item->isFixedSpace()) {
            layout_->addSpacing(item->width() > 0 ? item->width() : kDefaultGap);
            continue;
        }
        QWidget* widget = makeWidget(item);
        if (!widget) {
            continue;
        }
        widgets_.insert(item.get(), widget);
        layout_->addWidget(widget);
        widget->show();
        connections_.append(connect(item.get(), &BarButtonItem::changed, this,
                                    [this, raw = item.get()] { update(raw); }));
    }
}

QWidget* Toolbar::makeWidget(const std::shared_ptr<BarButtonItem>& item) {
    if (QWidget* custom = item->customView()) {
        custom->setParent(this);
        custom->setEnabled(item->isEnabled());
        return custom;
    }
    auto* button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setCursor(Qt::PointingHandCursor);
    std::weak_ptr<BarButtonItem> weak = item;
    connect(button, &QToolButton::clicked, this, [weak] {
        if (std::shared_ptr<BarButtonItem> strong = weak.lock()) {
            strong->trigger();
        }
    });
    widgets_.insert(item.get(), button);
    update(item.get());
    return button;
}

void Toolbar::update(BarButtonItem* item) {
    QWidget* widget = widgets_.value(item);
    if (!widget) {
        return;
    }
    widget->setEnabled(item->isEnabled());
    auto* button = qobject_cast<QToolButton*>(widget);
    if (!button || item->customView()) {
        return;
    }
    button->setText(item->title());
    button->setIcon(item->icon());
    button->setIconSize(QSize(22, 22));
    button->setToolButtonStyle(item->title().isEmpty() ? Qt::ToolButtonIconOnly
                                                       : Qt::ToolButtonTextOnly);
    button->setAccessibleName(item->accessibleName());
    QFont font = button->font();
    font.setBold(item->style() == BarButtonItem::Style::Done);
    button->setFont(font);
    button->setStyleSheet(
        QStringLiteral("QToolButton { color: %1; padding: 4px; }")
            .arg(item->isEnabled() ? QStringLiteral("#007aff") : QStringLiteral("#b0b0b0")));
}

QWidget* Toolbar::widgetForItem(const std::shared_ptr<BarButtonItem>& item) const {
    return item ? widgets_.value(item.get()) : nullptr;
}

}  // namespace vl
