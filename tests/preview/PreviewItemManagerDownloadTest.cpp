#include "browser/BrowserFixture.h"

#include "drive/store/PlaceholderFile.h"
#include "model/VLItem.h"
#include "platform/app/NetworkActivityIndicator.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/files/ContentTypeRegistry.h"
#include "platform/text/Strings.h"
#include "preview/DownloadView.h"
#include "preview/GlimpseItemController.h"
#include "preview/PreviewDownloadViewController.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/AlertController.h"

#include <QPushButton>

namespace vl {
namespace {

// Downloading a cloud-only item: when it starts by itself, by hand on cellular, cancel, errors
// and the queue, through the drive service on a temporary home.
class PreviewItemManagerDownloadTest : public test::BrowserFixture {
protected:
    void TearDown() override {
        managers_.clear();
        dispatch_->runUntilIdle();
        BrowserFixture::TearDown();
    }
    // A cloud-only item whose content the cloud really has.
    Url cloudOnly(const QString& relative, const QByteArray& bytes = "far away") {
        const QString source = dir_.path() + QStringLiteral("/source-") + relative.section('/', -1);
        QFile file(source);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        EXPECT_FALSE(store_->importItem(source, relative, true));
        return url(relative);
    }
    // A cloud-only item known by its record alone: any size, no content to fetch.
    Url cloudOnlyOfSize(const QString& relative, quint64 size) {
        PlaceholderFile record;
        record.name = relative.section('/', -1);
        record.size = size;
        record.contentType =
            ContentTypeRegistry::shared().identifierForFileName(record.name, false);
        EXPECT_FALSE(
            store_->writePlaceholder(DriveStore::placeholderURLFor(url(relative)), record));
        return url(relative);
    }
    void setNetwork(NetworkWatcher::NetworkState state) {
        NetworkWatcher::sharedNetworkWatcher().updateState(state);
    }
    void setServiceNetwork(const QString& network) {
        ServiceSettings settings = store_->readServiceSettings();
        settings.network = network;
        ASSERT_FALSE(store_->writeServiceSettings(settings));
    }
    // A manager showing the item as a tap does, before any queued block has run.
    std::shared_ptr<PreviewItemManager> open(const Url& itemURL) {
        auto manager = PreviewItemManager::create();
        manager->setNavigationController(nav_);
        managers_.push_back(manager);
        manager->previewItem(VLItem::initWithURL(itemURL));
        return manager;
    }
    std::shared_ptr<PreviewDownloadViewController> screen() const {
        return std::dynamic_pointer_cast<PreviewDownloadViewController>(nav_->topViewController());
    }
    std::shared_ptr<AlertController> alert() const {
        const auto top = nav_->topViewController();
        return std::dynamic_pointer_cast<AlertController>(top ? top->presentedViewController()
                                                              : nullptr);
    }
    bool isLocal(const Url& itemURL) const { return QFileInfo::exists(itemURL.path()); }
    bool hasPlaceholder(const Url& itemURL) const {
        return QFileInfo::exists(DriveStore::placeholderURLFor(itemURL).path());
    }

    std::vector<std::shared_ptr<PreviewItemManager>> managers_;
};

TEST_F(PreviewItemManagerDownloadTest, OnlySmallPreviewableItemsOnWiFiDownloadByThemselves) {
    const auto manager = PreviewItemManager::create();
    const auto decide = [&](const Url& itemURL) {
        manager->setItemWithoutPreview(VLItem::initWithURL(itemURL));
        return manager->shouldAutoDownload();
    };
    const Url below = cloudOnlyOfSize(QStringLiteral("below.jpg"), 6'291'455);
    const Url limit = cloudOnlyOfSize(QStringLiteral("limit.jpg"), 6'291'456);
    const Url data = cloudOnlyOfSize(QStringLiteral("data.bin"), 10);

    setNetwork(NetworkWatcher::NetworkStateWiFi);
    EXPECT_TRUE(decide(below));
    EXPECT_FALSE(decide(limit));
    EXPECT_FALSE(decide(data)) << "the preview could not show it";
    EXPECT_EQ(log_.count(QStringLiteral("CanPreview=1 for ") + below.description()), 1);
    EXPECT_EQ(log_.count(QStringLiteral("CanPreview=0 for ") + data.description()), 1);
    EXPECT_FALSE(log_.messages()
                     .filter(QStringLiteral("CanPreview"))
                     .join('\n')
                     .contains(limit.description()))
        << "the size decides before the preview is asked";

    // An unknown size counts as nothing.
    const auto sizeless = VLItem::initWithURL(below);
    const ItemAttributes values = *CloudDocuments::shared().promisedItemResourceValues(
        below, ItemAttributeKey::LocalizedName | ItemAttributeKey::ContentType, nullptr);
    sizeless->clearValues();
    sizeless->initFromKeysAndValuesWithURL(values, below);
    ASSERT_FALSE(sizeless->fileSize());
    ASSERT_TRUE(sizeless->canPreview());
    manager->setItemWithoutPreview(sizeless);
    EXPECT_TRUE(manager->shouldAutoDownload());

    // Nowhere else, whatever the size.
    for (const auto state :
         {NetworkWatcher::NetworkStateCellular, NetworkWatcher::NetworkStateNotConnected,
          NetworkWatcher::NetworkStateUnknown}) {
        setNetwork(state);
        EXPECT_FALSE(decide(cloudOnlyOfSize(QStringLiteral("tiny.jpg"), 1)));
    }
}

TEST_F(PreviewItemManagerDownloadTest, ASmallItemOnWiFiDownloadsByItselfAndIsPreviewed) {
    setNetwork(NetworkWatcher::NetworkStateWiFi);
    const Url note = cloudOnly(QStringLiteral("note.txt"), QByteArray(300'000, 'n'));
    bool indicatorDuringRead = false;
    bool subscribedDuringRead = false;
    std::shared_ptr<PreviewItemManager> manager;
    const auto token = ItemProgress::addSubscriberForFileURL(
        note, [&](const std::shared_ptr<ItemProgress>&) -> ItemProgress::UnpublishingHandler {
            indicatorDuringRead =
                NetworkActivityIndicator::shared().isNetworkActivityIndicatorVisible();
            subscribedDuringRead = manager->downloadViewController()->isSubscribedToProgress();
            return {};
        });
    manager = open(note);
    ASSERT_TRUE(screen());
    EXPECT_TRUE(manager->autoDownload());
    EXPECT_TRUE(screen()->downloading());

    dispatch_->runUntilIdle();
    ItemProgress::removeSubscriber(token);
    EXPECT_TRUE(indicatorDuringRead);
    EXPECT_TRUE(subscribedDuringRead);
    EXPECT_FALSE(NetworkActivityIndicator::shared().isNetworkActivityIndicatorVisible());
    EXPECT_TRUE(isLocal(note));
    EXPECT_EQ(nav_->topViewController(), GlimpseItemController::defaultController());
    EXPECT_EQ(nav_->viewControllers().size(), 2) << "the preview took the screen's place";
    EXPECT_FALSE(manager->hasDownloadInProgress());
    EXPECT_EQ(log_.count(QStringLiteral("Dispatching download of ") + note.description()), 1);
    EXPECT_EQ(log_.count(QStringLiteral("Showing preview of URL ") + note.description()), 1);
}

TEST_F(PreviewItemManagerDownloadTest, ByHandOnCellularUpToOneHundredMebibytes) {
    setNetwork(NetworkWatcher::NetworkStateCellular);
    const auto over = open(cloudOnlyOfSize(QStringLiteral("over.avi"), 104'857'601));
    EXPECT_FALSE(over->autoDownload());
    screen()->downloadView()->downloadButton()->click();
    ASSERT_TRUE(alert());
    EXPECT_EQ(alert()->title(), QStringLiteral("This item is over 100 MB."));
    EXPECT_EQ(alert()->message(),
              QStringLiteral("“over.avi” will not download until you connect to Wi-Fi."));
    EXPECT_FALSE(screen()->downloadView()->downloading());
    EXPECT_EQ(log_.count(QStringLiteral("Dispatching download...")), 0);
    alert()->triggerAction(alert()->actions().first());
    dispatch_->runUntilIdle();

    // At the limit it starts; Cancel before the read began ends it all the same, quietly.
    const Url atURL = cloudOnlyOfSize(QStringLiteral("at.avi"), 104'857'600);
    const auto at = open(atURL);
    screen()->downloadView()->cloudButton()->click();
    EXPECT_FALSE(alert());
    EXPECT_TRUE(screen()->downloadView()->downloading());
    EXPECT_EQ(log_.count(QStringLiteral("Dispatching download...")), 1);
    screen()->downloadView()->cancelButton()->click();
    EXPECT_FALSE(screen()->downloadView()->downloading());
    dispatch_->runUntilIdle();
    EXPECT_EQ(log_.count(QStringLiteral("coordinateReadingItemAtURL was cancelled, URL ") +
                         atURL.description()),
              1);
    EXPECT_FALSE(alert());
    EXPECT_TRUE(hasPlaceholder(atURL));

    // Over Wi-Fi the size is not looked at.
    setNetwork(NetworkWatcher::NetworkStateWiFi);
    open(cloudOnlyOfSize(QStringLiteral("wifi.avi"), 104'857'601));
    screen()->downloadView()->downloadButton()->click();
    EXPECT_FALSE(alert());
    EXPECT_EQ(log_.count(QStringLiteral("Dispatching download...")), 2);
}

TEST_F(PreviewItemManagerDownloadTest, CancelWhileTheReadWaitsLeavesTheItemCloudOnly) {
    setNetwork(NetworkWatcher::NetworkStateCellular);
    const Url movie = cloudOnly(QStringLiteral("clip.avi"), QByteArray(64 * 1024, 'c'));
    const auto manager = open(movie);
    // The person presses Cancel as the content starts to arrive.
    const auto token = ItemProgress::addSubscriberForFileURL(
        movie, [&](const std::shared_ptr<ItemProgress>&) -> ItemProgress::UnpublishingHandler {
            EXPECT_TRUE(manager->hasDownloadInProgress());
            manager->cancelDownload();
            return {};
        });
    screen()->downloadView()->downloadButton()->click();
    dispatch_->runUntilIdle();
    ItemProgress::removeSubscriber(token);

    EXPECT_FALSE(isLocal(movie));
    EXPECT_TRUE(hasPlaceholder(movie));
    EXPECT_TRUE(store_->isCloudOnly(movie));
    EXPECT_FALSE(alert()) << "a cancelled download says nothing";
    EXPECT_EQ(nav_->topViewController(), screen());
    EXPECT_FALSE(screen()->downloadView()->downloading());
    EXPECT_FALSE(manager->hasDownloadInProgress());
    EXPECT_FALSE(NetworkActivityIndicator::shared().isNetworkActivityIndicatorVisible());
    const QStringList lines = log_.messages();
    EXPECT_TRUE(lines.contains(QStringLiteral("Evicted ") + movie.description()) ||
                lines.filter(QStringLiteral("Failed to evict ") + movie.description()).size() == 1);
    EXPECT_EQ(lines.filter(QStringLiteral("coordinateReadingItemAtURL failed")).size(), 0);

    // The screen's going cancels too: a download still queued never reaches the drive.
    setNetwork(NetworkWatcher::NetworkStateWiFi);
    const Url photo = cloudOnly(QStringLiteral("photo.jpg"));
    open(photo);
    ASSERT_TRUE(screen()->downloading());
    nav_->popViewControllerAnimated(false);
    dispatch_->runUntilIdle();
    EXPECT_FALSE(isLocal(photo));
    EXPECT_EQ(log_.count(QStringLiteral("coordinateReadingItemAtURL was cancelled, URL ") +
                         photo.description()),
              1);
}

TEST_F(PreviewItemManagerDownloadTest, AnUnavailableServerIsExplainedByTheConnection) {
    setServiceNetwork(ServiceSettings::NetworkNone);
    const Url note = cloudOnly(QStringLiteral("offline.txt"));

    // Still connected as far as the device knows: the error's own text.
    setNetwork(NetworkWatcher::NetworkStateWiFi);
    open(note);
    dispatch_->runUntilIdle();
    ASSERT_TRUE(alert());
    const Error unavailable(Error::FileErrorDomain, Error::CloudServerUnavailable,
                            {{Error::FilePathKey, note.path()}});
    EXPECT_EQ(alert()->message(), unavailable.localizedDescription());
    EXPECT_TRUE(alert()->title().isEmpty());
    ASSERT_EQ(alert()->actions().size(), 1);
    EXPECT_EQ(alert()->actions().first()->title(), Strings::localized("OK"));
    EXPECT_FALSE(screen()->downloadView()->downloading());
    EXPECT_EQ(log_.messages().filter(QStringLiteral("coordinateReadingItemAtURL failed")).size(),
              1);
    EXPECT_EQ(log_.messages().filter(QStringLiteral("Error downloading ")).size(), 1);
    alert()->triggerAction(alert()->actions().first());
    dispatch_->runUntilIdle();

    // Offline: what is really wrong.
    screen()->downloadView()->downloadButton()->click();
    setNetwork(NetworkWatcher::NetworkStateNotConnected);
    dispatch_->runUntilIdle();
    ASSERT_TRUE(alert());
    EXPECT_EQ(alert()->message(),
              Strings::localized(
                  "Unable to download file. You are no longer connected to the Internet."));
    EXPECT_TRUE(hasPlaceholder(note));
}

TEST_F(PreviewItemManagerDownloadTest, DownloadsRunOneAfterTheOther) {
    setNetwork(NetworkWatcher::NetworkStateCellular);
    const Url note = cloudOnly(QStringLiteral("queued.txt"));
    const auto manager = open(note);
    QList<std::optional<Error>> outcomes;
    const auto record = [&](const Url&, const Url&, const std::optional<Error>& error) {
        outcomes << error;
    };
    manager->startDownloading(record);
    manager->startDownloading(record);
    dispatch_->runUntilIdle();
    // The second read began only once the first had brought the content, and cancelling the
    // first's finished coordinator as it began changed nothing.
    ASSERT_EQ(outcomes.size(), 2);
    EXPECT_FALSE(outcomes[0]);
    EXPECT_FALSE(outcomes[1]);
    EXPECT_EQ(log_.count(QStringLiteral("Dispatching download of ") + note.description()), 1);
    EXPECT_EQ(log_.count(QStringLiteral("Dispatching download -- although file is already local")),
              1);
    EXPECT_FALSE(NetworkActivityIndicator::shared().isNetworkActivityIndicatorVisible());
}

}  // namespace
}  // namespace vl
