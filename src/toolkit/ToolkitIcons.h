#pragma once

#include <QIcon>
#include <QString>

class QPainter;

namespace vl {

// Icons by freedesktop name: the desktop icon theme's when it has one, else the toolkit's own
// copy of the generic icons (headless machines and bare desktops have no icon theme, only the
// fallback "hicolor", which is not searched), else the generic icon for documents. Main thread
// only (icon loading is not thread-safe).
class ToolkitIcons {
public:
    // `fallbackName` is tried after `name` in the theme and among the bundled icons.
    static QIcon icon(const QString& name, const QString& fallbackName = {});
    // A cloud-only variant: the icon drawn faded with a cloud mark.
    static QIcon cloudOnlyIcon(const QString& name, const QString& fallbackName = {});
    static bool hasBundledIcon(const QString& name);
    // Draws the cloud-only mark into the lower right corner of a square icon of `size` pixels.
    // Safe on any thread (for painters on images).
    static void drawCloudMark(QPainter& painter, int size);
};

}  // namespace vl
