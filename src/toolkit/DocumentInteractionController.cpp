#include "toolkit/DocumentInteractionController.h"

#include "logging/VLLogging.h"
#include "platform/app/DesktopApplications.h"
#include "platform/files/ContentTypeRegistry.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QApplication>
#include <QClipboard>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFileInfo>
#include <QMimeData>
#include <QProcess>
#include <QStandardPaths>

namespace vl {

namespace {

const QString FileManagerService = QStringLiteral("org.freedesktop.FileManager1");
const QString FolderType = QStringLiteral("inode/directory");

// The MIME name the desktop's associations use for a type identifier.
QString desktopType(const QString& identifier) {
    return identifier == ContentTypeRegistry::Folder ? FolderType : identifier;
}

bool fileManagerAnswers() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface() &&
           bus.interface()->isServiceRegistered(FileManagerService).value();
}

// The application the desktop opens folders with, when one may be offered.
std::optional<ApplicationRecord> folderApplication() {
    std::optional<ApplicationRecord> app =
        DesktopApplications::shared().defaultApplicationForType(FolderType);
    if (!app || app->requiresTerminal ||
        app->bundleIdentifier == DocumentInteractionController::OwnApplicationIdentifier) {
        return std::nullopt;
    }
    return app;
}

}  // namespace

std::shared_ptr<DocumentInteractionController>
DocumentInteractionController::interactionControllerWithURL(const Url& url) {
    return std::make_shared<DocumentInteractionController>(url);
}

DocumentInteractionController::DocumentInteractionController(const Url& url) {
    setURL(url);
}

DocumentInteractionController::~DocumentInteractionController() = default;

void DocumentInteractionController::setURL(const Url& url) {
    url_ = url;
    const bool isDirectory = url.hasDirectoryPath() || QFileInfo(url.path()).isDir();
    contentType_ = desktopType(
        ContentTypeRegistry::shared().identifierForFileName(url.lastPathComponent(), isDirectory));
}

std::optional<ApplicationRecord> DocumentInteractionController::defaultApplication() const {
    DesktopApplications& desktop = DesktopApplications::shared();
    std::optional<ApplicationRecord> app = desktop.defaultApplicationForType(contentType_);
    if (!app || !app->requiresTerminal) {
        return app;
    }
    for (const ApplicationRecord& other : desktop.applicationsForType(contentType_)) {
        if (!other.requiresTerminal) {
            return other;
        }
    }
    return std::nullopt;
}

QList<ApplicationRecord> DocumentInteractionController::applicationsForOpenWith() const {
    QList<ApplicationRecord> apps;
    for (const ApplicationRecord& app :
         DesktopApplications::shared().applicationsForType(contentType_)) {
        if (!app.requiresTerminal && app.bundleIdentifier != OwnApplicationIdentifier) {
            apps.append(app);
        }
    }
    return apps;
}

bool DocumentInteractionController::openDocumentWithDefaultApplication() {
    std::optional<ApplicationRecord> app = defaultApplication();
    if (!app) {
        return false;
    }
    openDocumentWithApplication(*app);
    return true;
}

void DocumentInteractionController::openDocumentWithApplication(const ApplicationRecord& app) {
    VLLOG(6, "Opening %@ with %@", url_, app.bundleIdentifier);
    open(app, {url_});
}

void DocumentInteractionController::open(const ApplicationRecord& app, const QList<Url>& urls) {
    // The completion may come after this controller is gone: it keeps what the alert needs.
    DesktopApplications::shared().openURLs(
        app, urls,
        [presenter = presenter_, app,
         name = urls.value(0).lastPathComponent()](std::optional<Error> error) {
            if (!error) {
                return;
            }
            VLLOG(3, "Couldn't open %@ with %@: %@", name, app.bundleIdentifier, *error);
            showFailure(presenter, vl::format(Strings::localized("Can’t Open “%@”"), name),
                        vl::format(Strings::localized("%1$@ couldn’t be started: %2$@"),
                                   app.localizedName, error->localizedDescription()));
        });
}

void DocumentInteractionController::copyToClipboard() const {
    const QUrl fileUrl = QUrl::fromLocalFile(url_.path());
    auto* data = new QMimeData;
    data->setUrls({fileUrl});
    data->setData(QStringLiteral("x-special/gnome-copied-files"),
                  QByteArrayLiteral("copy\n") + fileUrl.toEncoded());
    data->setText(url_.path());
    QGuiApplication::clipboard()->setMimeData(data);
    VLLOG(6, "Copied %@ to the clipboard", url_);
}

bool DocumentInteractionController::canShowInFolder() const {
    return fileManagerAnswers() || folderApplication().has_value();
}

void DocumentInteractionController::showInFolder() {
    if (fileManagerAnswers()) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            FileManagerService, QStringLiteral("/org/freedesktop/FileManager1"), FileManagerService,
            QStringLiteral("ShowItems"));
        call << QStringList{QString::fromUtf8(url_.toQUrl().toEncoded())} << QString();
        QDBusConnection::sessionBus().asyncCall(call);
        VLLOG(6, "Showing %@ in the file manager", url_);
        return;
    }
    if (std::optional<ApplicationRecord> app = folderApplication()) {
        VLLOG(6, "Showing %@ in %@", url_, app->bundleIdentifier);
        open(*app, {url_.deletingLastPathComponent()});
        return;
    }
    VLLOG(4, "No file manager to show %@ in", url_);
}

bool DocumentInteractionController::canSendByEmail() {
    return !QStandardPaths::findExecutable(QStringLiteral("xdg-email")).isEmpty();
}

void DocumentInteractionController::sendByEmail() {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
    const QStringList arguments{QStringLiteral("--subject"), name(), QStringLiteral("--attach"),
                                url_.path()};
    if (program.isEmpty() || !QProcess::startDetached(program, arguments)) {
        const Error error = Error::posixError(ENOENT, QStringLiteral("xdg-email"));
        VLLOG(3, "Couldn't start xdg-email for %@: %@", url_, error);
        showFailure(presenter_, vl::format(Strings::localized("Can’t Send “%@”"), name()),
                    error.localizedDescription());
        return;
    }
    VLLOG(6, "Writing an email with %@", url_);
}

bool DocumentInteractionController::documentIsLocal() const {
    return QFileInfo::exists(url_.path());
}

}  // namespace vl
