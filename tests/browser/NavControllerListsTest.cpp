#include "BrowserFixture.h"

#include "browser/DocumentListControllerStatusBar.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentListSearch.h"
#include "toolkit/NavigationItem.h"

#include <QLabel>
#include <QListView>
#include <QToolButton>

namespace vl {
namespace {

class NavControllerListsTest : public test::BrowserFixture {
protected:
    QString statusText(const std::shared_ptr<DocumentListController>& list) const {
        const auto bar = DocumentListControllerStatusBar::statusBar(list);
        return bar && bar->statusLabel() ? bar->statusLabel()->text() : QStringLiteral("<none>");
    }
    QString title() const { return top()->navigationItem()->title(); }
    std::shared_ptr<BarButtonItem> rightButton() const {
        return top()->navigationItem()->rightBarButtonItem();
    }
    void tapRight() {
        rightButton()->trigger();
        dispatch_->runUntilIdle();
    }
};

TEST_F(NavControllerListsTest, EveryListIsConfiguredForBrowsingAndFoldersOpenAsNewLists) {
    const auto rootList = top();
    ASSERT_TRUE(rootList);
    EXPECT_EQ(rootList->availableActions(), 15u);
    EXPECT_EQ(rootList->delegate().get(), static_cast<DocumentListControllerDelegate*>(nav_.get()));
    EXPECT_EQ(rightButton()->title(), QStringLiteral("Select"));
    EXPECT_FALSE(rootList->navigationItem()->hidesBackButton());
    EXPECT_EQ(statusText(rootList), QStringLiteral("6 items, 40 bytes on this device"));
    EXPECT_EQ(rootList->toolbarItems(),
              DocumentListControllerStatusBar::statusBar(rootList)->toolbarItems());
    // Configured at the set-up and again once shown.
    EXPECT_EQ(log_.count(QStringLiteral("DLC title: Vellora Drive")), 2);
    EXPECT_EQ(log_.count(format("DLC URL: %@", root_)), 2);
    // The count is logged when it differs from the last one logged, in any list.
    const QString six = QStringLiteral("DLC items changed, count is 6");
    nav_->documentListControllerItemsChanged(rootList);
    const qsizetype logged = log_.count(six);
    nav_->documentListControllerItemsChanged(rootList);
    EXPECT_EQ(log_.count(six), logged);

    enter(QStringLiteral("Work"));
    ASSERT_EQ(nav_->viewControllers().size(), 2);
    EXPECT_EQ(title(), QStringLiteral("Work"));
    EXPECT_EQ(nav_->viewTitle(), QStringLiteral("Work"));
    EXPECT_EQ(top()->availableActions(), 15u);
    EXPECT_EQ(statusText(top()), QStringLiteral("2 items, 40 bytes on this device"));
    EXPECT_EQ(log_.count(QStringLiteral("DLC items changed, count is 2")), 1);

    // The same layout the status bar's toggle last chose, on every list.
    const auto bar = DocumentListControllerStatusBar::statusBar(top());
    bar->listModeToggle()->click();
    EXPECT_TRUE(top()->isGridMode());
    nav_->goBack();
    dispatch_->runUntilIdle();
    EXPECT_EQ(top(), rootList);
    EXPECT_TRUE(rootList->isGridMode());
    DocumentListControllerStatusBar::statusBar(rootList)->listModeToggle()->click();
    EXPECT_FALSE(rootList->isGridMode());
}

TEST_F(NavControllerListsTest, EditModeSelectsInTheTopListAndTitlesTheSelection) {
    enter(QStringLiteral("Work"));
    const auto work = top();
    const auto statusBar = DocumentListControllerStatusBar::statusBar(work);
    tapRight();
    EXPECT_TRUE(nav_->editMode());
    EXPECT_TRUE(work->isEditing());
    EXPECT_EQ(rightButton()->systemItem(), BarButtonItem::SystemItem::Cancel);
    EXPECT_TRUE(work->navigationItem()->hidesBackButton());
    EXPECT_EQ(title(), QStringLiteral("Select Items"));
    EXPECT_EQ(work->toolbarItems(),
              (QList<std::shared_ptr<BarButtonItem>>{
                  nav_->barButtonNewFolder(), work->toolbarItems().at(1), nav_->barButtonMoveItem(),
                  work->toolbarItems().at(1), nav_->barButtonDeleteItem()}));
    EXPECT_TRUE(nav_->barButtonNewFolder()->isEnabled());
    EXPECT_FALSE(nav_->barButtonMoveItem()->isEnabled());

    // Folders don't open while selecting; a tap selects.
    ASSERT_TRUE(work->tapItemAtURL(url(QStringLiteral("Work/Letters"), true)));
    dispatch_->runUntilIdle();
    EXPECT_EQ(nav_->viewControllers().size(), 2);
    EXPECT_EQ(title(), QStringLiteral("1 Item Selected"));
    EXPECT_TRUE(nav_->barButtonMoveItem()->isEnabled());
    EXPECT_TRUE(nav_->barButtonDeleteItem()->isEnabled());
    nav_->documentListControllerDidSelectContainerWithViewController(
        work, listOf(QStringLiteral("Work/Letters")));
    EXPECT_EQ(nav_->viewControllers().size(), 2);
    EXPECT_EQ(log_.count(QStringLiteral("DLC Navigation not allowed while in edit mode")), 1);

    // Deselecting the only item.
    work->tapItemAtURL(url(QStringLiteral("Work/Letters"), true));
    EXPECT_EQ(title(), QStringLiteral("Select Items"));
    EXPECT_FALSE(nav_->barButtonMoveItem()->isEnabled());
    EXPECT_FALSE(nav_->barButtonDeleteItem()->isEnabled());

    nav_->selectAllItems(nullptr);
    EXPECT_EQ(work->selectedItems(), work->containedItems());
    EXPECT_EQ(title(), QStringLiteral("2 Items Selected"));
    EXPECT_EQ(log_.count(QStringLiteral("Pressed SelectAll")), 1);

    tapRight();
    EXPECT_FALSE(nav_->editMode());
    EXPECT_FALSE(work->isEditing());
    EXPECT_TRUE(work->selectedItems().isEmpty());
    EXPECT_EQ(rightButton()->title(), QStringLiteral("Select"));
    EXPECT_FALSE(work->navigationItem()->hidesBackButton());
    EXPECT_EQ(title(), QStringLiteral("Work"));
    EXPECT_FALSE(nav_->barButtonMoveItem());
    // The same status bar comes back; it is not made again.
    EXPECT_EQ(DocumentListControllerStatusBar::statusBar(work), statusBar);
    EXPECT_EQ(work->toolbarItems(), statusBar->toolbarItems());
    EXPECT_EQ(log_.count(QStringLiteral("Begin Edit mode")), 1);
    EXPECT_GE(log_.messages().filter(QStringLiteral("EndEditMode.  Selected 2 items")).size(), 1);
}

TEST_F(NavControllerListsTest, NewFolderIsDecidedAtEntryInALibraryWithoutFolders) {
    enter(QStringLiteral("com~example~Notes"));
    ASSERT_EQ(title(), QStringLiteral("Notes"));
    tapRight();
    EXPECT_FALSE(nav_->barButtonNewFolder()->isEnabled());
    nav_->selectAllItems(nullptr);
    EXPECT_FALSE(nav_->barButtonNewFolder()->isEnabled());
    EXPECT_TRUE(nav_->barButtonMoveItem()->isEnabled()) << "files move in any container";
    EXPECT_GE(log_.count(QStringLiteral(
                  "Container com.example.Notes supports no folders. Disabling new folder button")),
              1);
}

TEST_F(NavControllerListsTest, ABackgroundListOnlyWakesTheStatusLine) {
    const auto rootList = top();
    enter(QStringLiteral("Work"));
    nav_->setPickerIsAlive(false);
    const auto bar = DocumentListControllerStatusBar::statusBar(top());
    bar->statusLabel()->setText(QStringLiteral("unchanged"));
    nav_->documentListControllerItemsChanged(rootList);
    EXPECT_TRUE(nav_->pickerIsAlive());
    EXPECT_EQ(bar->statusLabel()->text(), QStringLiteral("unchanged"));
    EXPECT_EQ(statusText(rootList), QStringLiteral("6 items, 40 bytes on this device"));

    // Until a list reported its items after a set-up, nothing is refreshed.
    nav_->setPickerIsAlive(false);
    nav_->updateStatusUI(nullptr);
    EXPECT_EQ(bar->statusLabel()->text(), QStringLiteral("unchanged"));
}

TEST_F(NavControllerListsTest, ReturningFromAScreenOnTopConfiguresTheListAgain) {
    const auto rootList = top();
    const auto before = rightButton();
    nav_->pushViewController(std::make_shared<ViewController>(), false);
    nav_->setToolbarHidden(true);
    dispatch_->runUntilIdle();
    EXPECT_FALSE(nav_->getTopDocumentListController());

    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();
    EXPECT_EQ(top(), rootList);
    EXPECT_FALSE(nav_->isToolbarHidden());
    EXPECT_NE(rightButton(), before);
    EXPECT_EQ(rightButton()->title(), QStringLiteral("Select"));
    EXPECT_EQ(nav_->viewTitle(), rootList->title());
}

TEST_F(NavControllerListsTest, TheStatusLineCountsAndAddsTheFreeSpaceOnceKnown) {
    // What is on this device is measured off the main thread, then shown.
    nav_->setBytesOnDevice(std::nullopt);
    EXPECT_EQ(nav_->toolbarStatusText(1), QStringLiteral("1 item"));
    EXPECT_EQ(nav_->toolbarStatusText(12), QStringLiteral("12 items"));
    write(QStringLiteral("Work/big.txt"));
    nav_->refreshBytesOnDevice();
    EXPECT_EQ(nav_->toolbarStatusText(12), QStringLiteral("12 items"));
    dispatch_->runUntilIdle();
    EXPECT_EQ(nav_->toolbarStatusText(12), QStringLiteral("12 items, 45 bytes on this device"));

    // The drive service answers the fetcher started with the browser once the device is online.
    ASSERT_TRUE(nav_->quotaFetcher());
    NetworkWatcher::sharedNetworkWatcher().updateState(NetworkWatcher::NetworkStateWiFi);
    dispatch_->advanceBy(std::chrono::seconds(301));
    dispatch_->runUntilIdle();
    ASSERT_TRUE(nav_->okToShowQuota());
    EXPECT_EQ(nav_->quotaBytes(), 3'650'722'202u);
    EXPECT_EQ(statusText(top()),
              QStringLiteral("6 items, 45 bytes on this device, 3.4 GB available"));
    nav_->setBytesOnDevice(std::nullopt);

    nav_->quotaFetcherDidUpdateValue(nav_->quotaFetcher(), 1024ull * 1024 * 1024);
    EXPECT_EQ(nav_->quotaAvailableString(), QStringLiteral("1.0 GB available"));
    nav_->setQuotaBytes(1'073'741'824ull * 1023);
    EXPECT_EQ(nav_->toolbarStatusText(1), QStringLiteral("1 item, 1,023.0 GB available"));
}

TEST_F(NavControllerListsTest, AFolderFoundBySearchOpensWithTheFoldersAboveIt) {
    const auto rootList = top();
    rootList->search()->setSearchText(QStringLiteral("Letters"));
    dispatch_->runUntilIdle();
    ASSERT_EQ(rootList->search()->resultURLs(),
              QList<Url>{url(QStringLiteral("Work/Letters"), true)});
    emit rootList->search()->resultsView()->clicked(
        rootList->search()->resultsView()->model()->index(0, 0));
    dispatch_->runUntilIdle();
    EXPECT_FALSE(rootList->isShowingSearchResults());
    ASSERT_EQ(nav_->viewControllers().size(), 3);
    EXPECT_EQ(top()->presentedURL(), url(QStringLiteral("Work/Letters"), true));
    EXPECT_EQ(std::dynamic_pointer_cast<DocumentListController>(nav_->viewControllers().at(1))
                  ->presentedURL(),
              url(QStringLiteral("Work"), true));
    EXPECT_EQ(title(), QStringLiteral("Letters"));
    EXPECT_EQ(top()->delegate().get(), static_cast<DocumentListControllerDelegate*>(nav_.get()));
}

}  // namespace
}  // namespace vl
