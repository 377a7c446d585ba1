#include "app/ApplicationMain.h"

#include "app/AppDelegate.h"
#include "app/ApplicationStart.h"
#include "app/DisplayPlatform.h"
#include "app/StartupFolders.h"
#include "drive/service/DriveService.h"
#include "drive/store/DriveHome.h"
#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "model/PreviewCapability.h"
#include "platform/app/ApplicationStateBridge.h"
#include "platform/app/ManagedPreferencesWatcher.h"
#include "platform/app/NotificationCenter.h"
#include "platform/app/Preferences.h"
#include "platform/app/TerminationSignals.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/text/Strings.h"
#include "toolkit/PreviewController.h"

#include <QApplication>

#include <cstring>
#include <memory>
#include <optional>

namespace vl {

int ApplicationMain::run(int argc, char** argv) {
    if (const std::optional<QString> problem = StartupFolders::problem()) {
        ApplicationStart::report(*problem);
        return 1;
    }
    const DisplayPlatform platform = DisplayPlatform::forSession();
    if (platform.problem()) {
        ApplicationStart::report(*platform.problem());
        return 1;
    }
    const std::unique_ptr<QApplication> application =
        ApplicationStart::create(argc, argv, platform);
    VLLOG(6, "Showing the window through the %@ platform plugin", QGuiApplication::platformName());
    QApplication::setApplicationName(QStringLiteral("Vellora"));
    QApplication::setDesktopFileName(QStringLiteral("com.tessaly.VelloraApp"));

    Strings::install();
    const std::shared_ptr<DriveService> drive = DriveService::install(DriveHome::defaultPath());
    ApplicationStateBridge::install();
    // Items say they can be previewed exactly when the quick preview has a view for them.
    PreviewCapability::setPredicate(&PreviewController::canPreviewItem);
    ManagedPreferencesWatcher managedPreferences(
        {Preferences::standard().filePath(), VLSLSClient::markerFilePath()});

    AppDelegate delegate;
    const NotificationCenter::TokenPtr resignObserver =
        NotificationCenter::defaultCenter().addObserver(
            Notifications::ApplicationWillResignActive, Dispatch::mainQueue(),
            [&delegate](const Notification&) { delegate.applicationWillResignActive(); });

    delegate.applicationWillFinishLaunchingWithOptions({});
    delegate.applicationDidFinishLaunchingWithOptions({});
    const TerminationSignals terminationSignals;
    const int status = QApplication::exec();
    if (const int signal = terminationSignals.receivedSignal()) {
        VLLOG(5, "Quitting on signal %d (%s)", signal, ::strsignal(signal));
    }

    NotificationCenter::defaultCenter().removeObserver(resignObserver);
    return status;
}

}  // namespace vl
