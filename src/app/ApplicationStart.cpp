#include "app/ApplicationStart.h"

#include "app/DisplayPlatform.h"
#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"

#include <QApplication>
#include <QByteArray>
#include <QRegularExpression>

#include <cstdlib>
#include <mutex>
#include <vector>

namespace vl {

namespace {

struct HeldMessage {
    QtMsgType type;
    QByteArray category;
    QString text;
};

std::mutex heldMutex;
std::vector<HeldMessage> held;  // guarded by heldMutex, filled only while create() runs
QString heldPluginName;         // set before the handler is installed, read by it

// Qt's messages while the platform starts are held back: they either explain a failure, told
// then as one line, or are printed as usual once the application object exists.
void holdMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    QStringList messages;
    {
        std::lock_guard lock(heldMutex);
        held.push_back({type, QByteArray(context.category), text});
        if (type != QtFatalMsg) {
            return;
        }
        for (const HeldMessage& message : held) {
            messages.append(message.text);
        }
    }
    ApplicationStart::report(ApplicationStart::causeOfPlatformFailure(messages, heldPluginName));
    // Nothing was built yet that needs tearing down; unwinding out of Qt's constructor is not
    // possible, and returning would let Qt abort.
    std::_Exit(1);
}

}  // namespace

std::unique_ptr<QApplication> ApplicationStart::create(int& argc, char** argv,
                                                       const DisplayPlatform& platform) {
    // Through the environment only while the application object is made, so that apps this one
    // opens documents with choose their own platform.
    const bool choose = !platform.pluginName().isEmpty();
    if (choose) {
        qputenv("QT_QPA_PLATFORM", platform.pluginName().toUtf8());
    }
    heldPluginName = choose ? platform.pluginName() : qEnvironmentVariable("QT_QPA_PLATFORM");
    const QtMessageHandler previous = qInstallMessageHandler(holdMessage);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(previous);
    if (choose) {
        qunsetenv("QT_QPA_PLATFORM");
    }

    std::vector<HeldMessage> messages;
    {
        std::lock_guard lock(heldMutex);
        messages.swap(held);
    }
    for (const HeldMessage& message : messages) {
        const QMessageLogContext context(nullptr, 0, nullptr, message.category.constData());
        qt_message_output(message.type, context, message.text);
    }
    return application;
}

void ApplicationStart::report(const QString& cause) {
    // The log's copy on the console is the line on stderr: printed here as well, it would come
    // twice, and before the start-up lines still on their way through the log queue.
    VLLOG(3, "vellora: cannot start: %@", cause);
    VLSLSClient::SLSClient()->flush();
}

QString ApplicationStart::causeOfPlatformFailure(const QStringList& messages,
                                                 const QString& pluginName) {
    const QString all = messages.join(QLatin1Char('\n'));
    if (all.contains(QLatin1String("could not connect to display"), Qt::CaseInsensitive)) {
        return QStringLiteral(
                   "could not connect to the X11 display \"%1\"; check that its X server runs "
                   "and that you may use it (XAUTHORITY), or unset DISPLAY and start it with "
                   "`make run`, which serves it over VNC")
            .arg(qEnvironmentVariable("DISPLAY"));
    }
    if (all.contains(QLatin1String("wl_display"))) {
        return QStringLiteral(
                   "could not connect to the Wayland display \"%1\"; check that the compositor "
                   "runs, or unset WAYLAND_DISPLAY to use X11")
            .arg(qEnvironmentVariable("WAYLAND_DISPLAY"));
    }
    const QRegularExpression notFound(
        QStringLiteral("Could not find the Qt platform plugin \"([^\"]*)\""));
    if (const QRegularExpressionMatch match = notFound.match(all); match.hasMatch()) {
        return QStringLiteral(
                   "Qt's platform plugin \"%1\" is not installed; run scripts/install-deps.sh, "
                   "or unset QT_QPA_PLATFORM")
            .arg(match.captured(1));
    }
    const QString first =
        messages.isEmpty() ? QString() : messages.first().section(QLatin1Char('\n'), 0, 0);
    return QStringLiteral(
               "Qt could not start its platform plugin \"%1\" (%2); run scripts/install-deps.sh, "
               "and check the display")
        .arg(pluginName.isEmpty() ? QStringLiteral("default") : pluginName, first);
}

}  // namespace vl
