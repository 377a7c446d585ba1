#include "app/ApplicationMain.h"

#include "app/AppDelegate.h"
#include "drive/store/DriveHome.h"
#include "drive/service/DriveService.h"
#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "platform/app/ApplicationStateBridge.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/app/ManagedPreferencesWatcher.h"
#include "platform/app/NotificationCenter.h"
#include "platform/app/Preferences.h"
#include "platform/text/Strings.h"
#include "platform/app/TerminationSignals.h"

#include <QApplication>

#include <cstring>

namespace vl {

int ApplicationMain::run(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Vellora"));
    QApplication::setDesktopFileName(QStringLiteral("com.tessaly.VelloraApp"));

    Strings::install();
    const std::shared_ptr<DriveService> drive = DriveService::install(DriveHome::defaultPath());
    ApplicationStateBridge::install();
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
