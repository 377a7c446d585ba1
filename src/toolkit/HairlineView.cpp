#include "toolkit/HairlineView.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include <cmath>

namespace vl {

HairlineView::HairlineView(QWidget* parent) : QWidget(parent) {
    setAccessibleName(QString());
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    updateHeight();
}

qreal HairlineView::hairline() const {
    const QScreen* screen = window()->windowHandle() ? window()->windowHandle()->screen()
                                                     : QGuiApplication::primaryScreen();
    const qreal scale = screen ? screen->devicePixelRatio() : 1.0;
    return 1.0 / (scale > 0 ? scale : 1.0);
}

void HairlineView::updateHeight() {
    // Widgets lay out in whole points; the line is painted one pixel high inside that point.
    setFixedHeight(std::max(1, int(std::ceil(hairline()))));
}

bool HairlineView::event(QEvent* event) {
    if (event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::Show) {
        updateHeight();
    }
    return QWidget::event(event);
}

void HairlineView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(QRectF(0, height() - hairline(), width(), hairline()),
                     QColor(0, 0, 0, 77));  // the bars' shadow line
}

}  // namespace vl
