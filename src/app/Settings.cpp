#include "app/Settings.h"

#include "logging/VLLogging.h"
#include "platform/app/Preferences.h"

#include <optional>

namespace vl {

namespace {

const QString GridModeKey = QStringLiteral("GridMode");
const QString QuickLaunchKey = QStringLiteral("QuickLaunch");

Preferences& store() {
    return Preferences::containerAddressed(QString::fromLatin1(Settings::ApplicationId),
                                           Settings::appContainerPath());
}

}  // namespace

QColor Settings::backgroundColor() {
    return QColor(Qt::white);
}

QColor Settings::statusLabelColor() {
    return QColor(Qt::black);
}

QString Settings::appContainerPath() {
    static const QString path = [] {
        const QString found = Preferences::appContainerPath(QString::fromLatin1(ApplicationId));
        VLLOG(7, "AppContainer is %@",
              found.isEmpty() ? std::optional<QString>() : std::optional<QString>(found));
        return found;
    }();
    return path;
}

bool Settings::boolPrefForKeyWithDefault(const QString& key, bool defaultValue) {
    Preferences& preferences = store();
    preferences.synchronize();
    const QVariant stored = preferences.value(key);
    // A stored value that is not a boolean reads as QVariant reads it: a non-zero number or any
    // string other than "", "0" and "false" is YES.
    const bool answer = stored.isValid() ? stored.toBool() : defaultValue;
    VLLOG(7, "%@ = %@", key, answer);
    return answer;
}

void Settings::setBoolPrefForKey(bool value, const QString& key) {
    Preferences& preferences = store();
    preferences.setValue(key, value);
    if (!preferences.synchronize()) {
        VLLOG(3, "Failed to write prefs");
    }
}

bool Settings::gridMode() {
    return boolPrefForKeyWithDefault(GridModeKey, false);
}

void Settings::setGridMode(bool gridMode) {
    setBoolPrefForKey(gridMode, GridModeKey);
}

bool Settings::quickLaunch() {
    return true;
}

void Settings::setQuickLaunch(bool quickLaunch) {
    VLLOG(7, "set QuickLaunch = %@", quickLaunch);
    setBoolPrefForKey(quickLaunch, QuickLaunchKey);
}

}  // namespace vl
