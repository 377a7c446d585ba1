#include "app/AppDelegate.h"

#include "app/FirstPaintWatcher.h"
#include "app/LaunchSource.h"
#include "browser/NavController.h"
#include "logging/VLLogging.h"
#include "model/VLRAppBookmarks.h"
#include "platform/cloud/CloudDocuments.h"
#include "preview/PreviewItemManager.h"
#include "services/NetworkWatcher.h"
#include "toolkit/Window.h"

#include <QCoreApplication>
#include <QUrlQuery>

namespace vl {

namespace {

int hexValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

// Names and values come decoded once already; senders that escape them twice are still heard.
// A "%" that starts no escape stays (Qt's decoder would turn it into some other byte).
QString decodedAgain(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    QByteArray decoded;
    decoded.reserve(bytes.size());
    for (qsizetype index = 0; index < bytes.size(); ++index) {
        const int high = index + 2 < bytes.size() ? hexValue(bytes[index + 1]) : -1;
        const int low = high >= 0 ? hexValue(bytes[index + 2]) : -1;
        if (bytes[index] == '%' && low >= 0) {
            decoded.append(static_cast<char>(high * 16 + low));
            index += 2;
        } else {
            decoded.append(bytes[index]);
        }
    }
    return QString::fromUtf8(decoded);
}

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
    if (url.scheme() != QLatin1String("velloraapp")) {
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

    // A path that isn't absolute names nothing: it would depend on the working directory.
    const QString path = decodedAgain(url.path(QUrl::FullyDecoded));
    Url fileURL = path.startsWith(QLatin1Char('/')) ? Url::fromPath(path) : Url();
    if (const std::optional<Url> promised =
            CloudDocuments::isInstalled() ? vlr_URLByResolvingPromise(fileURL) : std::nullopt) {
        fileURL = *promised;
    }

    int mode = PreviewItemManager::PreviewModePreview;
    for (const auto& [name, value] : QUrlQuery(url).queryItems(QUrl::FullyDecoded)) {
        if (decodedAgain(name) != QLatin1String("mode")) {
            continue;
        }
        const QString verb = decodedAgain(value);
        if (verb == QLatin1String("preview")) {
            mode = PreviewItemManager::PreviewModePreview;
        } else if (verb == QLatin1String("details") || verb == QLatin1String("info")) {
            mode = PreviewItemManager::PreviewModeDetails;
        }
    }

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
