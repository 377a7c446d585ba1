#include "browser/BrowserFixture.h"
#include "toolkit/apps/DesktopAppsEnvironment.h"

#include "fileops/UIUtils.h"
#include "model/VLItem.h"
#include "preview/GlimpseItemController.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/AlertController.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/Window.h"

namespace vl {
namespace {

using test::DesktopAppsEnvironment;

const auto* environment = ::testing::AddGlobalTestEnvironment(new DesktopAppsEnvironment);

// A tap on a document, the actions menu, share, and the stack for a URL from outside, with the
// desktop's applications of DesktopAppsEnvironment (text goes to Notes, PDF to an app that takes
// no document, pictures to a viewer) and a drive service over a temporary home.
class NavControllerActivationTest : public test::BrowserFixture {
protected:
    void SetUp() override {
        BrowserFixture::SetUp();
        QFile::remove(DesktopAppsEnvironment::launchesPath());
    }
    void tap(const QString& relative) {
        nav_->documentListControllerDidSelectItemAtURL(top(), url(relative));
        dispatch_->runUntilIdle();
    }
    std::shared_ptr<GlimpseItemController> previewOnTop() const {
        return std::dynamic_pointer_cast<GlimpseItemController>(nav_->topViewController());
    }
    std::shared_ptr<AlertController> sheet() const {
        return std::dynamic_pointer_cast<AlertController>(nav_->presentedViewController());
    }
    // The actions menu of the item: each entry's title, with "(off)" when it is disabled.
    QStringList menuOf(const QString& relative, bool directory = false) {
        if (auto shown = sheet()) {
            shown->dismissViewControllerAnimated(false);
        }
        nav_->showActionsMenuFromViewUrlPresentedURLCompletion(
            nullptr, url(relative, directory), url(QString(), true), [this] { ++completions_; });
        QStringList entries;
        if (auto shown = sheet()) {
            for (const auto& action : shown->actions()) {
                entries << action->title() + (action->isEnabled() ? "" : " (off)");
            }
        }
        return entries;
    }
    int completions_ = 0;
};

TEST_F(NavControllerActivationTest, ADocumentOpensInItsAppOrElseInThePreview) {
    // Text: its default app takes files in place, so it is launched and nothing is pushed.
    tap(QStringLiteral("a.txt"));
    const QStringList launches = DesktopAppsEnvironment::waitForLaunches(1);
    ASSERT_EQ(launches.size(), 1);
    EXPECT_TRUE(launches[0].startsWith("Notes ") && launches[0].contains("a.txt"))
        << launches[0].toStdString();
    EXPECT_EQ(nav_->viewControllers().size(), 1);
    EXPECT_EQ(log_.count(QStringLiteral("openInDefaultApp returned YES, app launched")), 1);

    // A PDF's app takes no document, and a picture in the user's folders is previewed even
    // though a viewer is its default: both get the preview.
    write(QStringLiteral("report.pdf"));
    tap(QStringLiteral("report.pdf"));
    ASSERT_TRUE(previewOnTop());
    EXPECT_EQ(previewOnTop()->currentPreviewItem(), url(QStringLiteral("report.pdf")));
    EXPECT_EQ(log_.count(QStringLiteral("openInDefaultApp returned NO, showing preview")), 1);
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();

    write(QStringLiteral("cat.png"));
    tap(QStringLiteral("cat.png"));
    ASSERT_TRUE(previewOnTop());
    EXPECT_EQ(previewOnTop()->currentPreviewItem(), url(QStringLiteral("cat.png")));
    EXPECT_EQ(nav_->viewControllers().size(), 2);
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(2, 300).size(), 1) << "no viewer started";
}

TEST_F(NavControllerActivationTest, TapsInEditModeOrOnAVanishedItemOpenNothing) {
    nav_->setEditModeAndUpdateUIForViewController(true, top());
    write(QStringLiteral("c.pdf"));
    tap(QStringLiteral("c.pdf"));
    EXPECT_EQ(nav_->viewControllers().size(), 1);
    EXPECT_EQ(log_.count(QStringLiteral("DLC Selection not allowed while in edit mode")), 1);
    nav_->setEditModeAndUpdateUIForViewController(false, top());

    // An item gone since the list showed it: "not found", then the browser starts again.
    enter(QStringLiteral("Work"));
    ASSERT_EQ(nav_->viewControllers().size(), 2);
    nav_->documentListControllerDidSelectItemAtURL(top(), url(QStringLiteral("Work/gone.txt")));
    const auto alert = std::dynamic_pointer_cast<AlertController>(top()->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_TRUE((alert->title() + alert->message())
                    .contains(UIUtils::bestMessage(Error::fileError(
                        Error::FileReadNoSuchFile, url(QStringLiteral("Work/gone.txt")).path()))));
    dispatch_->runUntilIdle();
    EXPECT_EQ(nav_->viewControllers().size(), 1);
}

TEST_F(NavControllerActivationTest, TheActionsMenuOffersWhatFitsTheItem) {
    EXPECT_EQ(menuOf(QStringLiteral("a.txt")),
              (QStringList{"Rename Item…", "Share Item…", "Move to Folder…", "Keep Offline",
                           "Remove Download", "Cancel"}));
    EXPECT_EQ(menuOf(QStringLiteral("Work"), true),
              (QStringList{"Rename Item…", "Move to Folder…", "Keep Offline", "Remove Download",
                           "Cancel"}));
    // An app library: nothing but Cancel can be chosen.
    EXPECT_EQ(menuOf(QStringLiteral("com~example~Notes"), true),
              (QStringList{"Rename Item… (off)", "Keep Offline (off)", "Remove Download (off)",
                           "Cancel"}));
    // A library without folders has nowhere to move to; one limited to a level still offers
    // the move for its folder, since the menu does not apply the move rule.
    EXPECT_EQ(
        menuOf(QStringLiteral("com~example~Notes/n1.txt")),
        (QStringList{"Rename Item…", "Share Item…", "Keep Offline", "Remove Download", "Cancel"}));
    EXPECT_EQ(menuOf(QStringLiteral("com~example~Editor/Drafts"), true),
              (QStringList{"Rename Item…", "Move to Folder…", "Keep Offline", "Remove Download",
                           "Cancel"}));

    // Cancel calls the list's completion; an unreadable item gets no menu and no completion.
    completions_ = 0;
    menuOf(QStringLiteral("a.txt"));
    sheet()->triggerAction(sheet()->actions().last());
    dispatch_->runUntilIdle();
    for (QDeadlineTimer deadline(3000); completions_ == 0 && !deadline.hasExpired();) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    EXPECT_EQ(completions_, 1);
    EXPECT_TRUE(menuOf(QStringLiteral("missing.txt")).isEmpty());
    EXPECT_EQ(completions_, 1);
}

TEST_F(NavControllerActivationTest, ShareShowsTheSheetOfTheDocument) {
    Window window{QRect(0, 0, 1024, 768)};
    window.setRootViewController(nav_);
    window.makeKeyAndVisible();
    bool completed = false;
    nav_->showDICUrlCompletion(nullptr, url(QStringLiteral("a.txt")), [&] { completed = true; });
    ASSERT_TRUE(nav_->documentInteractionController());
    EXPECT_EQ(nav_->documentInteractionController()->URL(), url(QStringLiteral("a.txt")));
    EXPECT_TRUE(nav_->documentInteractionController()->optionsMenu());
    EXPECT_FALSE(completed) << "kept for later, never called by the sheet";
    EXPECT_TRUE(nav_->performActionCompletionBlock());

    // Share from the quick preview: the sheet of the file shown, kept by the preview's manager.
    nav_->documentInteractionController()->dismissMenuAnimated(false);
    write(QStringLiteral("report.pdf"));
    tap(QStringLiteral("report.pdf"));
    ASSERT_TRUE(previewOnTop());
    previewOnTop()->barButtonActionItem()->trigger();
    ASSERT_TRUE(nav_->itemManager()->documentInteractionController());
    EXPECT_EQ(nav_->itemManager()->documentInteractionController()->URL(),
              url(QStringLiteral("report.pdf")));
    EXPECT_TRUE(nav_->itemManager()->documentInteractionController()->optionsMenu());
    nav_->itemManager()->documentInteractionController()->dismissMenuAnimated(false);
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();

    // Details: the details screen, and the list's completion at once.
    completed = false;
    nav_->documentListControllerPerformActionURLOriginatingViewCompletion(
        top(), DocumentListController::Details, url(QStringLiteral("a.txt")), nullptr,
        [&] { completed = true; });
    dispatch_->runUntilIdle();
    EXPECT_TRUE(completed);
    ASSERT_TRUE(nav_->itemManager());
    EXPECT_EQ(nav_->topViewController(), nav_->itemManager()->detailsViewController());
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();

    // Unknown per-item codes answer the list at once.
    completed = false;
    nav_->documentListControllerPerformActionURLOriginatingViewCompletion(
        top(), 9, url(QStringLiteral("a.txt")), nullptr, [&] { completed = true; });
    EXPECT_TRUE(completed);
    EXPECT_EQ(log_.count(QStringLiteral("performAction:9 -- unexpected value")), 1);
}

TEST_F(NavControllerActivationTest, OnlyTheCurrentManagerPresentsItsItem) {
    // Something else (a download under way) may keep the old manager alive: it stops
    // presenting all the same, when replaced and when its preview is left.
    nav_->showPreviewPreviewMode(VLItem::initWithURL(url(QStringLiteral("a.txt"))), 1);
    dispatch_->runUntilIdle();
    const std::shared_ptr<PreviewItemManager> first = nav_->itemManager();
    ASSERT_TRUE(first && first->filePresenterRegistered());
    nav_->showPreviewPreviewMode(VLItem::initWithURL(url(QStringLiteral("b.txt"))), 1);
    dispatch_->runUntilIdle();
    const std::shared_ptr<PreviewItemManager> second = nav_->itemManager();
    EXPECT_FALSE(first->filePresenterRegistered());
    ASSERT_TRUE(second && second->filePresenterRegistered());

    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();
    EXPECT_FALSE(nav_->itemManager());
    EXPECT_FALSE(second->filePresenterRegistered());
}

TEST_F(NavControllerActivationTest, AURLFromOutsideGetsTheListsDownToItsFolder) {
    EXPECT_FALSE(nav_->showURLPreviewPreviewMode(Url::fromPath(dir_.path() + "/x.txt", false), 0));
    EXPECT_FALSE(nav_->showURLPreviewPreviewMode(Url(), 0));

    write(QStringLiteral("Work/Letters/note.pdf"));
    EXPECT_TRUE(nav_->showURLPreviewPreviewMode(url(QStringLiteral("Work/Letters/note.pdf")), 0));
    dispatch_->runUntilIdle();
    const auto stack = nav_->viewControllers();
    ASSERT_EQ(stack.size(), 4);
    EXPECT_EQ(std::dynamic_pointer_cast<DocumentListController>(stack[2])->presentedURL(),
              url(QStringLiteral("Work/Letters"), true));
    ASSERT_TRUE(previewOnTop());
    EXPECT_EQ(previewOnTop()->currentPreviewItem(), url(QStringLiteral("Work/Letters/note.pdf")));

    // A folder: its own list ends the stack, under the screen its item gets.
    EXPECT_TRUE(nav_->showURLPreviewPreviewMode(url(QStringLiteral("Work"), true), 0));
    dispatch_->runUntilIdle();
    ASSERT_EQ(nav_->viewControllers().size(), 3);
    EXPECT_EQ(std::dynamic_pointer_cast<DocumentListController>(nav_->viewControllers()[1])
                  ->presentedURL(),
              url(QStringLiteral("Work"), true));

    // An item that can't be read leaves the stack as it was, and still answers yes.
    EXPECT_TRUE(nav_->showURLPreviewPreviewMode(url(QStringLiteral("Work/none.txt")), 0));
    EXPECT_EQ(nav_->viewControllers().size(), 3);
}

}  // namespace
}  // namespace vl
