#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// Which of Qt's platform plugins shows the window: the Wayland one under a Wayland session (a
// native client, not one through the X11 compatibility server), X11 otherwise. A plugin named in
// QT_QPA_PLATFORM is left to Qt. Without a session, or without the plugin the session needs,
// there is a problem to tell instead of Qt's abort.
class DisplayPlatform {
public:
    // The choice for this process's environment and Qt's plugin folders.
    static DisplayPlatform forSession();

    // `requested` is QT_QPA_PLATFORM, the two displays WAYLAND_DISPLAY and DISPLAY; the plugin
    // folders are searched for the chosen plugin's library.
    DisplayPlatform(const QString& requested, const QString& waylandDisplay,
                    const QString& x11Display, const QStringList& pluginFolders);

    // The plugin to ask Qt for; empty when Qt is left to choose.
    const QString& pluginName() const { return pluginName_; }
    // One line naming the cause and the remedy; absent when the window can be tried.
    const std::optional<QString>& problem() const { return problem_; }

private:
    QString pluginName_;
    std::optional<QString> problem_;
};

}  // namespace vl
