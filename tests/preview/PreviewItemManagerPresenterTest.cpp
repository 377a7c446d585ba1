#include "browser/BrowserFixture.h"

#include "model/VLItem.h"
#include "platform/cloud/FileCoordinator.h"
#include "preview/PreviewItemManager.h"

#include <algorithm>

namespace vl {
namespace {

// How the manager follows its item: its registration as the item's presenter and what the
// presenter hears, on a drive service over a temporary home.
class PreviewItemManagerPresenterTest : public test::BrowserFixture {
protected:
    std::shared_ptr<PreviewItemManager> managerFor(const QString& relative, int mode = 0) {
        auto manager = PreviewItemManager::create();
        manager->setMode(mode);
        manager->setNavigationController(nav_);
        manager->previewItem(VLItem::initWithURL(url(relative)));
        dispatch_->runUntilIdle();
        return manager;
    }
    static long registrations(const PreviewItemManager* manager) {
        const auto presenters = FileCoordinator::filePresenters();
        return std::count_if(presenters.begin(), presenters.end(), [&](const auto& presenter) {
            return presenter.get() == static_cast<const FilePresenter*>(manager);
        });
    }
};

TEST_F(PreviewItemManagerPresenterTest, PresentsTheShownItemOnceAndNothingAfterward) {
    const auto manager = managerFor(QStringLiteral("a.txt"));
    EXPECT_TRUE(manager->filePresenterRegistered());
    EXPECT_EQ(registrations(manager.get()), 1);
    EXPECT_EQ(manager->presentedItemURL(), url(QStringLiteral("a.txt")));
    ASSERT_TRUE(manager->presentedItemOperationQueue());
    EXPECT_EQ(manager->presentedItemOperationQueue(), manager->fcQueue());

    // The same item again, or registering by hand, keeps the one registration.
    manager->previewItem(VLItem::initWithURL(url(QStringLiteral("a.txt"))));
    manager->registerAsFilePresenter();
    EXPECT_EQ(registrations(manager.get()), 1);

    // Another item moves the registration along with it.
    manager->previewItem(VLItem::initWithURL(url(QStringLiteral("b.txt"))));
    EXPECT_EQ(registrations(manager.get()), 1);
    EXPECT_EQ(manager->presentedItemURL(), url(QStringLiteral("b.txt")));

    // No item: nothing presented, nothing registered.
    EXPECT_FALSE(manager->prepareToPreviewItem(nullptr));
    EXPECT_FALSE(manager->filePresenterRegistered());
    EXPECT_EQ(registrations(manager.get()), 0);
    EXPECT_FALSE(manager->presentedItemURL());

    manager->unregisterAsFilePresenter();
    EXPECT_FALSE(manager->filePresenterRegistered());
}

TEST_F(PreviewItemManagerPresenterTest, ADestroyedOrStoredOnlyManagerIsNoPresenter) {
    auto manager = managerFor(QStringLiteral("a.txt"), PreviewItemManager::PreviewModeDetails);
    ASSERT_EQ(registrations(manager.get()), 1);
    const PreviewItemManager* raw = manager.get();
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();
    manager.reset();
    EXPECT_EQ(registrations(raw), 0);

    // Storing an item without showing it does not register for it.
    const auto quiet = PreviewItemManager::create();
    quiet->setItemWithoutPreview(VLItem::initWithURL(url(QStringLiteral("b.txt"))));
    EXPECT_EQ(quiet->presentedItemURL(), url(QStringLiteral("b.txt")));
    EXPECT_FALSE(quiet->filePresenterRegistered());
}

}  // namespace
}  // namespace vl
