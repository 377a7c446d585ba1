#include "toolkit/PresentationOverlay.h"

#include "toolkit/Window.h"

#include <QEvent>
#include <QPainter>
#include <QPropertyAnimation>

namespace vl {

namespace {
constexpr int kAnimationMilliseconds = 220;
constexpr int kAlertWidth = 290;
constexpr int kSheetMargin = 8;
}  // namespace

PresentationOverlay::PresentationOverlay(QWidget* host, QWidget* content,
                                         ModalPresentationStyle style)
    : QWidget(host), host_(host), content_(content), style_(style) {
    setObjectName(QStringLiteral("presentationOverlay"));
    content_->setParent(this);
    if (host_) {
        host_->installEventFilter(this);
        setGeometry(host_->rect());
    }
    layoutContent();
}

PresentationOverlay::~PresentationOverlay() {
    release();
}

void PresentationOverlay::release() {
    if (host_) {
        host_->removeEventFilter(this);
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
    if (!animated || !isVisible()) {
        if (done) {
            done();
        }
        return;
    }
    // Full-screen controllers and sheets rise from the bottom edge; alerts just appear.
    if (style_ == ModalPresentationStyle::AlertCard) {
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
    if (!animated || !isVisible() || !content_ || style_ == ModalPresentationStyle::AlertCard) {
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
    }
    return QWidget::eventFilter(watched, event);
}

void PresentationOverlay::paintEvent(QPaintEvent*) {
    if (style_ == ModalPresentationStyle::FullScreen) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0, 0, 0, 90));
}

void PresentationOverlay::layoutContent() {
    if (!content_) {
        return;
    }
    const QRect area = rect();
    switch (style_) {
        case ModalPresentationStyle::FullScreen:
            content_->setGeometry(area);
            break;
        case ModalPresentationStyle::AlertCard: {
            const int width = std::min(kAlertWidth, std::max(area.width() - 2 * kSheetMargin, 0));
            const int height = content_->heightForWidth(width) > 0 ? content_->heightForWidth(width)
                                                                   : content_->sizeHint().height();
            content_->setGeometry(area.x() + (area.width() - width) / 2,
                                  area.y() + (area.height() - height) / 2, width, height);
            break;
        }
        case ModalPresentationStyle::ActionSheet: {
            const bool tablet = Window::idiomForWidth(area.width()) == UserInterfaceIdiom::Tablet;
            const int width = tablet ? kAlertWidth + 30 : area.width() - 2 * kSheetMargin;
            const int height = content_->heightForWidth(width) > 0 ? content_->heightForWidth(width)
                                                                   : content_->sizeHint().height();
            const int x = area.x() + (area.width() - width) / 2;
            const int y = tablet ? area.y() + (area.height() - height) / 2
                                 : area.bottom() - kSheetMargin - height;
            content_->setGeometry(x, y, width, height);
            break;
        }
    }
}

}  // namespace vl
