#include "browser/BrowserFixture.h"

#include "model/VLItem.h"
#include "platform/app/StateCoder.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewItemManager.h"

namespace vl {
namespace {

// The previewed item kept in the restoration archive, and a later start's root controller
// (another NavController on the same drive) taking it back.
class NavControllerRestorationTest : public test::BrowserFixture {
protected:
    StateCoder saved() {
        StateCoder coder;
        nav_->encodeRestorableStateWithCoder(coder);
        return coder;
    }
    std::shared_ptr<NavController> restartWith(const StateCoder& coder) {
        auto next = std::make_shared<NavController>();
        next->loadViewIfNeeded();
        dispatch_->runUntilIdle();
        next->decodeRestorableStateWithCoder(coder);
        dispatch_->runUntilIdle();
        return next;
    }
    static StateCoder archiveOf(const Url& url, qint64 mode) {
        StateCoder coder;
        coder.setUrl(NavController::RestorationURLKey, url);
        coder.setInteger(NavController::RestorationPreviewModeKey, mode);
        return coder;
    }
};

TEST_F(NavControllerRestorationTest, AnyModeButPreviewComesBackAsDetails) {
    // One too large for the manager's integer too (cut to 32 bits it would read 0, preview).
    const auto next = restartWith(archiveOf(url(QStringLiteral("a.txt")), 1LL << 32));
    ASSERT_TRUE(next->itemManager());
    EXPECT_EQ(next->itemManager()->item()->url(), url(QStringLiteral("a.txt")));
    EXPECT_NE(next->itemManager()->mode(), PreviewItemManager::PreviewModePreview);
    ASSERT_EQ(next->viewControllers().size(), 2);
    EXPECT_TRUE(std::dynamic_pointer_cast<PreviewDetailsViewController>(next->topViewController()));
}

TEST_F(NavControllerRestorationTest, AFolderListOnTopIsWhatTheNextStartShows) {
    EXPECT_TRUE(saved().isEmpty());
    nav_->showPreviewPreviewMode(VLItem::initWithURL(url(QStringLiteral("a.txt"))),
                                 PreviewItemManager::PreviewModeDetails);
    dispatch_->runUntilIdle();
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();
    EXPECT_TRUE(saved().isEmpty());
}

TEST_F(NavControllerRestorationTest, AFolderOrAFileDeletedSinceIsNotRestored) {
    for (const StateCoder& coder : {archiveOf(url(QStringLiteral("Work"), true), 1),
                                    archiveOf(url(QStringLiteral("Plan.pages"), true), 0),
                                    archiveOf(url(QStringLiteral("gone.txt")), 1), StateCoder()}) {
        const auto next = restartWith(coder);
        EXPECT_FALSE(next->itemManager());
        EXPECT_EQ(next->viewControllers().size(), 1);
    }

    // A file deleted after it was saved.
    nav_->showPreviewPreviewMode(VLItem::initWithURL(url(QStringLiteral("b.txt"))),
                                 PreviewItemManager::PreviewModeDetails);
    dispatch_->runUntilIdle();
    const StateCoder coder = saved();
    ASSERT_TRUE(QFile::remove(url(QStringLiteral("b.txt")).path()));
    const auto next = restartWith(coder);
    EXPECT_FALSE(next->itemManager());
    EXPECT_EQ(next->viewControllers().size(), 1);
}

}  // namespace
}  // namespace vl
