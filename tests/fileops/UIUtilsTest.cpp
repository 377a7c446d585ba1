#include "fileops/UIUtils.h"

#include "model/DriveFixture.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/PresentationOverlay.h"
#include "toolkit/Window.h"

#include <QFileInfo>
#include <QPushButton>

namespace vl::test {
namespace {

class UIUtilsTest : public DriveFixture {
protected:
    void SetUp() override {
        DriveFixture::SetUp();
        Strings::install();
    }
    bool existsInDrive(const QString& relative) const {
        return QFileInfo::exists(drivePath(relative));
    }
    std::shared_ptr<AlertController> shown() const {
        return std::dynamic_pointer_cast<AlertController>(parent->presentedViewController());
    }

    VirtualDispatcher::Installation dispatch;
    std::shared_ptr<ViewController> parent = std::make_shared<ViewController>();
};

TEST_F(UIUtilsTest, RenameKeepsTheExtensionAndNumbersATakenName) {
    const Url report = writeFile(QStringLiteral("Report.odt"), "report");
    writeFile(QStringLiteral("Notes.odt"), "other notes");

    EXPECT_FALSE(UIUtils::renameItemAtURLToName(report, QStringLiteral("Report")));
    EXPECT_TRUE(existsInDrive(QStringLiteral("Report.odt")));
    EXPECT_TRUE(logged(7).contains(QStringLiteral("Rename: Old and new URLs are the same: %1 - %1")
                                       .arg(report.description())));

    EXPECT_FALSE(UIUtils::renameItemAtURLToName(report, QStringLiteral("Notes")));
    EXPECT_EQ(readAll(drivePath(QStringLiteral("Notes 2.odt"))), QByteArray("report"));
    EXPECT_EQ(readAll(drivePath(QStringLiteral("Notes.odt"))), QByteArray("other notes"));

    EXPECT_FALSE(UIUtils::renameItemAtURLToName(driveURL(QStringLiteral("Notes 2.odt")),
                                                QStringLiteral("Draft.txt")));
    EXPECT_TRUE(existsInDrive(QStringLiteral("Draft.txt.odt")));

    const Url draft = driveURL(QStringLiteral("Draft.txt.odt"));
    EXPECT_EQ(UIUtils::computeNewURLNewBasename(draft, QStringLiteral("Final.ODT")),
              driveURL(QStringLiteral("Final.ODT")));
    const Url bare = writeFile(QStringLiteral("README"));
    EXPECT_EQ(UIUtils::computeNewURLNewBasename(bare, QStringLiteral("Read.me")),
              driveURL(QStringLiteral("Read.me")));
}

TEST_F(UIUtilsTest, EmptyOrInvalidNamesAreRefusedWith514BeforeAnythingIsTouched) {
    const Url report = writeFile(QStringLiteral("Report.odt"));
    for (const QString& name : {QString(), QStringLiteral(".hidden"), QStringLiteral("a/b")}) {
        const std::optional<Error> error = UIUtils::renameItemAtURLToName(report, name);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), Error::FileErrorDomain);
        EXPECT_EQ(error->code(), Error::FileWriteInvalidFileName);
        EXPECT_TRUE(error->userInfo().isEmpty());
        EXPECT_FALSE(UIUtils::bestMessage(error).isEmpty());
    }
    EXPECT_TRUE(existsInDrive(QStringLiteral("Report.odt")));
    EXPECT_EQ(UIUtils::bestMessage(std::nullopt), QStringLiteral(""));
    EXPECT_EQ(
        UIUtils::bestMessage(Error(QStringLiteral("Elsewhere"), 7,
                                   {{Error::LocalizedDescriptionKey, QStringLiteral("Bad")}})),
        QStringLiteral("Bad"));
}

TEST_F(UIUtilsTest, RenamingADocumentReferenceRenamesItsDocument) {
    writeFile(QStringLiteral("Deep.pdf"), "deep");
    const Url reference = driveURL(QStringLiteral("Deep.pdf.vlref"));
    ASSERT_FALSE(store_->writeDocumentReference(reference, QStringLiteral("Deep.pdf")));
    EXPECT_FALSE(UIUtils::renameItemAtURLToName(reference, QStringLiteral("Shallow")));
    EXPECT_EQ(readAll(drivePath(QStringLiteral("Shallow.pdf"))), QByteArray("deep"));
    EXPECT_TRUE(existsInDrive(QStringLiteral("Deep.pdf.vlref")));
}

TEST_F(UIUtilsTest, DeleteWarningIsWordedForADocumentALibraryOrACount) {
    const Url report = writeFile(QStringLiteral("Report.odt"));
    addContainer(QStringLiteral("com.example.Writer"), QStringLiteral("Writer"),
                 QStringLiteral("Writer"));
    const Url library = driveURL(QStringLiteral("Writer"), true);
    const QString tail = QStringLiteral(
        " will be permanently deleted from Vellora on all your devices. This action cannot be "
        "undone.");

    EXPECT_EQ(UIUtils::messageForDeletePrompt({report}), QStringLiteral("\"Report.odt\"") + tail);
    EXPECT_EQ(UIUtils::messageForDeletePrompt({library}),
              QStringLiteral("The Writer app library, and all its documents,") + tail);
    EXPECT_EQ(UIUtils::messageForDeletePrompt({report, library}),
              format(Strings::localizedPlural(QStringLiteral(".DICT.ITEMS.%d"), 2), 2) + tail);
    EXPECT_FALSE(UIUtils::messageForDeletePrompt({driveURL(QStringLiteral("Gone.txt"))}));
}

TEST_F(UIUtilsTest, DeleteWarningIsASheetWhoseActionsSayWhetherItWasConfirmed) {
    Window window(QRect(0, 0, 1024, 768));
    window.setRootViewController(parent);
    window.show();
    auto* row = new QWidget(parent->view());
    row->setGeometry(0, 100, 400, 60);
    row->show();
    const Url report = writeFile(QStringLiteral("Report.odt"));
    QList<std::pair<QString, bool>> outcomes;
    auto record = [&](const std::shared_ptr<AlertAction>& action, bool cancelled) {
        outcomes.append({action ? action->title() : QString(), cancelled});
    };

    UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
        {}, false, parent, nullptr, nullptr, record);
    EXPECT_EQ(outcomes, (QList<std::pair<QString, bool>>{{QString(), true}}));
    EXPECT_FALSE(shown());
    UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
        {driveURL(QStringLiteral("Gone.txt"))}, false, parent, nullptr, nullptr, record);
    EXPECT_FALSE(shown());
    EXPECT_EQ(outcomes.size(), 1);

    for (const bool confirm : {true, false}) {
        UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
            {report}, false, parent, row, nullptr, record);
        const std::shared_ptr<AlertController> sheet = shown();
        ASSERT_TRUE(sheet);
        EXPECT_EQ(sheet->preferredStyle(), AlertController::Style::ActionSheet);
        EXPECT_EQ(sheet->title(), QString());
        const auto popover = sheet->popoverPresentationController();
        EXPECT_EQ(popover->sourceView(), row);
        EXPECT_EQ(popover->sourceRect(), QRect(0, 30, 400, 0));
        auto* overlay = qobject_cast<PresentationOverlay*>(sheet->view()->parentWidget());
        ASSERT_TRUE(overlay && overlay->isPopover());
        EXPECT_EQ(overlay->arrowDirection(), PopoverPresentationController::ArrowDirection::Left);
        ASSERT_EQ(sheet->actions().size(), 2);
        EXPECT_EQ(sheet->actions()[0]->style(), AlertAction::Style::Destructive);
        EXPECT_EQ(sheet->actions()[1]->style(), AlertAction::Style::Cancel);
        sheet->triggerAction(sheet->actions()[confirm ? 0 : 1]);
        EXPECT_FALSE(shown());
    }
    EXPECT_EQ(outcomes.mid(1),
              (QList<std::pair<QString, bool>>{{Strings::localized("Delete from Vellora"), false},
                                               {Strings::localized("Cancel"), true}}));
    EXPECT_TRUE(logged(7).contains(QStringLiteral("Delete action")));
    EXPECT_TRUE(logged(6).contains(QStringLiteral("Delete: Cancel pressed")));
    EXPECT_TRUE(UIUtils::slateMode());
    window.resize(390, 700);
    EXPECT_FALSE(UIUtils::slateMode());
}

TEST_F(UIUtilsTest, NameConflictAlertsQuoteTheNameAndItsExtension) {
    UIUtils::showItemExistsAlertParentViewController(QStringLiteral("Notes.odt"), parent);
    ASSERT_TRUE(shown());
    EXPECT_EQ(shown()->title(),
              QStringLiteral("The name “Notes” with extension “.odt” is already taken."));
    EXPECT_EQ(shown()->message(), Strings::localized("Choose a different name."));
    shown()->triggerAction(shown()->actions().first());
    UIUtils::showItemExistsAlertParentViewController(QStringLiteral("Notes"), parent);
    EXPECT_EQ(shown()->title(), QStringLiteral("The name “Notes” is already taken."));
    shown()->triggerAction(shown()->actions().first());
    UIUtils::showErrorParentViewController(Error::fileError(Error::FileWriteFileExists), parent);
    EXPECT_EQ(shown()->title(),
              Error::fileError(Error::FileWriteFileExists).localizedDescription());
    EXPECT_EQ(shown()->actions().first()->title(), Strings::localized("OK"));
}

}  // namespace
}  // namespace vl::test
