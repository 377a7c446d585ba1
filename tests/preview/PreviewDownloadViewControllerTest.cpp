#include "../model/DriveFixture.h"

#include "model/VLItem.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "preview/DownloadView.h"
#include "preview/PreviewDownloadViewController.h"
#include "preview/PreviewItemManager.h"
#include "preview/RoundProgressView.h"
#include "preview/ThumbnailImageView.h"
#include "toolkit/NavigationController.h"
#include "toolkit/ViewController.h"
#include "toolkit/Window.h"

#include <QApplication>
#include <QEventLoop>
#include <QLayout>
#include <QTimer>

#include <thread>

namespace vl::test {
namespace {

// The download screen of a cloud-only item, pushed onto a window's navigation stack.
class PreviewDownloadViewControllerTest : public DriveFixture {
protected:
    void TearDown() override {
        window.reset();
        screen.reset();
        manager.reset();
        dispatch->runUntilIdle();
        DriveFixture::TearDown();
    }
    void show(const Url& url, QSize size) {
        window = std::make_unique<Window>(QRect(QPoint(0, 0), size));
        nav = std::make_shared<NavigationController>(std::make_shared<ViewController>());
        window->setRootViewController(nav);
        window->show();
        manager = std::make_shared<PreviewItemManager>();
        manager->setNavigationController(nav);
        manager->setItemWithoutPreview(VLItem::initWithURL(url));
        screen = manager->createDownloadViewController();
        nav->pushViewController(screen, false);
        settle();
    }
    void settle() {
        QApplication::processEvents();
        dispatch->runUntilIdle();
        QApplication::processEvents();
    }
    DownloadView& column() const { return *screen->downloadView(); }
    QRect frameOf(QWidget* view) const {
        return QRect(view->mapTo(window.get(), QPoint(0, 0)), view->size());
    }

    VirtualDispatcher::Installation dispatch;
    std::unique_ptr<Window> window;
    std::shared_ptr<NavigationController> nav;
    std::shared_ptr<PreviewItemManager> manager;
    std::shared_ptr<PreviewDownloadViewController> screen;
};

TEST_F(PreviewDownloadViewControllerTest, IdleAndDownloadingShowTheirOwnButtonsAndTexts) {
    show(import("Harbour.jpg", QByteArray(300'000, 'h'), true), QSize(390, 844));
    EXPECT_EQ(column().filenameLabel()->text(), QStringLiteral("Harbour.jpg"));
    EXPECT_EQ(column().downloadButton()->text(), QStringLiteral("Download to View"));
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("300.0 kB"));
    EXPECT_TRUE(column().cloudButton()->isVisible());
    EXPECT_TRUE(column().downloadButton()->isVisible());
    EXPECT_FALSE(column().cancelButton()->isVisible());
    EXPECT_FALSE(column().roundProgressView()->isVisible());
    EXPECT_FALSE(column().cloudButton()->icon().isNull());
    EXPECT_FALSE(column().cloudButton()->accessibleName().isEmpty());

    screen->setDownloading(true);
    EXPECT_FALSE(column().cloudButton()->isVisible());
    EXPECT_FALSE(column().downloadButton()->isVisible());
    EXPECT_TRUE(column().cancelButton()->isVisible());
    EXPECT_EQ(column().cancelButton()->text(), QStringLiteral("Cancel Download"));
    EXPECT_TRUE(column().roundProgressView()->isVisible());
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("0 bytes of 300.0 kB"));

    // Progress of the whole item moves ring and text; a total of nothing moves neither.
    const auto progress = ItemProgress::create(300'000);
    progress->setCompletedUnitCount(150'000);
    column().updateProgress(*progress);
    EXPECT_EQ(column().roundProgressView()->progress(), 0.5f);
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("150.0 kB of 300.0 kB"));
    const auto unknown = ItemProgress::create(0);
    column().updateProgress(*unknown);
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("150.0 kB of 300.0 kB"));

    // Cancel goes back to idle with an empty ring; progress then is only noted.
    column().cancelButton()->click();
    EXPECT_FALSE(column().downloading());
    EXPECT_EQ(column().roundProgressView()->uiProgress(), 0);
    EXPECT_FALSE(column().roundProgressView()->isTimerRunning());
    column().updateProgress(*progress);
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("300.0 kB"));
    EXPECT_EQ(logged(4).count(QStringLiteral("Received progress when not downloading")), 1);
    EXPECT_EQ(logged(6).count(QStringLiteral("Pressed Cancel download...")), 1);
}

TEST_F(PreviewDownloadViewControllerTest, TitlesAndSizeTextsFollowTheItem) {
    show(import("Archive.bin", QByteArray(20, 'a'), true), QSize(390, 844));
    EXPECT_EQ(column().downloadButton()->text(), QStringLiteral("Download"))
        << "the preview could not show it";
    EXPECT_EQ(DownloadView::progressMsgWithBytesCompletedOfTotal(1'500'000, 12'300'000),
              QStringLiteral("1.5 MB of 12.3 MB"));

    DownloadView empty;
    EXPECT_EQ(empty.downloadButtonTitle(), QStringLiteral("Download to View"));
    EXPECT_EQ(empty.zeroProgressMsg(), QStringLiteral("Loading…"));
}

TEST_F(PreviewDownloadViewControllerTest, ProgressFromAnotherThreadReachesTheViewOnce) {
    show(import("Harbour.jpg", QByteArray(300'000, 'h'), true), QSize(390, 844));
    screen->setDownloading(true);
    settle();
    ASSERT_EQ(dispatch->pendingCount(), 0);
    const auto progress = ItemProgress::create(300'000);
    std::thread publisher([&] {
        for (qint64 done = 3'000; done <= 300'000; done += 3'000) {
            progress->setCompletedUnitCount(done);
            screen->updateProgress(*progress);
        }
    });
    publisher.join();
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("0 bytes of 300.0 kB"))
        << "views change on the main thread only";
    // A hundred reports, one delivery; the drive's watcher may have posted a block of its own.
    EXPECT_LT(dispatch->pendingCount(), 10) << "a hundred reports, one delivery";
    dispatch->runUntilIdle();
    EXPECT_EQ(column().sizeLabel()->text(), QStringLiteral("300.0 kB of 300.0 kB"));
    EXPECT_EQ(column().roundProgressView()->realProgress(), 1.0f);
}

TEST_F(PreviewDownloadViewControllerTest, LandscapePutsPictureAndColumnSideBySide) {
    show(import("Harbour.jpg", QByteArray(3'000, 'h'), true), QSize(390, 844));
    EXPECT_FALSE(screen->isSideBySide());
    const QRect picture = frameOf(screen->thumbnailView());
    const QRect stacked = frameOf(screen->downloadView());
    EXPECT_LE(picture.bottom(), stacked.top()) << "the picture above the column";

    window->resize(844, 390);
    settle();
    EXPECT_TRUE(screen->isSideBySide());
    const QRect left = frameOf(screen->thumbnailView());
    const QRect right = frameOf(screen->mainStackView()->layout()->itemAt(1)->widget());
    EXPECT_LE(left.right(), right.left());
    EXPECT_LE(std::abs(left.width() - right.width()), 1) << "equal halves";

    window->resize(390, 844);
    settle();
    EXPECT_FALSE(screen->isSideBySide());
}

// The same screen with the real queues: the read on the download thread, the ring and the size
// line on the main thread, as the app runs them.
class PreviewDownloadOnRealQueuesTest : public DriveFixture {};

TEST_F(PreviewDownloadOnRealQueuesTest, ProgressMovesTheRingUntilThePreviewTakesOver) {
    ServiceSettings settings = store_->readServiceSettings();
    settings.throttleBytesPerSecond = 4'000'000;
    ASSERT_FALSE(store_->writeServiceSettings(settings));
    const Url url = import("Harbour.txt", QByteArray(1'000'000, 'h'), true);
    Window window(QRect(0, 0, 390, 844));
    const auto nav = std::make_shared<NavigationController>(std::make_shared<ViewController>());
    window.setRootViewController(nav);
    window.show();
    const auto manager = PreviewItemManager::create();
    manager->setNavigationController(nav);
    manager->previewItem(VLItem::initWithURL(url));
    const auto screen = manager->downloadViewController();
    ASSERT_TRUE(screen);
    QApplication::processEvents();

    QStringList texts;
    float ring = 0;
    QEventLoop loop;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        if (nav->topViewController() != screen) {
            loop.quit();
            return;
        }
        const QString text = screen->downloadView()->sizeLabel()->text();
        if (texts.isEmpty() || texts.last() != text) {
            texts << text;
        }
        ring = std::max(ring, screen->downloadView()->roundProgressView()->uiProgress());
    });
    QTimer::singleShot(30'000, &loop, &QEventLoop::quit);
    watch.start(5);
    screen->downloadView()->downloadButton()->click();
    loop.exec();

    EXPECT_NE(nav->topViewController(), screen) << "the quick preview took the screen's place";
    EXPECT_TRUE(QFileInfo::exists(url.path()));
    EXPECT_GE(texts.filter(QStringLiteral(" of 1.0 MB")).size(), 3)
        << texts.join(" | ").toStdString();
    EXPECT_GT(ring, 0.2f);
    EXPECT_FALSE(manager->hasDownloadInProgress());
}

}  // namespace
}  // namespace vl::test
