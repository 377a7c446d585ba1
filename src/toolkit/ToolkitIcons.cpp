#include "toolkit/ToolkitIcons.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace vl {

namespace {

QString bundledPath(const QString& name) {
    return QStringLiteral(":/icons/") + name + QStringLiteral(".svg");
}

// Without a desktop icon theme Qt searches only "hicolor", the fallback theme that holds
// applications' own icons, not the generic ones asked for here; the first search there reads the
// theme's index and costs several milliseconds of the first screen.
bool searchesTheme() {
    const QString theme = QIcon::themeName();
    return !theme.isEmpty() && theme != QStringLiteral("hicolor");
}

QIcon lookUp(const QString& name) {
    if (name.isEmpty()) {
        return {};
    }
    if (searchesTheme() && QIcon::hasThemeIcon(name)) {
        return QIcon::fromTheme(name);
    }
    if (QFile::exists(bundledPath(name))) {
        return QIcon(bundledPath(name));
    }
    return {};
}

}  // namespace

bool ToolkitIcons::hasBundledIcon(const QString& name) {
    return !name.isEmpty() && QFile::exists(bundledPath(name));
}

QIcon ToolkitIcons::icon(const QString& name, const QString& fallbackName) {
    static QHash<QString, QIcon> cache;
    const QString key = name + QLatin1Char('|') + fallbackName;
    if (auto it = cache.constFind(key); it != cache.constEnd()) {
        return *it;
    }
    QIcon found = lookUp(name);
    if (found.isNull()) {
        found = lookUp(fallbackName);
    }
    if (found.isNull()) {
        found = lookUp(QStringLiteral("text-x-generic"));
    }
    cache.insert(key, found);
    return found;
}

QIcon ToolkitIcons::cloudOnlyIcon(const QString& name, const QString& fallbackName) {
    static QHash<QString, QIcon> cache;
    const QString key = name + QLatin1Char('|') + fallbackName;
    if (auto it = cache.constFind(key); it != cache.constEnd()) {
        return *it;
    }
    constexpr int size = 64;
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(0.55);
    painter.drawPixmap(0, 0, icon(name, fallbackName).pixmap(size, size));
    painter.setOpacity(1.0);
    drawCloudMark(painter, size);
    painter.end();
    QIcon result(pixmap);
    cache.insert(key, result);
    return result;
}

void ToolkitIcons::drawCloudMark(QPainter& painter, int size) {
    // A small cloud in the lower right corner says the content is not on the device.
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 64.0, size / 64.0);
    QPainterPath cloud;
    // The parts overlap: under the default odd-even rule their overlaps would be holes.
    cloud.setFillRule(Qt::WindingFill);
    cloud.addEllipse(QRectF(34, 44, 14, 12));
    cloud.addEllipse(QRectF(41, 38, 16, 16));
    cloud.addEllipse(QRectF(50, 44, 13, 12));
    cloud.addRect(QRectF(40, 48, 17, 8));
    painter.setPen(QPen(Qt::white, 2));
    painter.setBrush(QColor(0, 122, 255));
    painter.drawPath(cloud.simplified());
    painter.restore();
}

}  // namespace vl
