#include "platform/app/ApplicationStateBridge.h"

#include "platform/app/NotificationCenter.h"

#include <QGuiApplication>

namespace vl {

void ApplicationStateBridge::install() {
    static ApplicationStateBridge* const bridge = [] {
        auto* created = new ApplicationStateBridge(qGuiApp);
        QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, created,
                         &ApplicationStateBridge::applicationStateChanged);
        return created;
    }();
    (void)bridge;
}

ApplicationStateBridge::ApplicationStateBridge(QObject* parent) : QObject(parent) {}

void ApplicationStateBridge::applicationStateChanged(Qt::ApplicationState state) {
    const bool active = state == Qt::ApplicationActive;
    if (active == active_) {
        return;
    }
    active_ = active;
    NotificationCenter::defaultCenter().post(active ? Notifications::ApplicationDidBecomeActive
                                                    : Notifications::ApplicationWillResignActive);
}

}  // namespace vl
