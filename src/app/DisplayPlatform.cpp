#include "app/DisplayPlatform.h"

#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>

namespace vl {

namespace {

// The library of the plugin `name` in Qt's platforms folder: Wayland comes as a "generic" and an
// "egl" flavour of one plugin, and the generic one is enough to show widgets.
QString libraryName(const QString& name) {
    return name == QLatin1String("wayland") ? QStringLiteral("libqwayland-generic.so")
                                            : QStringLiteral("libq%1.so").arg(name);
}

bool pluginInstalled(const QString& name, const QStringList& pluginFolders) {
    for (const QString& folder : pluginFolders) {
        if (QFileInfo::exists(folder + QStringLiteral("/platforms/") + libraryName(name))) {
            return true;
        }
    }
    return false;
}

}  // namespace

DisplayPlatform DisplayPlatform::forSession() {
    QStringList folders =
        qEnvironmentVariable("QT_PLUGIN_PATH").split(QDir::listSeparator(), Qt::SkipEmptyParts);
    folders.append(QLibraryInfo::path(QLibraryInfo::PluginsPath));
    return DisplayPlatform(qEnvironmentVariable("QT_QPA_PLATFORM"),
                           qEnvironmentVariable("WAYLAND_DISPLAY"), qEnvironmentVariable("DISPLAY"),
                           folders);
}

DisplayPlatform::DisplayPlatform(const QString& requested, const QString& waylandDisplay,
                                 const QString& x11Display, const QStringList& pluginFolders) {
    if (!requested.isEmpty()) {
        return;
    }
    if (!waylandDisplay.isEmpty()) {
        pluginName_ = QStringLiteral("wayland");
        if (!pluginInstalled(pluginName_, pluginFolders)) {
            problem_ = QStringLiteral(
                "Qt's Wayland platform plugin is not installed (WAYLAND_DISPLAY is set); run "
                "scripts/install-deps.sh (Debian package qt6-wayland), or unset WAYLAND_DISPLAY "
                "to use X11");
        }
        return;
    }
    if (!x11Display.isEmpty()) {
        pluginName_ = QStringLiteral("xcb");
        if (!pluginInstalled(pluginName_, pluginFolders)) {
            problem_ = QStringLiteral(
                "Qt's X11 platform plugin is not installed (DISPLAY is set); run "
                "scripts/install-deps.sh (Debian package libqt6gui6)");
        }
        return;
    }
    problem_ = QStringLiteral(
        "there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set); start it from a "
        "desktop session, or with `make run`, which serves it over VNC on this machine's "
        "loopback address");
}

}  // namespace vl
