#include "toolkit/UndoBar.h"

#include "platform/dispatch/Dispatch.h"
#include "platform/text/Strings.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace vl {

namespace {

// A finger's width: the bar and its button are easy to hit on a touch screen.
constexpr int TouchSize = 48;
constexpr int Margin = 12;

}  // namespace

UndoBar::UndoBar(QWidget* parent)
    : QWidget(parent), label_(new QLabel(this)), undoButton_(new QPushButton(this)) {
    setObjectName(QStringLiteral("UndoBar"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(
        QStringLiteral("#UndoBar { background: rgba(40, 40, 44, 235); border-radius: 10px; }"
                       "#UndoBar QLabel { color: white; }"
                       "#UndoBar QPushButton { color: #64b5ff; font-weight: bold; border: none; "
                       "padding: 0 12px; background: transparent; }"));
    setMinimumHeight(TouchSize);
    label_->setWordWrap(true);
    label_->setTextInteractionFlags(Qt::NoTextInteraction);
    const QString undoTitle = Strings::localized("Undo");
    undoButton_->setText(undoTitle);
    undoButton_->setAccessibleName(undoTitle);
    undoButton_->setMinimumSize(TouchSize, TouchSize);
    undoButton_->setCursor(Qt::PointingHandCursor);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(16, 0, 4, 0);
    layout->addWidget(label_, 1);
    layout->addWidget(undoButton_);
    connect(undoButton_, &QPushButton::clicked, this, &UndoBar::triggerUndo);
    if (parent) {
        parent->installEventFilter(this);
    }
    hide();
}

void UndoBar::showMessage(const QString& message, std::function<void()> undo,
                          std::chrono::milliseconds duration) {
    label_->setText(message);
    label_->setAccessibleName(message);
    setAccessibleName(message);
    undo_ = std::move(undo);
    undoButton_->setVisible(bool(undo_));
    const quint64 generation = ++generation_;
    place();
    show();
    raise();
    Dispatch::mainQueue()->after(duration, [self = QPointer<UndoBar>(this), generation] {
        if (self && self->generation_ == generation) {
            self->dismiss();
        }
    });
}

void UndoBar::dismiss() {
    ++generation_;
    undo_ = nullptr;
    hide();
}

QString UndoBar::message() const {
    return isHidden() ? QString() : label_->text();
}

bool UndoBar::canUndo() const {
    return !isHidden() && bool(undo_);
}

void UndoBar::triggerUndo() {
    if (!canUndo()) {
        return;
    }
    // Once only: the bar goes before the undo runs, which may show a message of its own.
    std::function<void()> undo = std::exchange(undo_, nullptr);
    dismiss();
    undo();
}

void UndoBar::setBottomInset(int pixels) {
    bottomInset_ = pixels;
    place();
}

void UndoBar::place() {
    QWidget* parent = parentWidget();
    if (!parent) {
        return;
    }
    const int width = std::min(parent->width() - 2 * Margin, 560);
    const int height =
        std::max(TouchSize, hasHeightForWidth() ? heightForWidth(width) : sizeHint().height());
    setGeometry((parent->width() - width) / 2, parent->height() - bottomInset_ - Margin - height,
                width, height);
}

bool UndoBar::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize && !isHidden()) {
        place();
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace vl
