#include "app/AppDelegate.h"

#include "app/FirstPaintWatcher.h"
#include "app/LaunchSource.h"
#include "app/LaunchURL.h"
#include "browser/NavController.h"
#include "logging/VLLogging.h"
#include "model/VLRAppBookmarks.h"
#include "platform/cloud/CloudDocuments.h"
#include "services/NetworkWatcher.h"
#include "toolkit/Window.h"

#include <QCoreApplication>

namespace vl {

namespace {

// "<QApplication: 0x…>", or "(null)" outside the app.
QString applicationDescription() {
    const QCoreApplication* application = QCoreApplication::instance();
    if (!application) {
        return QStringLiteral("(null)");
    }
    return QStringLiteral("<%1: 0x%2>")
        .arg(QString::fromLatin1(application->metaObject()->className()))
        .arg(reinterpret_cast<quintptr>(application), 0, 16);
}

}  // namespace

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

bool AppDelegate::applicationOpenURLOptions(const QUrl& url, const QVariantMap& options) {
    VLLOG(6, "openURL: %@, options %@, app %@", url, options, applicationDescription());
    if (!url.isValid()) {
        return false;
    }
    if (url.scheme() != LaunchURL::Scheme) {
        return false;
    }
    const QVariant source = options.value(LaunchSource::OptionKey);
    const std::optional<QString> sourceApplication = source.typeId() == QMetaType::QString
                                                         ? std::optional<QString>(source.toString())
                                                         : std::nullopt;
    if (!LaunchSource::isTrusted(sourceApplication)) {
        VLLOG(4, "Ignoring openURL launch from unknown source: %@", sourceApplication);
        return false;
    }

    Url fileURL = LaunchURL::fileURLOf(url);
    if (const std::optional<Url> promised =
            CloudDocuments::isInstalled() ? vlr_URLByResolvingPromise(fileURL) : std::nullopt) {
        fileURL = *promised;
    }
    const int mode = LaunchURL::previewModeOf(url);

    const auto root =
        rootWindow_ ? std::dynamic_pointer_cast<NavController>(rootWindow_->rootViewController())
                    : nullptr;
    return root && root->showURLPreviewPreviewMode(fileURL, mode);
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
