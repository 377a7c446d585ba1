#pragma once

#include <QColor>
#include <QPalette>
#include <QWidget>

namespace vl {

// Makes the widget paint its whole area in the colour (white for every screen of the app).
inline void fillBackground(QWidget* widget, const QColor& colour = Qt::white) {
    widget->setAutoFillBackground(true);
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Window, colour);
    widget->setPalette(palette);
}

}  // namespace vl
