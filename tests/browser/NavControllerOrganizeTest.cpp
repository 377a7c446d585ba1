#include "BrowserFixture.h"

#include "fileops/FilenamePrompt.h"
#include "fileops/SimpleTextViewController.h"
#include "fileops/UIUtils.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentTargetSelectionController.h"
#include "toolkit/TextField.h"
#include "toolkit/UndoBar.h"

#include <QLabel>
#include <QPushButton>

namespace vl {
namespace {

// New folders, moves (through the chooser or a new folder), renames, deletes and their undo, on
// a drive service over a temporary home; prompts and warnings driven through the toolkit.
class NavControllerOrganizeTest : public test::BrowserFixture {
protected:
    // A file imported with its cloud copy, as one synced from the cloud is.
    Url imported(const QString& relative) {
        const QString source = dir_.path() + QStringLiteral("/source-") + QString::number(++n_);
        QFile file(source);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(relative.toUtf8());
        file.close();
        EXPECT_FALSE(store_->importItem(source, relative, false));
        return url(relative);
    }
    bool here(const QString& relative) const { return QFileInfo::exists(url(relative).path()); }
    bool inCloud(const QString& relative) const {
        return QFileInfo::exists(store_->cloudPathFor(relative));
    }
    // Types a name into the prompt shown and presses its done button, as a person does.
    void answerPrompt(const QString& name) {
        const std::shared_ptr<FilenamePrompt> prompt = nav_->folderPromptAlert();
        ASSERT_TRUE(prompt);
        TextField* field = prompt->alert()->textFields().value(0);
        ASSERT_TRUE(field);
        field->setText(name);
        prompt->folderPromptTextFieldChanged(field);
        prompt->alert()->triggerAction(prompt->defaultAction());
        dispatch_->runUntilIdle();
    }
    std::shared_ptr<AlertController> alertOf(const std::shared_ptr<ViewController>& parent) {
        return std::dynamic_pointer_cast<AlertController>(parent->presentedViewController());
    }
    // Presses the warning sheet's action of that style.
    void answerWarning(AlertAction::Style style) {
        const std::shared_ptr<AlertController> sheet = alertOf(nav_);
        ASSERT_TRUE(sheet);
        EXPECT_EQ(sheet->preferredStyle(), AlertController::Style::ActionSheet);
        for (const std::shared_ptr<AlertAction>& action : sheet->actions()) {
            if (action->style() == style) {
                sheet->triggerAction(action);
            }
        }
        dispatch_->runUntilIdle();
    }

    int n_ = 0;
};

TEST_F(NavControllerOrganizeTest, NewFolderIsMadeHereAndInTheCloudAndATakenNameIsRefused) {
    nav_->promtForNewFolderAndCreate(nullptr);
    const std::shared_ptr<FilenamePrompt> prompt = nav_->folderPromptAlert();
    ASSERT_TRUE(prompt);
    EXPECT_EQ(nav_->presentedViewController(), prompt->alert());
    EXPECT_EQ(prompt->alert()->title(), QStringLiteral("New Folder"));

    answerPrompt(QStringLiteral("Work"));
    EXPECT_EQ(nav_->presentedViewController(), prompt->alert()) << "stays open";
    EXPECT_EQ(prompt->errMsgViewController()->messageLabel()->text(),
              UIUtils::bestMessage(Error::fileError(Error::FileWriteFileExists,
                                                    url(QStringLiteral("Work")).path())));

    answerPrompt(QStringLiteral("  Trips "));
    EXPECT_FALSE(nav_->presentedViewController());
    EXPECT_TRUE(QFileInfo(url(QStringLiteral("Trips")).path()).isDir());
    EXPECT_TRUE(QFileInfo(store_->cloudPathFor(QStringLiteral("Trips"))).isDir());
}

TEST_F(NavControllerOrganizeTest, WithNoFolderToMoveIntoTheItemsGoIntoANewOne) {
    const QList<Url> notes = {url(QStringLiteral("com~example~Notes/n1.txt")),
                              url(QStringLiteral("com~example~Notes/n2.txt"))};
    nav_->showMoveTargetForItemsInFolder(notes, url(QStringLiteral("com~example~Notes"), true));
    const std::shared_ptr<FilenamePrompt> prompt = nav_->folderPromptAlert();
    ASSERT_TRUE(prompt);
    EXPECT_EQ(nav_->presentedViewController(), prompt->alert()) << "no chooser";
    EXPECT_EQ(prompt->alert()->title(), QStringLiteral("Move 2 Items to a New Folder"));
    EXPECT_EQ(prompt->defaultAction()->title(), QStringLiteral("Move"));

    answerPrompt(QStringLiteral("Kept"));
    EXPECT_FALSE(nav_->presentedViewController());
    EXPECT_TRUE(here(QStringLiteral("com~example~Notes/Kept/n1.txt")));
    EXPECT_TRUE(here(QStringLiteral("com~example~Notes/Kept/n2.txt")));
    EXPECT_EQ(nav_->undoBar()->message(), QStringLiteral("Moved 2 items to Kept"));
}

TEST_F(NavControllerOrganizeTest, ChooserMoveKeepsTheCloudInStepAndUndoMovesBack) {
    const QList<Url> trips = {imported(QStringLiteral("T1.txt")),
                              imported(QStringLiteral("T2.txt"))};
    nav_->showMoveTargetForItemsInFolder(trips, root_);
    const auto chooser = std::dynamic_pointer_cast<DocumentTargetSelectionController>(
        nav_->presentedViewController());
    ASSERT_TRUE(chooser);
    EXPECT_EQ(chooser->itemsToMove(), trips);

    nav_->documentTargetSelectionControllerDidSelectItemAtURL(chooser,
                                                              url(QStringLiteral("Work"), true));
    dispatch_->runUntilIdle();
    EXPECT_FALSE(nav_->presentedViewController());
    for (const QString& name : {QStringLiteral("T1.txt"), QStringLiteral("T2.txt")}) {
        EXPECT_TRUE(here(QStringLiteral("Work/") + name) &&
                    inCloud(QStringLiteral("Work/") + name));
        EXPECT_FALSE(here(name) || inCloud(name));
    }
    UndoBar* bar = nav_->undoBar();
    EXPECT_EQ(bar->message(), QStringLiteral("Moved 2 items to Work"));
    EXPECT_EQ(bar->undoButton()->accessibleName(), QStringLiteral("Undo"));

    bar->triggerUndo();
    for (const QString& name : {QStringLiteral("T1.txt"), QStringLiteral("T2.txt")}) {
        EXPECT_TRUE(here(name) && inCloud(name));
        EXPECT_FALSE(here(QStringLiteral("Work/") + name) ||
                     inCloud(QStringLiteral("Work/") + name));
    }
    EXPECT_EQ(bar->message(), QStringLiteral("Moved 2 items back"));
    EXPECT_FALSE(bar->canUndo());
}

TEST_F(NavControllerOrganizeTest, UndoLeavesAnItemChangedOnAnotherDeviceWhereItIs) {
    const QList<Url> trips = {imported(QStringLiteral("T1.txt")),
                              imported(QStringLiteral("T2.txt"))};
    EXPECT_TRUE(
        nav_->moveItemsToDirectoryToDirectory(trips, url(QStringLiteral("Work"), true)).isEmpty());
    // Another device renames one of them, as the drive's remote changes do.
    ASSERT_FALSE(store_->movePromisedItem(url(QStringLiteral("Work/T1.txt")),
                                          url(QStringLiteral("Work/Day one.txt"))));

    nav_->undoBar()->triggerUndo();
    EXPECT_TRUE(here(QStringLiteral("Work/Day one.txt")));
    EXPECT_FALSE(here(QStringLiteral("T1.txt")));
    EXPECT_TRUE(here(QStringLiteral("T2.txt")) && inCloud(QStringLiteral("T2.txt")));
    EXPECT_EQ(nav_->undoBar()->message(),
              QStringLiteral("1 item changed since and was left where it is"));
}

TEST_F(NavControllerOrganizeTest, MoveFailuresAreToldOnceAndAFolderNeverGoesIntoItself) {
    const Url work = url(QStringLiteral("Work"), true);
    nav_->moveItemsToDirectoryAndShowErrorsToDirectory(
        {url(QStringLiteral("a.txt")), url(QStringLiteral("gone 1.txt")),
         url(QStringLiteral("gone 2.txt"))},
        work);
    EXPECT_TRUE(here(QStringLiteral("Work/a.txt")));
    const std::shared_ptr<AlertController> alert = alertOf(top());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title(), QStringLiteral("2 items couldn’t be moved."));

    const QList<Error> errors =
        nav_->moveItemsToDirectoryToDirectory({work}, url(QStringLiteral("Work/Letters"), true));
    EXPECT_EQ(errors.size(), 1);
    EXPECT_TRUE(here(QStringLiteral("Work/memo.txt")));
    EXPECT_FALSE(here(QStringLiteral("Work/Letters/Work")));
}

TEST_F(NavControllerOrganizeTest, DeletesAreConfirmedAndNeverMixLibrariesWithItems) {
    int completions = 0;
    const auto completion = [&] { ++completions; };
    nav_->showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(
        {url(QStringLiteral("a.txt")), url(QStringLiteral("com~example~Notes"), true)}, nullptr,
        nullptr, completion);
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(nav_->presentedViewController());
    EXPECT_TRUE(here(QStringLiteral("a.txt")));

    // The per-item delete: the warning, then the item goes here and in the cloud.
    imported(QStringLiteral("T1.txt"));
    EXPECT_TRUE(
        nav_->documentListControllerCanPerformAction(top(), DocumentListController::Delete));
    nav_->documentListControllerPerformActionURLOriginatingViewCompletion(
        top(), DocumentListController::Delete, url(QStringLiteral("T1.txt")), nullptr, completion);
    EXPECT_EQ(completions, 1) << "not before the warning is answered";
    answerWarning(AlertAction::Style::Destructive);
    EXPECT_EQ(completions, 2);
    EXPECT_FALSE(here(QStringLiteral("T1.txt")) || inCloud(QStringLiteral("T1.txt")));

    // From the toolbar: Cancel keeps everything, and edit mode.
    nav_->setEditModeAndUpdateUIForViewController(true, top());
    top()->setSelectedItems({url(QStringLiteral("b.txt"))});
    nav_->showWarningAndDeleteDocument(nullptr);
    answerWarning(AlertAction::Style::Cancel);
    EXPECT_TRUE(here(QStringLiteral("b.txt")));
    EXPECT_TRUE(nav_->editMode());

    // A whole app library: emptied on every device, its folder kept.
    imported(QStringLiteral("com~example~Editor/synced.txt"));
    top()->setSelectedItems({url(QStringLiteral("com~example~Editor"), true)});
    nav_->showWarningAndDeleteDocument(nullptr);
    answerWarning(AlertAction::Style::Destructive);
    EXPECT_FALSE(nav_->editMode());
    EXPECT_TRUE(QDir(url(QStringLiteral("com~example~Editor")).path()).isEmpty());
    EXPECT_TRUE(QDir(store_->cloudPathFor(QStringLiteral("com~example~Editor"))).isEmpty());
    EXPECT_TRUE(here(QStringLiteral("com~example~Notes/n1.txt")));
}

TEST_F(NavControllerOrganizeTest, RenameKeepsTheExtensionAndCanBeUndone) {
    imported(QStringLiteral("Report.txt"));
    EXPECT_TRUE(
        nav_->documentListControllerCanPerformAction(top(), DocumentListController::Rename));
    EXPECT_TRUE(
        nav_->documentListControllerCanPerformAction(top(), DocumentListController::Details));
    bool completed = false;
    nav_->documentListControllerPerformActionURLOriginatingViewCompletion(
        top(), DocumentListController::Rename, url(QStringLiteral("Report.txt")), nullptr,
        [&] { completed = true; });
    ASSERT_TRUE(nav_->folderPromptAlert());
    EXPECT_EQ(nav_->folderPromptAlert()->alert()->textFields().value(0)->text(),
              QStringLiteral("Report.txt"));

    answerPrompt(QStringLiteral("Summary"));
    EXPECT_FALSE(completed) << "a rename never calls the list's completion";
    EXPECT_TRUE(here(QStringLiteral("Summary.txt")) && inCloud(QStringLiteral("Summary.txt")));
    EXPECT_FALSE(here(QStringLiteral("Report.txt")));
    EXPECT_EQ(nav_->undoBar()->message(), QStringLiteral("Renamed “Report.txt” to “Summary.txt”"));

    nav_->undoBar()->triggerUndo();
    EXPECT_TRUE(here(QStringLiteral("Report.txt")) && inCloud(QStringLiteral("Report.txt")));
    EXPECT_EQ(nav_->undoBar()->message(), QStringLiteral("Renamed back to “Report.txt”"));
}

}  // namespace
}  // namespace vl
