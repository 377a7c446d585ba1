#pragma once

#include <QColor>
#include <QString>

namespace vl {

// The app's two colours and its boolean preferences, kept in the container-addressed preference
// store of the application "com.tessaly.VelloraApp". Every read synchronises with the store first.
class Settings {
public:
    static constexpr const char* ApplicationId = "com.tessaly.VelloraApp";

    static QColor backgroundColor();
    static QColor statusLabelColor();

    // The app's data container, looked up once; empty when the lookup failed.
    static QString appContainerPath();

    static bool boolPrefForKeyWithDefault(const QString& key, bool defaultValue);
    static void setBoolPrefForKey(bool value, const QString& key);

    static bool gridMode();
    static void setGridMode(bool gridMode);
    // Always YES: the browser chooses its behaviour by it, whatever is stored.
    static bool quickLaunch();
    static void setQuickLaunch(bool quickLaunch);

    Settings() = delete;
};

}  // namespace vl
