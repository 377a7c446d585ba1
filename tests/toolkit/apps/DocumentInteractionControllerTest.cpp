#include "services/LogCapture.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/DocumentInteractionControllerDelegate.h"
#include "toolkit/OpenWithViewController.h"
#include "toolkit/Window.h"
#include "toolkit/apps/DesktopAppsEnvironment.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace vl;

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE
using vl::test::DesktopAppsEnvironment;

namespace {

const auto* environment = ::testing::AddGlobalTestEnvironment(new DesktopAppsEnvironment);

class DismissCounter : public DocumentInteractionControllerDelegate {
public:
    void documentInteractionControllerDidDismissOptionsMenu(
        DocumentInteractionController*) override {
        ++dismissed;
    }
    int dismissed = 0;
};

class DocumentInteractionControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        QFile::remove(DesktopAppsEnvironment::launchesPath());
        window.setRootViewController(root);
        window.show();
    }
    Url file(const QString& name) {
        QFile out(dir.filePath(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write("x");
        return Url::fromPath(out.fileName());
    }
    QStringList identifiers(const QList<ApplicationRecord>& apps) {
        QStringList ids;
        for (const ApplicationRecord& app : apps) {
            ids << app.bundleIdentifier;
        }
        return ids;
    }
    QStringList titles(const std::shared_ptr<AlertController>& menu) {
        QStringList result;
        for (const auto& action : menu->actions()) {
            result << action->title() + (action->isEnabled() ? "" : " (disabled)");
        }
        return result;
    }

    QTemporaryDir dir;
    Window window{QRect(0, 0, 1024, 768)};
    std::shared_ptr<ViewController> root = std::make_shared<ViewController>();
};

TEST_F(DocumentInteractionControllerTest,
       DefaultApplicationFollowsTheUsersChoiceButNeverATerminal) {
    auto notes = DocumentInteractionController::interactionControllerWithURL(file("a.txt"))
                     ->defaultApplication();
    ASSERT_TRUE(notes);
    EXPECT_EQ(notes->itemName, "org.example.Notes.desktop");
    EXPECT_EQ(notes->bundleIdentifier, "org.example.Notes");
    EXPECT_EQ(notes->localizedName, "Notes");
    EXPECT_EQ(notes->description, "Quick notes");
    EXPECT_EQ(notes->shortVersionString, "2.1");
    EXPECT_EQ(notes->vendorName, "example.org");
    EXPECT_EQ(notes->bundleExecutable, DesktopAppsEnvironment::root() + "/record-launch");
    EXPECT_EQ(notes->bundleContainerURL.path(), DesktopAppsEnvironment::applicationsDir());
    EXPECT_TRUE(notes->installed);
    EXPECT_NE(notes->itemID, 0u);
    EXPECT_TRUE(notes->supportsOpenInPlace);

    // The default for JSON needs a terminal: the next registered application stands in.
    EXPECT_EQ(DocumentInteractionController(file("b.json"))
                  .defaultApplication()
                  .value_or(ApplicationRecord())
                  .bundleIdentifier,
              "org.example.Editor");
    EXPECT_FALSE(DocumentInteractionController(file("c.zip")).defaultApplication())
        << "only a terminal application takes zip archives";
    auto launcher = DocumentInteractionController(file("d.pdf")).defaultApplication();
    ASSERT_TRUE(launcher);
    EXPECT_FALSE(launcher->supportsOpenInPlace) << "its command line takes no document";
    EXPECT_FALSE(DocumentInteractionController(file("e.mp3")).defaultApplication())
        << "no installed application may leak in";
}

TEST_F(DocumentInteractionControllerTest, OpenWithListsRegisteredAppsButNotThisAppOrTerminals) {
    EXPECT_EQ(identifiers(DocumentInteractionController(file("a.txt")).applicationsForOpenWith()),
              (QStringList{"org.example.Notes", "org.example.Editor"}));
    EXPECT_TRUE(DocumentInteractionController(file("f.odt")).applicationsForOpenWith().isEmpty());
    EXPECT_EQ(DocumentInteractionController(file("f.odt"))
                  .defaultApplication()
                  .value_or(ApplicationRecord())
                  .bundleIdentifier,
              DocumentInteractionController::OwnApplicationIdentifier);
}

TEST_F(DocumentInteractionControllerTest, AppsReceiveThePathOrTheURIOfTheDocument) {
    const Url text = file("Letter one.txt");
    auto controller = DocumentInteractionController::interactionControllerWithURL(text);
    ASSERT_TRUE(controller->openDocumentWithDefaultApplication());
    // GIO hands a local document to an application taking URIs as its path too.
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(1), QStringList{"Notes " + text.path()});
    const auto editor = DocumentInteractionController(file("b.json")).defaultApplication();
    ASSERT_TRUE(editor);
    controller->openDocumentWithApplication(*editor);
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(2).value(1), "Editor " + text.path());
    EXPECT_FALSE(DocumentInteractionController(file("c.zip")).openDocumentWithDefaultApplication());
}

TEST_F(DocumentInteractionControllerTest, AnAppThatFailsToStartSaysSo) {
    test::LogCapture log;
    // Removed since the sheet listed it.
    ApplicationRecord gone;
    gone.itemName = "org.example.Gone.desktop";
    gone.bundleIdentifier = "org.example.Gone";
    gone.localizedName = "Gone";
    DocumentInteractionController(file("page.html")).openDocumentWithApplication(gone);
    QDeadlineTimer deadline(5000);
    while (!root->presentedViewController() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    auto alert = std::dynamic_pointer_cast<AlertController>(root->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title(), "Can’t Open “page.html”");
    EXPECT_TRUE(alert->message().startsWith("Gone couldn’t be started: "))
        << alert->message().toStdString();
    EXPECT_EQ(log.messages().filter("Couldn't open page.html with org.example.Gone: ").size(), 1);
}

TEST_F(DocumentInteractionControllerTest, ShareSheetOffersItsEntriesByWhatTheDocumentAllows) {
    auto delegate = std::make_shared<DismissCounter>();
    auto controller = DocumentInteractionController::interactionControllerWithURL(file("a.txt"));
    controller->setDelegate(delegate);
    // No mail program, whatever the machine has installed.
    const QByteArray path = qgetenv("PATH");
    const QTemporaryDir noPrograms;
    qputenv("PATH", noPrograms.path().toLocal8Bit());
    const bool presented = controller->presentOptionsMenuFromRectInViewAnimated(
        QRect(0, 200, 300, 0), root->view(), false);
    qputenv("PATH", path);
    ASSERT_TRUE(presented);
    auto menu = controller->optionsMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(root->presentedViewController(), menu);
    EXPECT_EQ(menu->popoverPresentationController()->sourceView(), root->view());
    // No file manager on the bus: Show in Folder opens the folder in the folder application.
    EXPECT_EQ(titles(menu), (QStringList{"Copy", "Show in Folder", "Cancel"}));
    for (const auto& action : menu->actions()) {
        EXPECT_EQ(menu->buttonForAction(action)->accessibleName(), action->title());
    }
    QStringList tiles;
    for (QToolButton* tile : menu->contentViewController()->view()->findChildren<QToolButton*>()) {
        tiles << tile->accessibleName();
    }
    EXPECT_EQ(tiles, (QStringList{"Notes", "Editor"}));
    menu->contentViewController()->view()->findChildren<QToolButton*>().value(1)->click();
    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_EQ(delegate->dismissed, 1);
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(1),
              QStringList{"Editor " + controller->URL().path()});

    // A cloud-only document: nothing to copy or attach until it is downloaded; a mail program.
    QFile::link(QStringLiteral("/bin/true"), DesktopAppsEnvironment::binDir() + "/xdg-email");
    qputenv("PATH", DesktopAppsEnvironment::binDir().toLocal8Bit() + ":" + path);
    auto cloudOnly = DocumentInteractionController::interactionControllerWithURL(
        Url::fromPath(dir.filePath("Not yet here.txt")));
    ASSERT_TRUE(cloudOnly->presentOptionsMenuFromRectInViewAnimated(QRect(), root->view(), false));
    qputenv("PATH", path);
    EXPECT_EQ(
        titles(cloudOnly->optionsMenu()),
        (QStringList{"Copy (disabled)", "Show in Folder", "Send by Email (disabled)", "Cancel"}));
    cloudOnly->dismissMenuAnimated(false);
    EXPECT_EQ(root->presentedViewController(), nullptr);
}

TEST_F(DocumentInteractionControllerTest, CopyPutsTheFileOnTheClipboardForFileManagers) {
    const Url text = file("Letter one.txt");
    auto controller = DocumentInteractionController::interactionControllerWithURL(text);
    controller->presentOptionsMenuFromRectInViewAnimated(QRect(), root->view(), false);
    controller->optionsMenu()->triggerAction(controller->optionsMenu()->actions().value(0));
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(data);
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(text.path())});
    EXPECT_EQ(data->data("text/uri-list").trimmed(), QUrl::fromLocalFile(text.path()).toEncoded());
    EXPECT_EQ(data->text(), text.path());
    EXPECT_EQ(data->data("x-special/gnome-copied-files"),
              "copy\n" + QUrl::fromLocalFile(text.path()).toEncoded());
}

TEST_F(DocumentInteractionControllerTest, ShowInFolderOpensTheFolderWithoutAFileManagerOnTheBus) {
    const Url text = file("a.txt");
    DocumentInteractionController(text).showInFolder();
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(1), QStringList{"Files " + dir.path()});
}

}  // namespace
