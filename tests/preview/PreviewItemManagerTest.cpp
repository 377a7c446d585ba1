#include "browser/BrowserFixture.h"

#include "model/VLItem.h"
#include "preview/GlimpseItemController.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewDownloadViewController.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/AlertController.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentListSearch.h"
#include "toolkit/DocumentTargetSelectionController.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/PopoverPresentationController.h"

namespace vl {
namespace {

// Which screen an item gets, how it reaches the stack, and Move and Delete from the quick
// preview, on a drive service over a temporary home.
class PreviewItemManagerTest : public test::BrowserFixture {
protected:
    std::shared_ptr<PreviewItemManager> managerFor(const QString& relative, int mode = 0) {
        auto manager = PreviewItemManager::create();
        manager->setMode(mode);
        manager->setNavigationController(nav_);
        manager->previewItem(VLItem::initWithURL(url(relative)));
        dispatch_->runUntilIdle();
        return manager;
    }
    std::shared_ptr<GlimpseItemController> glimpse() const {
        return GlimpseItemController::defaultController();
    }
    std::shared_ptr<AlertController> presentedSheet() const {
        std::shared_ptr<ViewController> presenter = nav_->topViewController();
        for (const auto& candidate :
             {nav_->topViewController(), std::static_pointer_cast<ViewController>(nav_)}) {
            if (auto sheet = std::dynamic_pointer_cast<AlertController>(
                    candidate->presentedViewController())) {
                return sheet;
            }
        }
        return nullptr;
    }
    void answerSheet(AlertAction::Style style) {
        const auto sheet = presentedSheet();
        ASSERT_TRUE(sheet);
        for (const auto& action : sheet->actions()) {
            if (action->style() == style) {
                sheet->triggerAction(action);
                break;
            }
        }
        dispatch_->runUntilIdle();
    }
};

TEST_F(PreviewItemManagerTest, ALocalDocumentGetsTheSharedQuickPreviewWhichFollowsTheLastManager) {
    const auto first = managerFor(QStringLiteral("a.txt"));
    ASSERT_EQ(nav_->viewControllers().size(), 2);
    EXPECT_EQ(nav_->topViewController(), glimpse());
    EXPECT_EQ(glimpse()->arrayOfDocuments(), QList<Url>{url(QStringLiteral("a.txt"))});
    EXPECT_EQ(glimpse()->currentPreviewItem(), url(QStringLiteral("a.txt")));
    const auto right = glimpse()->navigationItem()->rightBarButtonItems();
    EXPECT_TRUE(right.contains(glimpse()->barButtonDeleteItem()) &&
                right.contains(glimpse()->barButtonMoveItem()));

    // The next item replaces the preview in place, without growing the stack, and the buttons
    // now belong to the second manager.
    const auto second = managerFor(QStringLiteral("b.txt"));
    EXPECT_EQ(nav_->viewControllers().size(), 2);
    EXPECT_EQ(glimpse()->currentPreviewItem(), url(QStringLiteral("b.txt")));
    EXPECT_EQ(glimpse()->itemManager(), second);

    // A manager without an item offers no document.
    const auto empty = PreviewItemManager::create();
    glimpse()->glimpseNewItem(empty);
    EXPECT_EQ(glimpse()->numberOfPreviewItemsInPreviewController(*glimpse()), 0);
    EXPECT_TRUE(glimpse()->currentPreviewItem().isEmpty());
}

TEST_F(PreviewItemManagerTest, AnyOtherModeShowsTheDetailsInPlaceOfThePreview) {
    managerFor(QStringLiteral("a.txt"));
    ASSERT_EQ(nav_->topViewController(), glimpse());
    const auto details = managerFor(QStringLiteral("a.txt"), 2);
    ASSERT_TRUE(details->detailsViewController());
    EXPECT_EQ(nav_->topViewController(), details->detailsViewController());
    EXPECT_EQ(nav_->viewControllers().size(), 2) << "the preview is replaced in place";
    EXPECT_EQ(details->detailsViewController()->mode(), 2);
    EXPECT_EQ(details->detailsViewController()->itemManager(), details);

    // Only the manager's own screen is forgotten when it goes.
    details->viewControllerWillDisappear(glimpse());
    EXPECT_TRUE(details->detailsViewController());
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();
    EXPECT_FALSE(details->detailsViewController());
    EXPECT_EQ(nav_->viewControllers().size(), 1);
}

TEST_F(PreviewItemManagerTest, ACloudOnlyDocumentGetsTheDownloadScreenOrItsDetails) {
    // Nothing to preview without an item.
    auto manager = PreviewItemManager::create();
    manager->setNavigationController(nav_);
    EXPECT_FALSE(manager->prepareToPreviewItem(nullptr));
    EXPECT_EQ(log_.count(QStringLiteral("no preview URL, nothing to show")), 1);
    EXPECT_EQ(nav_->viewControllers().size(), 1);

    const QString source = dir_.path() + QStringLiteral("/remote.txt");
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("far away");
    file.close();
    ASSERT_FALSE(store_->importItem(source, QStringLiteral("remote.txt"), true));
    const auto item = VLItem::initWithURL(url(QStringLiteral("remote.txt")));
    ASSERT_TRUE(item);
    manager->previewItem(item);
    dispatch_->runUntilIdle();
    EXPECT_EQ(manager->item(), item);
    ASSERT_TRUE(manager->downloadViewController());
    EXPECT_EQ(nav_->topViewController(), manager->downloadViewController());
    EXPECT_EQ(manager->downloadViewController()->itemManager(), manager);
    EXPECT_FALSE(manager->autoDownload()) << "the network is not known to be Wi-Fi";

    // Its details replace the download screen in place.
    manager->setMode(PreviewItemManager::PreviewModeDetails);
    manager->previewItem(item);
    dispatch_->runUntilIdle();
    EXPECT_EQ(nav_->topViewController(), manager->detailsViewController());
    EXPECT_FALSE(manager->downloadViewController());
    EXPECT_EQ(nav_->viewControllers().size(), 2);
}

TEST_F(PreviewItemManagerTest, APreviewFromSearchResultsEndsTheSearchFirst) {
    const auto list = top();
    list->search()->setSearchText(QStringLiteral("memo"));
    dispatch_->runUntilIdle();
    ASSERT_TRUE(list->isShowingSearchResults());
    const auto manager = managerFor(QStringLiteral("Work/memo.txt"));
    EXPECT_FALSE(list->isShowingSearchResults());
    EXPECT_EQ(nav_->topViewController(), glimpse());
}

TEST_F(PreviewItemManagerTest, DeleteFromThePreviewAsksFirstAndPopsTheScreen) {
    const auto manager = managerFor(QStringLiteral("a.txt"));
    glimpse()->barButtonDeleteItem()->trigger();
    auto sheet = presentedSheet();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->popoverPresentationController()->barButtonItem(),
              glimpse()->barButtonDeleteItem());

    answerSheet(AlertAction::Style::Cancel);
    EXPECT_TRUE(QFileInfo::exists(url(QStringLiteral("a.txt")).path()));
    EXPECT_EQ(nav_->topViewController(), glimpse());

    glimpse()->barButtonDeleteItem()->trigger();
    answerSheet(AlertAction::Style::Destructive);
    EXPECT_FALSE(QFileInfo::exists(url(QStringLiteral("a.txt")).path()));
    EXPECT_EQ(nav_->viewControllers().size(), 1);
}

TEST_F(PreviewItemManagerTest, MoveFromThePreviewGoesThroughTheChooser) {
    const auto manager = managerFor(QStringLiteral("b.txt"));
    glimpse()->barButtonMoveItem()->trigger();
    dispatch_->runUntilIdle();
    const auto chooser = std::dynamic_pointer_cast<DocumentTargetSelectionController>(
        nav_->presentedViewController());
    ASSERT_TRUE(chooser);
    EXPECT_EQ(chooser->itemsToMove(), QList<Url>{url(QStringLiteral("b.txt"))});
    write(QStringLiteral("Work/b.txt"));

    manager->documentTargetSelectionControllerDidSelectItemAtURL(chooser,
                                                                 url(QStringLiteral("Work"), true));
    dispatch_->runUntilIdle();
    EXPECT_FALSE(nav_->presentedViewController());
    EXPECT_FALSE(QFileInfo::exists(url(QStringLiteral("b.txt")).path()));
    EXPECT_TRUE(QFileInfo::exists(url(QStringLiteral("Work/b 2.txt")).path()))
        << "never over the file already there";

    // A manager that is gone leaves the buttons without effect.
    const std::weak_ptr<PreviewItemManager> weak = manager;
    glimpse()->glimpseNewItem(PreviewItemManager::create());
    glimpse()->barButtonMoveItem()->trigger();
    dispatch_->runUntilIdle();
    EXPECT_FALSE(nav_->presentedViewController());
}

}  // namespace
}  // namespace vl
