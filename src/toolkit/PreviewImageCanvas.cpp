#include "toolkit/PreviewImageCanvas.h"

#include <QGestureEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QScrollBar>
#include <QScroller>
#include <QScrollerProperties>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vl {

namespace {

constexpr double maximumScale = 8.0;
const QColor backdrop(0x11, 0x11, 0x13);

}  // namespace

PreviewImageCanvas::PreviewImageCanvas(QWidget* parent) : QAbstractScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    // Panned by finger, mouse and wheel; bars coming and going would change the fitted size.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAttribute(Qt::WA_AcceptTouchEvents);
    viewport()->grabGesture(Qt::PinchGesture);
    viewport()->setCursor(Qt::OpenHandCursor);
    QScroller::grabGesture(viewport(), QScroller::TouchGesture);
    QScrollerProperties properties = QScroller::scroller(viewport())->scrollerProperties();
    properties.setScrollMetric(QScrollerProperties::OvershootDragResistanceFactor, 0.3);
    properties.setScrollMetric(QScrollerProperties::HorizontalOvershootPolicy,
                               QScrollerProperties::OvershootAlwaysOff);
    properties.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy,
                               QScrollerProperties::OvershootAlwaysOff);
    QScroller::scroller(viewport())->setScrollerProperties(properties);
    // A picture viewer's near-black. The scroll area's viewport fills with the Base role, not
    // Window, so both are set.
    QPalette palette = viewport()->palette();
    palette.setColor(QPalette::Window, backdrop);
    palette.setColor(QPalette::Base, backdrop);
    viewport()->setPalette(palette);
    viewport()->setAutoFillBackground(true);
}

void PreviewImageCanvas::setImage(const QImage& image, QSize fullSize) {
    const bool sameSize = fullSize.isEmpty() ? image.size() == fullSize_ : fullSize == fullSize_;
    image_ = image;
    fullSize_ = fullSize.isEmpty() ? image.size() : fullSize;
    if (!sameSize || fitted_) {
        // A new picture starts fitted; a sharper copy of the same one keeps the zoom.
        fitted_ = true;
        scale_ = fitScale();
    }
    updateScrollRanges();
    viewport()->update();
}

double PreviewImageCanvas::fitScale() const {
    if (fullSize_.isEmpty()) {
        return 1.0;
    }
    const QSize area = viewport()->size();
    const double fit = std::min(double(area.width()) / fullSize_.width(),
                                double(area.height()) / fullSize_.height());
    // A small picture is shown at its own size rather than blown up.
    return std::clamp(fit, 1e-4, 1.0);
}

void PreviewImageCanvas::setScale(double scale) {
    setScale(scale, QPointF(viewport()->width() / 2.0, viewport()->height() / 2.0));
}

void PreviewImageCanvas::setScale(double scale, QPointF anchor) {
    const double minimum = fitScale() / 2.0;
    scale = std::clamp(scale, minimum, std::max(maximumScale, fitScale()));
    if (fullSize_.isEmpty() || scale == scale_) {
        return;
    }
    // The point of the picture under the anchor, in full-picture pixels.
    const QPointF before = (anchor - origin()) / scale_;
    scale_ = scale;
    fitted_ = std::abs(scale_ - fitScale()) < 1e-6;
    updateScrollRanges();
    const QSizeF shown = displaySize();
    const QPointF wanted = before * scale_ - anchor;
    if (shown.width() > viewport()->width()) {
        horizontalScrollBar()->setValue(int(std::lround(wanted.x())));
    }
    if (shown.height() > viewport()->height()) {
        verticalScrollBar()->setValue(int(std::lround(wanted.y())));
    }
    viewport()->update();
    emit scaleChanged(scale_);
}

void PreviewImageCanvas::zoomToFit() {
    fitted_ = true;
    const double before = scale_;
    scale_ = fitScale();
    updateScrollRanges();
    viewport()->update();
    if (before != scale_) {
        emit scaleChanged(scale_);
    }
}

void PreviewImageCanvas::toggleZoom(QPointF position) {
    if (!fitted_) {
        zoomToFit();
        return;
    }
    const double fit = fitScale();
    setScale(fit < 0.75 ? 1.0 : fit * 2.0, position);
}

QSizeF PreviewImageCanvas::displaySize() const {
    return QSizeF(fullSize_) * scale_;
}

QPointF PreviewImageCanvas::origin() const {
    const QSizeF shown = displaySize();
    const QSize area = viewport()->size();
    const double x = shown.width() <= area.width() ? (area.width() - shown.width()) / 2.0
                                                   : -horizontalScrollBar()->value();
    const double y = shown.height() <= area.height() ? (area.height() - shown.height()) / 2.0
                                                     : -verticalScrollBar()->value();
    return {x, y};
}

void PreviewImageCanvas::updateScrollRanges() {
    const QSizeF shown = displaySize();
    const QSize area = viewport()->size();
    horizontalScrollBar()->setRange(0, std::max(0, int(std::ceil(shown.width())) - area.width()));
    verticalScrollBar()->setRange(0, std::max(0, int(std::ceil(shown.height())) - area.height()));
    horizontalScrollBar()->setPageStep(area.width());
    verticalScrollBar()->setPageStep(area.height());
    horizontalScrollBar()->setSingleStep(40);
    verticalScrollBar()->setSingleStep(40);
}

bool PreviewImageCanvas::viewportEvent(QEvent* event) {
    switch (event->type()) {
        case QEvent::Paint:
            paintViewport(static_cast<QPaintEvent*>(event));
            return true;
        case QEvent::Gesture:
            return gesture(static_cast<QGestureEvent*>(event));
        default:
            return QAbstractScrollArea::viewportEvent(event);
    }
}

void PreviewImageCanvas::paintViewport(QPaintEvent* event) {
    QPainter painter(viewport());
    if (image_.isNull() || fullSize_.isEmpty()) {
        return;
    }
    const QRectF target(origin(), displaySize());
    const QRectF visible = target.intersected(QRectF(event->rect()));
    if (visible.isEmpty()) {
        return;
    }
    // Only the visible part is scaled: a big photo zoomed in costs what the screen shows.
    const double toImageX = image_.width() / target.width();
    const double toImageY = image_.height() / target.height();
    const QRectF source((visible.x() - target.x()) * toImageX,
                        (visible.y() - target.y()) * toImageY, visible.width() * toImageX,
                        visible.height() * toImageY);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, scale_ < 3.0);
    painter.drawImage(visible, image_, source);
}

bool PreviewImageCanvas::gesture(QGestureEvent* event) {
    auto* pinch = static_cast<QPinchGesture*>(event->gesture(Qt::PinchGesture));
    if (!pinch) {
        return false;
    }
    if (pinch->state() == Qt::GestureStarted) {
        pinchStartScale_ = scale_;
    }
    if (pinch->changeFlags() & QPinchGesture::ScaleFactorChanged) {
        const QPointF centre = viewport()->mapFromGlobal(pinch->centerPoint().toPoint());
        setScale(pinchStartScale_ * pinch->totalScaleFactor(), centre);
    }
    if (pinch->state() == Qt::GestureFinished && scale_ < fitScale()) {
        // Pinching below the fitted size springs back, as a finger expects.
        zoomToFit();
    }
    event->accept(pinch);
    return true;
}

void PreviewImageCanvas::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (fitted_) {
        scale_ = fitScale();
    }
    updateScrollRanges();
}

void PreviewImageCanvas::wheelEvent(QWheelEvent* event) {
    if (event->modifiers() & Qt::ControlModifier) {
        const double steps = event->angleDelta().y() / 120.0;
        setScale(scale_ * std::pow(1.25, steps), event->position());
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void PreviewImageCanvas::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        dragging_ = true;
        dragStart_ = event->position().toPoint();
        dragScrollStart_ = {horizontalScrollBar()->value(), verticalScrollBar()->value()};
        viewport()->setCursor(Qt::ClosedHandCursor);
    }
    QAbstractScrollArea::mousePressEvent(event);
}

void PreviewImageCanvas::mouseMoveEvent(QMouseEvent* event) {
    if (dragging_) {
        const QPoint moved = event->position().toPoint() - dragStart_;
        horizontalScrollBar()->setValue(dragScrollStart_.x() - moved.x());
        verticalScrollBar()->setValue(dragScrollStart_.y() - moved.y());
    }
    QAbstractScrollArea::mouseMoveEvent(event);
}

void PreviewImageCanvas::mouseReleaseEvent(QMouseEvent* event) {
    dragging_ = false;
    viewport()->setCursor(Qt::OpenHandCursor);
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void PreviewImageCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        toggleZoom(event->position());
        event->accept();
        return;
    }
    QAbstractScrollArea::mouseDoubleClickEvent(event);
}

void PreviewImageCanvas::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::ZoomIn)) {
        setScale(scale_ * 1.25);
    } else if (event->matches(QKeySequence::ZoomOut)) {
        setScale(scale_ / 1.25);
    } else if (event->key() == Qt::Key_0 && (event->modifiers() & Qt::ControlModifier)) {
        zoomToFit();
    } else {
        QAbstractScrollArea::keyPressEvent(event);
    }
}

}  // namespace vl
