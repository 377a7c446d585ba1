#include "toolkit/NavigationBar.h"

#include "platform/app/NetworkActivityIndicator.h"
#include "toolkit/ActivitySpinner.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/Toolbar.h"

#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPalette>

namespace vl {

NavigationBar::NavigationBar(QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, QColor(247, 247, 247));
    setPalette(palette);
    setMinimumHeight(44);

    // Three columns: the title stays centred on the bar whatever the widths of the sides.
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(4, 0, 4, 0);
    grid->setHorizontalSpacing(4);

    auto* left = new QWidget(this);
    auto* leftLayout = new QHBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->setSpacing(0);
    backButton_ = new QToolButton(left);
    backButton_->setObjectName(QStringLiteral("backButton"));
    backButton_->setAutoRaise(true);
    backButton_->setStyleSheet(QStringLiteral("QToolButton { color: #007aff; padding: 4px; }"));
    connect(backButton_, &QToolButton::clicked, this, [this] {
        if (backAction_) {
            backAction_();
        }
    });
    leftItems_ = new Toolbar(left);
    leftItems_->layout()->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(backButton_);
    leftLayout->addWidget(leftItems_);
    leftLayout->addStretch(1);

    titleLabel_ = new QLabel(this);
    titleLabel_->setObjectName(QStringLiteral("navigationTitle"));
    titleLabel_->setAlignment(Qt::AlignCenter);
    QFont font = titleLabel_->font();
    font.setBold(true);
    titleLabel_->setFont(font);
    titleViewSlot_ = new QWidget(this);
    auto* slotLayout = new QHBoxLayout(titleViewSlot_);
    slotLayout->setContentsMargins(0, 0, 0, 0);
    titleViewSlot_->hide();

    auto* right = new QWidget(this);
    auto* rightLayout = new QHBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->setSpacing(4);
    spinner_ = new ActivitySpinner(right);
    rightItems_ = new Toolbar(right);
    rightItems_->layout()->setContentsMargins(0, 0, 0, 0);
    rightLayout->addStretch(1);
    rightLayout->addWidget(spinner_);
    rightLayout->addWidget(rightItems_);

    grid->addWidget(left, 0, 0);
    grid->addWidget(titleLabel_, 0, 1);
    grid->addWidget(titleViewSlot_, 0, 1);
    grid->addWidget(right, 0, 2);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(2, 1);

    QPointer<ActivitySpinner> spinner = spinner_;
    auto follow = [spinner](bool visible) {
        if (spinner) {
            visible ? spinner->startAnimating() : spinner->stopAnimating();
        }
    };
    indicatorToken_ = NetworkActivityIndicator::shared().addObserver(follow);
    follow(NetworkActivityIndicator::shared().isNetworkActivityIndicatorVisible());
    rebuild();
}

NavigationBar::~NavigationBar() {
    disconnect(itemConnection_);
    // Hand a title view back to its owner before the bar's children go.
    if (item_ && item_->titleView() && item_->titleView()->parent() == titleViewSlot_) {
        item_->titleView()->hide();
        item_->titleView()->setParent(nullptr);
    }
}

void NavigationBar::setItem(const std::shared_ptr<NavigationItem>& item,
                            const QString& fallbackTitle, const QString& backTitle) {
    if (item_ != item) {
        disconnect(itemConnection_);
        if (item_ && item_->titleView() && item_->titleView()->parent() == titleViewSlot_) {
            item_->titleView()->hide();
            item_->titleView()->setParent(nullptr);
        }
        item_ = item;
        if (item_) {
            itemConnection_ =
                connect(item_.get(), &NavigationItem::changed, this, &NavigationBar::rebuild);
        }
    }
    fallbackTitle_ = fallbackTitle;
    backTitle_ = backTitle;
    hasBack_ = !backTitle.isNull();
    rebuild();
}

void NavigationBar::rebuild() {
    const bool backVisible = hasBack_ && !(item_ && item_->hidesBackButton());
    backButton_->setText(QStringLiteral("‹ ") +
                         (backTitle_.isEmpty() ? QStringLiteral("Back") : backTitle_));
    backButton_->setVisible(backVisible);
    titleLabel_->setText(displayedTitle());
    QWidget* titleView = item_ ? item_->titleView() : nullptr;
    if (titleView) {
        if (titleView->parent() != titleViewSlot_) {
            titleViewSlot_->layout()->addWidget(titleView);
        }
        titleView->show();
    }
    titleViewSlot_->setVisible(titleView != nullptr);
    titleLabel_->setVisible(titleView == nullptr);
    leftItems_->setItems(item_ ? item_->leftBarButtonItems()
                               : QList<std::shared_ptr<BarButtonItem>>{});
    rightItems_->setItems(item_ ? item_->rightBarButtonItems()
                                : QList<std::shared_ptr<BarButtonItem>>{});
}

QString NavigationBar::displayedTitle() const {
    if (item_ && !item_->title().isEmpty()) {
        return item_->title();
    }
    return fallbackTitle_;
}

bool NavigationBar::isBackButtonVisible() const {
    return hasBack_ && !(item_ && item_->hidesBackButton());
}

QWidget* NavigationBar::widgetForItem(const std::shared_ptr<BarButtonItem>& item) const {
    if (QWidget* widget = rightItems_->widgetForItem(item)) {
        return widget;
    }
    return leftItems_->widgetForItem(item);
}

}  // namespace vl
