#include "browser/BrowserFixture.h"

#include "drive/coordination/DriveCoordinationBackend.h"
#include "model/VLItem.h"
#include "platform/app/NotificationCenter.h"
#include "platform/cloud/FileCoordinator.h"
#include "preview/GlimpseItemController.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewDownloadViewController.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/PreviewContentView.h"
#include "toolkit/Window.h"

#include <QApplication>

#include <algorithm>

namespace vl {
namespace {

using namespace std::chrono_literals;

// How the manager follows its item: its registration as the item's presenter and what it does
// with what the drive tells it, on a drive service over a temporary home, in a shown window.
class PreviewItemManagerPresenterTest : public test::BrowserFixture {
protected:
    void SetUp() override {
        BrowserFixture::SetUp();
        window_ = std::make_unique<Window>(QRect(0, 0, 400, 700));
        window_->setRootViewController(nav_);
        window_->show();
        settle();
    }
    void TearDown() override {
        window_.reset();
        BrowserFixture::TearDown();
    }
    void settle() {
        dispatch_->runUntilIdle();
        QApplication::processEvents();
        dispatch_->runUntilIdle();
    }
    std::shared_ptr<PreviewItemManager> managerFor(const QString& relative, int mode = 0) {
        auto manager = PreviewItemManager::create();
        manager->setMode(mode);
        manager->setNavigationController(nav_);
        manager->previewItem(VLItem::initWithURL(url(relative)));
        settle();
        return manager;
    }
    static long registrations(const PreviewItemManager* manager) {
        const auto presenters = FileCoordinator::filePresenters();
        return std::count_if(presenters.begin(), presenters.end(), [&](const auto& presenter) {
            return presenter.get() == static_cast<const FilePresenter*>(manager);
        });
    }
    // What the drive's watcher saw of changes made behind its back has reached the presenters'
    // queues, and those have run.
    void deliverOutsideChanges() {
        dynamic_cast<DriveCoordinationBackend&>(FileCoordinator::Backend::shared())
            .watcher()
            .waitUntilDelivered();
        settle();
    }
    void setModified(const QString& relative, const QDateTime& when) {
        QFile file(url(relative).path());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(when, QFileDevice::FileModificationTime));
    }
    static std::shared_ptr<GlimpseItemController> glimpse() {
        return GlimpseItemController::defaultController();
    }
    // A document whose content is only in the cloud.
    Url cloudOnly(const QString& name) {
        const QString source = dir_.path() + QLatin1Char('/') + name;
        QFile file(source);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("far away");
        file.close();
        EXPECT_FALSE(store_->importItem(source, name, true));
        return url(name);
    }
    // Another reader of the drive downloads the item, as the cloud service does by itself.
    void downloadByOthers(const Url& item) {
        std::optional<Error> error;
        FileCoordinator reader;
        reader.coordinateReadingItemAtURL(item, {}, &error, [](const Url&) {});
        ASSERT_FALSE(error) << error->localizedDescription().toStdString();
        settle();
    }
    qsizetype refreshes() const { return log_.count(QStringLiteral("Refreshing ") + aURL()); }
    QString aURL() const { return url(QStringLiteral("a.txt")).description(); }

    std::unique_ptr<Window> window_;
};

TEST_F(PreviewItemManagerPresenterTest, PresentsTheShownItemOnceAndNothingAfterward) {
    auto manager = managerFor(QStringLiteral("a.txt"));
    EXPECT_EQ(manager->presentedItemURL(), url(QStringLiteral("a.txt")));
    // The same item again keeps the one registration; another item takes it along.
    manager->previewItem(VLItem::initWithURL(url(QStringLiteral("a.txt"))));
    EXPECT_EQ(registrations(manager.get()), 1);
    manager->previewItem(VLItem::initWithURL(url(QStringLiteral("b.txt"))));
    EXPECT_EQ(registrations(manager.get()), 1);
    EXPECT_EQ(manager->presentedItemURL(), url(QStringLiteral("b.txt")));

    // No item: nothing presented, nothing registered.
    EXPECT_FALSE(manager->prepareToPreviewItem(nullptr));
    EXPECT_FALSE(manager->filePresenterRegistered());
    EXPECT_FALSE(manager->presentedItemURL());

    // A manager that goes unregisters.
    manager->registerAsFilePresenter();
    const PreviewItemManager* raw = manager.get();
    nav_->popViewControllerAnimated(false);
    settle();
    manager.reset();
    EXPECT_EQ(registrations(raw), 0);
}

TEST_F(PreviewItemManagerPresenterTest, TheBackgroundStopsPresentingAndTheForegroundResumes) {
    auto manager = managerFor(QStringLiteral("a.txt"));
    NotificationCenter::defaultCenter().post(Notifications::ApplicationWillResignActive);
    settle();
    EXPECT_FALSE(manager->filePresenterRegistered());
    EXPECT_EQ(log_.count(QStringLiteral("Resigning active for ") + aURL()), 1);

    // Nothing is heard meanwhile.
    setModified(QStringLiteral("a.txt"), QDateTime::currentDateTime().addSecs(60));
    deliverOutsideChanges();
    EXPECT_FALSE(manager->refreshPending());

    NotificationCenter::defaultCenter().post(Notifications::ApplicationDidBecomeActive);
    settle();
    EXPECT_TRUE(manager->filePresenterRegistered());
    EXPECT_EQ(log_.count(QStringLiteral("Becoming active for ") + aURL()), 1);
    // What changed meanwhile is looked at once more.
    dispatch_->advanceBy(1s);
    EXPECT_EQ(refreshes(), 1);

    // A manager that is gone hears nothing of the app.
    manager.reset();
    NotificationCenter::defaultCenter().post(Notifications::ApplicationDidBecomeActive);
    settle();
    EXPECT_EQ(log_.count(QStringLiteral("Becoming active for ") + aURL()), 1);
}

TEST_F(PreviewItemManagerPresenterTest, ABurstOfChangesMakesOneRefreshASecondAfterItsFirst) {
    const auto manager = managerFor(QStringLiteral("a.txt"));
    for (int i = 0; i < 3; ++i) {
        manager->presentedItemDidChange();
        dispatch_->advanceBy(200ms);
    }
    EXPECT_TRUE(manager->refreshPending());
    dispatch_->advanceBy(399ms);
    EXPECT_EQ(refreshes(), 0);
    dispatch_->advanceBy(1ms);
    EXPECT_EQ(refreshes(), 1);
    EXPECT_FALSE(manager->refreshPending());
    dispatch_->advanceBy(5s);
    EXPECT_EQ(refreshes(), 1);

    manager->presentedItemDidChange();
    dispatch_->advanceBy(1s);
    EXPECT_EQ(refreshes(), 2);
    EXPECT_EQ(log_.count(aURL() + QStringLiteral(" changed")), 4);
}

TEST_F(PreviewItemManagerPresenterTest, OnlyALaterDateRefreshesTheQuickPreview) {
    const QDateTime start = QDateTime::currentDateTime().addSecs(-3600);
    setModified(QStringLiteral("a.txt"), start);
    const auto manager = managerFor(QStringLiteral("a.txt"));
    ASSERT_TRUE(glimpse()->isVisible());
    int shown = 0;
    const QMetaObject::Connection counting = QObject::connect(
        glimpse().get(), &PreviewController::currentContentViewChanged, [&] { ++shown; });

    // An edit made elsewhere arrives through the drive's watcher.
    QFile file(url(QStringLiteral("a.txt")).path());
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write(" again");
    file.close();
    setModified(QStringLiteral("a.txt"), start.addSecs(10));
    deliverOutsideChanges();
    EXPECT_TRUE(manager->refreshPending());
    dispatch_->advanceBy(1s);
    settle();
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(manager->modifiedDate(), start.addSecs(10));

    setModified(QStringLiteral("a.txt"), start);
    manager->refreshItem(url(QStringLiteral("a.txt")));
    manager->refreshItem(url(QStringLiteral("a.txt")));
    EXPECT_EQ(shown, 1) << "an older or the same date";
    QObject::disconnect(counting);
    EXPECT_EQ(nav_->topViewController(), glimpse());

    // An item that can't be read changes nothing.
    manager->refreshItem(url(QStringLiteral("gone.txt")));
    EXPECT_EQ(manager->item()->url(), url(QStringLiteral("a.txt")));
}

TEST_F(PreviewItemManagerPresenterTest, ADocumentDownloadedByOthersReplacesItsDownloadScreen) {
    const Url remote = cloudOnly(QStringLiteral("remote.txt"));
    const auto manager = PreviewItemManager::create();
    manager->setNavigationController(nav_);
    manager->previewItem(VLItem::initWithURL(remote));
    settle();
    ASSERT_FALSE(manager->item()->isDownloaded());
    ASSERT_TRUE(manager->filePresenterRegistered());
    ASSERT_TRUE(
        std::dynamic_pointer_cast<PreviewDownloadViewController>(nav_->topViewController()));
    const qsizetype before = nav_->viewControllers().size();

    downloadByOthers(remote);
    ASSERT_TRUE(manager->refreshPending());
    dispatch_->advanceBy(1s);
    settle();
    EXPECT_TRUE(manager->item()->isDownloaded());
    EXPECT_EQ(nav_->topViewController(), glimpse());
    EXPECT_EQ(nav_->viewControllers().size(), before) << "in place of the download screen";
    EXPECT_EQ(glimpse()->currentPreviewItem(), remote);
}

TEST_F(PreviewItemManagerPresenterTest, DetailsOnScreenStayWhenTheirDocumentIsDownloadedByOthers) {
    const Url remote = cloudOnly(QStringLiteral("remote.txt"));
    const auto manager = managerFor(QStringLiteral("remote.txt"), 1);
    const auto details = manager->detailsViewController();
    ASSERT_TRUE(details);
    ASSERT_EQ(nav_->topViewController(), details);

    downloadByOthers(remote);
    dispatch_->advanceBy(1s);
    settle();
    EXPECT_TRUE(manager->item()->isDownloaded());
    EXPECT_EQ(nav_->topViewController(), details);
    EXPECT_EQ(manager->detailsViewController(), details);
    EXPECT_EQ(nav_->viewControllers().size(), 2);
}

TEST_F(PreviewItemManagerPresenterTest, ARenameElsewhereIsFollowed) {
    const auto manager = managerFor(QStringLiteral("a.txt"));
    ASSERT_TRUE(QFile::rename(url(QStringLiteral("a.txt")).path(),
                              url(QStringLiteral("Renamed.txt")).path()));
    deliverOutsideChanges();
    ASSERT_EQ(manager->item()->url(), url(QStringLiteral("Renamed.txt")));
    EXPECT_EQ(manager->presentedItemURL(), url(QStringLiteral("Renamed.txt")));
    EXPECT_EQ(glimpse()->currentPreviewItem(), url(QStringLiteral("Renamed.txt")));
    EXPECT_EQ(glimpse()->title(), QStringLiteral("Renamed.txt"));
    glimpse()->barButtonActionItem()->trigger();
    settle();
    ASSERT_TRUE(manager->documentInteractionController());
    EXPECT_EQ(manager->documentInteractionController()->URL(), url(QStringLiteral("Renamed.txt")));
    manager->documentInteractionController()->dismissMenuAnimated(false);

    // Later changes are heard at the new place.
    setModified(QStringLiteral("Renamed.txt"), QDateTime::currentDateTime().addSecs(60));
    deliverOutsideChanges();
    EXPECT_TRUE(manager->refreshPending());

    // What the drive tells before the main queue has caught up with a move is about the new
    // place; an item that can't be read there is not taken.
    manager->presentedItemDidMoveToURL(url(QStringLiteral("Elsewhere.txt")));
    EXPECT_EQ(manager->presentedItemURL(), url(QStringLiteral("Elsewhere.txt")));
    settle();
    EXPECT_EQ(manager->item()->url(), url(QStringLiteral("Renamed.txt")));
}

TEST_F(PreviewItemManagerPresenterTest, ADeletionElsewhereLeavesThePreview) {
    const auto manager = managerFor(QStringLiteral("a.txt"));
    ASSERT_EQ(nav_->viewControllers().size(), 2);
    ASSERT_TRUE(QFile::remove(url(QStringLiteral("a.txt")).path()));
    deliverOutsideChanges();
    EXPECT_EQ(nav_->viewControllers().size(), 1);
    EXPECT_FALSE(manager->filePresenterRegistered());
    EXPECT_EQ(log_.count(aURL() + QStringLiteral(" accommodate deletion")), 1);

    // With a list on top already, nothing more is popped.
    const auto other = managerFor(QStringLiteral("b.txt"));
    nav_->popViewControllerAnimated(false);
    settle();
    other->accommodatePresentedItemDeletionWithCompletionHandler([](auto) {});
    settle();
    EXPECT_EQ(nav_->viewControllers().size(), 1);
}

TEST_F(PreviewItemManagerPresenterTest, ADeletionInsideAPackageRefreshesItsPreview) {
    const auto manager = managerFor(QStringLiteral("Plan.pages"));
    ASSERT_TRUE(manager->filePresenterRegistered());
    std::optional<Error> answer = Error(QStringLiteral("unanswered"), 1);
    manager->accommodatePresentedSubitemDeletionAtURLCompletionHandler(
        url(QStringLiteral("Plan.pages/index.xml")), [&](std::optional<Error> e) { answer = e; });
    EXPECT_FALSE(answer);
    EXPECT_FALSE(manager->filePresenterRegistered());
    const QString refreshing = QStringLiteral("Refreshing ") + manager->item()->url().description();
    dispatch_->advanceBy(999ms);
    EXPECT_EQ(log_.count(refreshing), 0);
    dispatch_->advanceBy(1ms);
    EXPECT_EQ(log_.count(refreshing), 1);
}

}  // namespace
}  // namespace vl
