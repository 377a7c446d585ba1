#include "app/ApplicationMain.h"

#include "app/AppDelegate.h"
#include "app/ApplicationStart.h"
#include "app/DisplayPlatform.h"
#include "app/InstanceChannel.h"
#include "app/LaunchRequest.h"
#include "app/StartupFolders.h"
#include "app/StateRestoration.h"
#include "drive/service/DriveService.h"
#include "drive/store/DriveHome.h"
#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "model/PreviewCapability.h"
#include "platform/app/ApplicationStateBridge.h"
#include "platform/app/ManagedPreferencesWatcher.h"
#include "platform/app/NotificationCenter.h"
#include "platform/app/Preferences.h"
#include "platform/app/RestorationArchive.h"
#include "platform/app/TerminationSignals.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/text/Strings.h"
#include "toolkit/PreviewController.h"
#include "toolkit/Window.h"

#include <QApplication>
#include <QCoreApplication>

#include <cstring>
#include <future>
#include <memory>
#include <optional>

namespace vl {

namespace {

// How long a later start waits for the running instance to listen and answer: it may be
// starting itself.
constexpr int kHandOffTimeoutMs = 15'000;

QStringList argumentsOf(int argc, char** argv) {
    QStringList arguments;
    for (int index = 1; index < argc; ++index) {
        arguments.append(QString::fromLocal8Bit(argv[index]));
    }
    return arguments;
}

// A later start: hands its request to the running instance, which needs no display. Absent when
// the running instance went away meanwhile and this process is to start in its place.
std::optional<int> handOver(int argc, char** argv, InstanceChannel& channel,
                            const LaunchRequest& request) {
    int coreArgc = argc;
    const QCoreApplication core(coreArgc, argv);
    VLLOG(6, "Handing %@ from %@ to the running instance", request.url(),
          request.sourceApplication());
    QString problem;
    switch (channel.handOver(request, kHandOffTimeoutMs, &problem)) {
        case InstanceChannel::HandOff::Accepted:
            return 0;
        case InstanceChannel::HandOff::Refused:
            VLLOG(6, "The running instance did not open %@", request.url());
            return 0;
        case InstanceChannel::HandOff::BecamePrimary:
            return std::nullopt;
        case InstanceChannel::HandOff::Failed:
            break;
    }
    VLLOG(3, "vellora: cannot hand the launch over to the running instance: %@", problem);
    VLSLSClient::SLSClient()->flush();
    return 1;
}

}  // namespace

int ApplicationMain::run(int argc, char** argv) {
    const LaunchRequest request = LaunchRequest::fromArguments(argumentsOf(argc, argv));
    InstanceChannel channel(InstanceChannel::defaultFolder());
    if (channel.claim() == InstanceChannel::Role::Secondary) {
        if (const std::optional<int> status = handOver(argc, argv, channel, request)) {
            return *status;
        }
    }
    if (const std::optional<QString> problem = StartupFolders::problem()) {
        ApplicationStart::report(*problem);
        return 1;
    }
    const DisplayPlatform platform = DisplayPlatform::forSession();
    if (platform.problem()) {
        ApplicationStart::report(*platform.problem());
        return 1;
    }
    // The drive's home is prepared on another core while Qt connects to the display.
    std::future<std::shared_ptr<DriveStore>> store = std::async(
        std::launch::async, [] { return DriveService::prepareStore(DriveHome::defaultPath()); });
    const std::unique_ptr<QApplication> application =
        ApplicationStart::create(argc, argv, platform);
    VLLOG(6, "Showing the window through the %@ platform plugin", QGuiApplication::platformName());
    QApplication::setApplicationName(QStringLiteral("Vellora"));
    QApplication::setDesktopFileName(QStringLiteral("com.tessaly.VelloraApp"));

    Strings::install();
    const std::shared_ptr<DriveService> drive = DriveService::install(store.get());
    ApplicationStateBridge::install();
    // Items say they can be previewed exactly when the quick preview has a view for them.
    PreviewCapability::setPredicate(&PreviewController::canPreviewItem);
    ManagedPreferencesWatcher managedPreferences(
        {Preferences::standard().filePath(), VLSLSClient::markerFilePath()});

    AppDelegate delegate;
    StateRestoration restoration(delegate, RestorationArchive(RestorationArchive::defaultPath()));
    const NotificationCenter::TokenPtr resignObserver =
        NotificationCenter::defaultCenter().addObserver(
            Notifications::ApplicationWillResignActive, Dispatch::mainQueue(),
            [&delegate, &restoration](const Notification&) {
                delegate.applicationWillResignActive();
                restoration.saveApplicationState();
            });

    delegate.applicationWillFinishLaunchingWithOptions({});
    restoration.restoreApplicationState();
    delegate.applicationDidFinishLaunchingWithOptions({});
    const auto openURL = [&delegate](const LaunchRequest& launch) {
        if (!launch.url()) {
            return true;
        }
        return delegate.applicationOpenURLOptions(QUrl(*launch.url(), QUrl::StrictMode),
                                                  launch.options());
    };
    if (channel.role() == InstanceChannel::Role::Primary) {
        // Hand-offs wait in the socket's queue until the event loop runs.
        const std::optional<QString> problem =
            channel.listen([&delegate, &openURL](const LaunchRequest& launch) {
                if (Window* window = delegate.rootWindow()) {
                    window->makeKeyAndVisible();
                }
                return openURL(launch);
            });
        if (problem) {
            VLLOG(4, "Launches of later starts can't reach this instance: %@", *problem);
        }
    }
    openURL(request);

    const TerminationSignals terminationSignals;
    const int status = QApplication::exec();
    if (const int signal = terminationSignals.receivedSignal()) {
        VLLOG(5, "Quitting on signal %d (%s)", signal, ::strsignal(signal));
    }
    restoration.saveApplicationState();

    NotificationCenter::defaultCenter().removeObserver(resignObserver);
    return status;
}

}  // namespace vl
