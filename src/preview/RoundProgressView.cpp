#include "preview/RoundProgressView.h"

#include "platform/text/Strings.h"

#include <QGraphicsDropShadowEffect>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vl {

// Paints the outline and the slice of its ring.
class RoundProgressView::Container : public QWidget {
public:
    Container(RoundProgressView* ring, double opacity)
        : QWidget(ring), ring_(ring), opacity_(opacity) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setOpacity(opacity_);
        if (!ring_->ringColor_.isValid()) {
            return;
        }
        painter.setPen(QPen(ring_->ringColor_, ring_->lineWidth_));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(ring_->circlePath_);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ring_->ringColor_);
        painter.drawPath(ring_->slicePath_);
    }

private:
    RoundProgressView* ring_;
    double opacity_;
};

RoundProgressView::RoundProgressView(const QRect& frame, QWidget* parent)
    : RoundProgressView(frame, StyleLight, parent) {}

RoundProgressView::RoundProgressView(const QRect& frame, int style, QWidget* parent)
    : QWidget(parent), style_(style) {
    setGeometry(frame);
    setAttribute(Qt::WA_TranslucentBackground);
    setAutoFillBackground(false);
    setAccessibleName(Strings::localized("Download Progress"));

    lineWidth_ = frame.width() >= kThickLineMinimumWidth ? 4.0 : 2.0;
    const double side = std::min(frame.width(), frame.height());
    double radius = side / 2;
    double opacity = 1.0;
    switch (style_) {
        case StyleLight:
            ringColor_ = Qt::white;
            radius = side / 2 - lineWidth_ / 2;
            break;
        case StyleGrey:
            ringColor_ = QColor(170, 170, 170);
            opacity = 0.5;
            break;
        default:
            break;
    }
    container_ = new Container(this, opacity);
    container_->setGeometry(QRect(QPoint(0, 0), frame.size()));
    setPieRadius(radius);
    setPieCenter(QPointF(frame.width() / 2.0, frame.height() / 2.0));

    resetProgress();

    circlePath_ = QPainterPath();
    const double outline = pieRadius_ - 1;
    circlePath_.addEllipse(pieCenter_, outline, outline);
    circlePath_.closeSubpath();
    if (style_ == StyleLight) {
        auto* shadow = new QGraphicsDropShadowEffect(container_);
        shadow->setColor(QColor(0, 0, 0, 191));
        shadow->setOffset(0, 0);
        shadow->setBlurRadius(0.5);
        container_->setGraphicsEffect(shadow);
    }
}

QWidget* RoundProgressView::containerView() const {
    return container_;
}

RoundProgressView::~RoundProgressView() {
    stopProgressTimer();
}

void RoundProgressView::setPieRadius(double radius) {
    pieRadius_ = radius;
    const QRect frame = geometry();
    setGeometry(QRect(int(std::lround(frame.x() + pieCenter_.x() - radius)),
                      int(std::lround(frame.y() + pieCenter_.y() - radius)),
                      int(std::lround(2 * radius)), int(std::lround(2 * radius))));
    pieCenter_ = QPointF(radius, radius);
}

void RoundProgressView::setPieCenter(const QPointF& center) {
    QRect frame = geometry();
    frame.moveCenter(center.toPoint());
    setGeometry(frame);
    pieCenter_ = QPointF(frame.width() / 2.0, frame.height() / 2.0);
}

void RoundProgressView::setInitialIncreaseRatePerFrame(float rate) {
    if (!progressTimer_) {
        increaseRate_ = rate;
    }
}

void RoundProgressView::resetProgress() {
    uiProgress_ = 0;
    increaseRate_ = kInitialIncreaseRate;
    realProgress_ = 0;
    prevUpdateTime_ = Dispatch::now();
    stopProgressTimer();
    drawSlice();
}

void RoundProgressView::setProgress(float progress) {
    progress_ = progress;
    if (!progressTimer_ && realProgress_ <= 1) {
        startProgressTimer();
    }
    if (progress <= 0) {
        return;
    }
    // Progress never goes backwards, and nothing moves it once complete.
    if (realProgress_ >= 1 || realProgress_ >= progress) {
        return;
    }
    if (progress < 1) {
        const DispatchTime now = Dispatch::now();
        const double seconds = std::chrono::duration<double>(now - prevUpdateTime_).count();
        prevUpdateTime_ = now;
        // The time the rest would take at the speed since the last report, held short so that a
        // slow start does not keep the ring behind.
        float remaining = float(seconds) * (1 - uiProgress_) / (progress - realProgress_);
        remaining = std::min(remaining, kMaximumRemainingTime);
        recalculateIncreaseProgressWithTimeDiff(1 - uiProgress_, remaining);
    } else {
        recalculateIncreaseProgressWithTimeDiff(1 - uiProgress_, kFinishingTime);
    }
    realProgress_ = progress;
}

void RoundProgressView::recalculateIncreaseProgressWithTimeDiff(float remaining, double seconds) {
    increaseRate_ = std::max(float(remaining / seconds / 60), kMinimumIncreaseRate);
}

void RoundProgressView::startProgressTimer() {
    if (uiProgress_ >= 1 || progressTimer_) {
        return;
    }
    const DispatchQueuePtr main = Dispatch::mainQueue();
    progressTimer_ = DispatchTimer::create(main);
    progressTimer_->setEventHandler([view = QPointer<RoundProgressView>(this)] {
        if (view) {
            view->increaseUIProgress();
        }
    });
    const auto interval =
        std::chrono::duration_cast<DispatchDuration>(std::chrono::duration<double>(kTimerInterval));
    progressTimer_->schedule(main->now() + interval, interval, DispatchDuration::zero());
    progressTimer_->resume();
}

void RoundProgressView::stopProgressTimer() {
    if (progressTimer_) {
        progressTimer_->cancel();
        progressTimer_.reset();
    }
}

void RoundProgressView::increaseUIProgress() {
    if (realProgress_ == 0 || uiProgress_ < realProgress_) {
        if (realProgress_ < 1) {
            // Not to the full circle before the download is complete, and no more than a
            // quarter before anything has arrived.
            if (uiProgress_ + kLookAhead * increaseRate_ >= 1 ||
                (realProgress_ == 0 && uiProgress_ >= kMaximumProgressBeforeReal)) {
                stopProgressTimer();
                return;
            }
            uiProgress_ += increaseRate_;
        } else {
            uiProgress_ = std::min(uiProgress_ + increaseRate_, 1.0f);
        }
        drawSlice();
    }
    if (uiProgress_ >= 1) {
        stopProgressTimer();
    }
}

void RoundProgressView::drawSlice() {
    const double start = 3 * std::numbers::pi / 2;
    QPainterPath path;
    path.moveTo(pieCenter_);
    if (uiProgress_ > 0) {
        // QPainterPath measures angles in degrees, counter-clockwise with y up: a negative sweep
        // runs clockwise on screen, as increasing angles do with y down.
        const QRectF box(pieCenter_.x() - pieRadius_, pieCenter_.y() - pieRadius_, 2 * pieRadius_,
                         2 * pieRadius_);
        const double startDegrees = -start * 180 / std::numbers::pi;
        const double sweepDegrees = -toRadian(uiProgress_) * 180 / std::numbers::pi;
        path.arcTo(box, startDegrees, sweepDegrees);
    }
    path.closeSubpath();
    slicePath_ = path;
    if (container_) {
        container_->update();
    }
    updateAccessibleValue();
}

double RoundProgressView::toRadian(double fraction) {
    return 2 * std::numbers::pi * fraction;
}

void RoundProgressView::updateAccessibleValue() {
    // Once per whole percent: a screen reader hears changes, not 60 of them a second.
    const int percent = int(uiProgress_ * 100);
    if (percent != spokenPercent_) {
        spokenPercent_ = percent;
        setAccessibleDescription(QStringLiteral("%1 %").arg(percent));
    }
}

}  // namespace vl
