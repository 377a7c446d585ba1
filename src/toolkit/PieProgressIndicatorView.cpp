#include "toolkit/PieProgressIndicatorView.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace vl {

PieProgressIndicatorView::PieProgressIndicatorView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAccessibleName(tr("Progress"));
}

void PieProgressIndicatorView::setProgress(float progress) {
    if (progress == progress_) {
        return;
    }
    progress_ = progress;
    ++repaintRequests_;
    update();
}

double PieProgressIndicatorView::drawnFraction(float progress) {
    return std::clamp(double(progress), 0.005, 0.995);
}

void PieProgressIndicatorView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor lightGrey = QColor::fromRgbF(2 / 3.0f, 2 / 3.0f, 2 / 3.0f);
    const QRectF bounds = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const QPointF centre = bounds.center();
    const qreal radius = std::ceil(bounds.height() / 2);
    // Angles count counter-clockwise from three o'clock here: start at the top, sweep clockwise.
    const double sweep = drawnFraction(progress_) * 360.0;
    QPainterPath pie;
    pie.moveTo(centre);
    pie.arcTo(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius), 90.0,
              -sweep);
    pie.closeSubpath();
    painter.fillPath(pie, lightGrey);
    painter.setPen(QPen(lightGrey, 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(bounds);
}

}  // namespace vl
