#include "app/AppDelegate.h"

#include "app/FirstPaintWatcher.h"
#include "browser/NavController.h"
#include "services/NetworkWatcher.h"
#include "toolkit/Window.h"

namespace vl {

AppDelegate::AppDelegate() = default;
AppDelegate::~AppDelegate() = default;

bool AppDelegate::applicationWillFinishLaunchingWithOptions(const QVariantMap&) {
    rootWindow_ = std::make_unique<Window>(Window::mainScreenBounds());
    // The window paints itself white.

    const auto navigationController = std::make_shared<NavController>();
    rootWindow_->setRootViewController(navigationController);
    rootWindow_->rootViewController()->setRestorationIdentifier(QStringLiteral("Root"));
    rootWindow_->makeKeyAndVisible();
    // No screen of the first paint shows the network state, and starting the watcher starts the
    // drive's network listener and Qt's network information backend: they wait for that paint.
    firstPaint_ = std::make_unique<FirstPaintWatcher>(
        *rootWindow_, [] { NetworkWatcher::sharedNetworkWatcher().start(); });
    return true;
}

bool AppDelegate::applicationDidFinishLaunchingWithOptions(const QVariantMap&) {
    return true;
}

void AppDelegate::applicationWillResignActive() {
    dumpWindowInfo();
}

void AppDelegate::dumpWindowInfo() {}

bool AppDelegate::applicationShouldSaveApplicationState() {
    return rootCheckNimbraState();
}

bool AppDelegate::applicationShouldRestoreApplicationState() {
    return rootCheckNimbraState();
}

bool AppDelegate::rootCheckNimbraState() const {
    if (!rootWindow_) {
        return false;
    }
    const auto root = std::dynamic_pointer_cast<NavController>(rootWindow_->rootViewController());
    return root && root->checkNimbraState();
}

}  // namespace vl
