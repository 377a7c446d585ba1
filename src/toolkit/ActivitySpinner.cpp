#include "toolkit/ActivitySpinner.h"

#include <QPainter>

namespace vl {

namespace {
constexpr int kSpokes = 12;
}

ActivitySpinner::ActivitySpinner(QWidget* parent) : QWidget(parent) {
    setFixedSize(sizeHint());
    setAccessibleName(QStringLiteral("Network activity"));
    timer_.setInterval(80);
    connect(&timer_, &QTimer::timeout, this, [this] {
        step_ = (step_ + 1) % kSpokes;
        update();
    });
    hide();
}

void ActivitySpinner::startAnimating() {
    if (!timer_.isActive()) {
        timer_.start();
    }
    show();
}

void ActivitySpinner::stopAnimating() {
    timer_.stop();
    hide();
}

void ActivitySpinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = std::min(width(), height()) / 2.0;
    for (int i = 0; i < kSpokes; ++i) {
        // The spoke at the current step is darkest; the ones behind it fade out.
        const int age = (step_ - i + kSpokes) % kSpokes;
        QColor color(80, 80, 80);
        color.setAlphaF(1.0 - age / double(kSpokes));
        painter.setPen(QPen(color, radius / 4.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * 0.45), QPointF(0, -radius * 0.9));
        painter.rotate(360.0 / kSpokes);
    }
}

}  // namespace vl
