#include "toolkit/PresentationOverlay.h"

#include "toolkit/Window.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>

namespace vl {

namespace {
constexpr int kAnimationMilliseconds = 220;
constexpr int kAlertWidth = 270;
constexpr int kSheetMargin = 8;
constexpr int kPopoverWidth = 320;
constexpr int kArrowLength = 12;
constexpr int kPopoverGap = 10;  // from the window's edges
using Arrow = PopoverPresentationController::ArrowDirection;

int heightFor(QWidget* content, int width) {
    const int forWidth = content->heightForWidth(width);
    return forWidth > 0 ? forWidth : content->sizeHint().height();
}

}  // namespace

PresentationOverlay::PresentationOverlay(QWidget* host, QWidget* content,
                                         ModalPresentationStyle style)
    : QWidget(host), host_(host), content_(content), style_(style) {
    setObjectName(QStringLiteral("presentationOverlay"));
    content_->setParent(this);
    // Content that changes its size (a prompt's message line coming and going) is placed again.
    content_->installEventFilter(this);
    if (host_) {
        host_->installEventFilter(this);
        setGeometry(host_->rect());
    }
    layoutContent();
}

PresentationOverlay::~PresentationOverlay() {
    release();
}

void PresentationOverlay::setPopover(std::shared_ptr<PopoverPresentationController> popover) {
    popover_ = std::move(popover);
    layoutContent();
}

void PresentationOverlay::release() {
    if (host_) {
        host_->removeEventFilter(this);
    }
    if (content_) {
        content_->removeEventFilter(this);
    }
    // The content is its controller's; it must not die with the overlay.
    if (content_ && content_->parentWidget() == this) {
        content_->hide();
        content_->setParent(nullptr);
    }
    content_ = nullptr;
}

void PresentationOverlay::present(bool animated, std::function<void()> done) {
    layoutContent();
    show();
    raise();
    content_->show();
    // Full-screen controllers and phone sheets rise from the bottom edge; alerts and popovers
    // just appear.
    if (!animated || !isVisible() || style_ == ModalPresentationStyle::AlertCard || isPopover()) {
        if (done) {
            done();
        }
        return;
    }
    const QPoint end = content_->pos();
    auto* animation = new QPropertyAnimation(content_, "pos", this);
    animation->setStartValue(QPoint(end.x(), height()));
    animation->setEndValue(end);
    animation->setDuration(kAnimationMilliseconds);
    animation->setEasingCurve(QEasingCurve::OutCubic);
    connect(animation, &QPropertyAnimation::finished, this, [done = std::move(done)] {
        if (done) {
            done();
        }
    });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void PresentationOverlay::dismiss(bool animated, std::function<void()> done) {
    auto finish = [this, done = std::move(done)] {
        release();
        hide();
        deleteLater();
        if (done) {
            done();
        }
    };
    if (!animated || !isVisible() || !content_ || style_ == ModalPresentationStyle::AlertCard ||
        isPopover()) {
        finish();
        return;
    }
    auto* animation = new QPropertyAnimation(content_, "pos", this);
    animation->setEndValue(QPoint(content_->x(), height()));
    animation->setDuration(kAnimationMilliseconds);
    animation->setEasingCurve(QEasingCurve::InCubic);
    connect(animation, &QPropertyAnimation::finished, this, finish);
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

bool PresentationOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched == host_ && event->type() == QEvent::Resize) {
        setGeometry(host_->rect());
        layoutContent();
    } else if (watched == content_ && event->type() == QEvent::LayoutRequest &&
               style_ != ModalPresentationStyle::FullScreen &&
               style_ != ModalPresentationStyle::OverCurrentContext) {
        layoutContent();
    }
    return QWidget::eventFilter(watched, event);
}

void PresentationOverlay::mousePressEvent(QMouseEvent* event) {
    if (content_ && !content_->geometry().contains(event->position().toPoint())) {
        emit backdropTapped();
    }
    event->accept();
}

void PresentationOverlay::paintEvent(QPaintEvent*) {
    if (style_ == ModalPresentationStyle::FullScreen ||
        style_ == ModalPresentationStyle::OverCurrentContext) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0, 0, 0, isPopover() ? 40 : 90));
    if (!arrow_ || !content_) {
        return;
    }
    // The arrow: a triangle in the card's colour from the popover's edge to the anchor.
    const QRect card = content_->geometry();
    const QPoint middle = anchor_.center();
    QPolygonF triangle;
    switch (*arrow_) {
        case Arrow::Up: {
            const int x = std::clamp(middle.x(), card.left() + 20, card.right() - 20);
            triangle << QPointF(x - kArrowLength, card.top() + 1)
                     << QPointF(x, card.top() - kArrowLength)
                     << QPointF(x + kArrowLength, card.top() + 1);
            break;
        }
        case Arrow::Down: {
            const int x = std::clamp(middle.x(), card.left() + 20, card.right() - 20);
            triangle << QPointF(x - kArrowLength, card.bottom())
                     << QPointF(x, card.bottom() + kArrowLength)
                     << QPointF(x + kArrowLength, card.bottom());
            break;
        }
        case Arrow::Left: {
            const int y = std::clamp(middle.y(), card.top() + 20, card.bottom() - 20);
            triangle << QPointF(card.left() + 1, y - kArrowLength)
                     << QPointF(card.left() - kArrowLength, y)
                     << QPointF(card.left() + 1, y + kArrowLength);
            break;
        }
        case Arrow::Right: {
            const int y = std::clamp(middle.y(), card.top() + 20, card.bottom() - 20);
            triangle << QPointF(card.right(), y - kArrowLength)
                     << QPointF(card.right() + kArrowLength, y)
                     << QPointF(card.right(), y + kArrowLength);
            break;
        }
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // The content says what colour its edge is; a plain white card otherwise.
    const QVariant edge = content_->property("popoverArrowColor");
    painter.setBrush(edge.isValid() ? edge.value<QColor>() : QColor(Qt::white));
    painter.drawPolygon(triangle);
}

// Places the content beside its anchor on the first permitted side with room for it (below,
// above, to the right, to the left, in that order of preference), else on the permitted side with
// the most room. False when there is no anchor on screen.
bool PresentationOverlay::layoutPopover(const QSize& wanted) {
    arrow_.reset();
    const std::optional<QRect> found = popover_ ? popover_->anchorRectIn(this) : std::nullopt;
    if (!found) {
        return false;
    }
    anchor_ = *found;
    const QRect area = rect().adjusted(kPopoverGap, kPopoverGap, -kPopoverGap, -kPopoverGap);
    const auto permitted = popover_->permittedArrowDirections();
    struct Side {
        Arrow arrow;
        int room;  // along the axis the popover leaves the anchor by
        int needed;
    };
    const Side sides[] = {
        {Arrow::Up, area.bottom() - anchor_.bottom() - kArrowLength, wanted.height()},
        {Arrow::Down, anchor_.top() - area.top() - kArrowLength, wanted.height()},
        {Arrow::Left, area.right() - anchor_.right() - kArrowLength, wanted.width()},
        {Arrow::Right, anchor_.left() - area.left() - kArrowLength, wanted.width()},
    };
    const Side* chosen = nullptr;
    for (const Side& side : sides) {
        if (permitted.testFlag(side.arrow) && side.room >= side.needed) {
            chosen = &side;
            break;
        }
    }
    for (const Side& side : sides) {
        if (!chosen && permitted.testFlag(side.arrow)) {
            chosen = &side;
        } else if (chosen && chosen->room < chosen->needed && permitted.testFlag(side.arrow) &&
                   side.room > chosen->room) {
            chosen = &side;
        }
    }
    if (!chosen) {
        return false;
    }
    QRect frame(QPoint(0, 0), wanted);
    const bool vertical = chosen->arrow == Arrow::Up || chosen->arrow == Arrow::Down;
    if (vertical) {
        frame.setHeight(std::min(wanted.height(), std::max(chosen->room, 0)));
        frame.moveLeft(std::clamp(anchor_.center().x() - wanted.width() / 2, area.left(),
                                  std::max(area.left(), area.right() - wanted.width())));
        frame.moveTop(chosen->arrow == Arrow::Up ? anchor_.bottom() + kArrowLength
                                                 : anchor_.top() - kArrowLength - frame.height());
    } else {
        frame.setWidth(std::min(wanted.width(), std::max(chosen->room, 0)));
        frame.setHeight(std::min(wanted.height(), area.height()));
        frame.moveTop(std::clamp(anchor_.center().y() - frame.height() / 2, area.top(),
                                 std::max(area.top(), area.bottom() - frame.height())));
        frame.moveLeft(chosen->arrow == Arrow::Left
                           ? anchor_.right() + kArrowLength
                           : anchor_.left() - kArrowLength - frame.width());
    }
    content_->setGeometry(frame);
    arrow_ = chosen->arrow;
    return true;
}

void PresentationOverlay::layoutContent() {
    if (!content_) {
        return;
    }
    const QRect area = rect();
    switch (style_) {
        case ModalPresentationStyle::FullScreen:
        case ModalPresentationStyle::OverCurrentContext:
            content_->setGeometry(area);
            break;
        case ModalPresentationStyle::AlertCard: {
            const int width = std::min(kAlertWidth, std::max(area.width() - 2 * kSheetMargin, 0));
            const int height = heightFor(content_, width);
            content_->setGeometry(area.x() + (area.width() - width) / 2,
                                  area.y() + (area.height() - height) / 2, width, height);
            break;
        }
        case ModalPresentationStyle::ActionSheet: {
            const bool tablet = Window::idiomForWidth(area.width()) == UserInterfaceIdiom::Tablet;
            if (tablet && layoutPopover(QSize(kPopoverWidth, heightFor(content_, kPopoverWidth)))) {
                break;
            }
            arrow_.reset();
            const int width = tablet ? kPopoverWidth : area.width() - 2 * kSheetMargin;
            const int height = heightFor(content_, width);
            const int x = area.x() + (area.width() - width) / 2;
            const int y = tablet ? area.y() + (area.height() - height) / 2
                                 : area.bottom() - kSheetMargin - height;
            content_->setGeometry(x, y, width, height);
            break;
        }
    }
    update();
}

}  // namespace vl
