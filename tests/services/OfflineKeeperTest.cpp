#include "drive/service/DriveService.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/cloud/KeyValueStore.h"
#include "services/OfflineKeeper.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <atomic>

namespace vl {
namespace {

// Keep Offline on the real dispatcher, over a drive service whose downloads are throttled so that
// a folder's items come down slowly enough to be cancelled.
class OfflineKeeperTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        const QString home = dir.path() + QStringLiteral("/home");
        store = std::make_unique<DriveStore>(DriveHome(home));
        ASSERT_FALSE(store->prepare());
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store->writeAccount(account));
        const QString source = dir.path() + QStringLiteral("/source");
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(64 * 1024, 'x'));
        file.close();
        ASSERT_TRUE(QDir().mkpath(store->home().drivePathFor(QStringLiteral("Album/Deeper"))));
        for (const char* name : {"Album/One.jpg", "Album/Two.jpg", "Album/Deeper/Three.jpg"}) {
            ASSERT_FALSE(store->importItem(source, QString::fromUtf8(name), true));
        }
        ASSERT_FALSE(store->importItem(source, QStringLiteral("Album/Here.jpg"), false));
        album = store->driveURL(QStringLiteral("Album"), true);
        service = DriveService::install(home);
    }
    void TearDown() override {
        service->stopWatching();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }
    void throttle(quint64 bytesPerSecond) {
        ServiceSettings settings;
        settings.throttleBytesPerSecond = bytesPerSecond;
        ASSERT_FALSE(store->writeServiceSettings(settings));
    }
    static bool waitFor(const std::function<bool()>& done) {
        for (QDeadlineTimer deadline(20000); !done();) {
            if (deadline.hasExpired()) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return true;
    }
    int cloudOnlyCount() { return int(store->cloudOnlyItems(album).size()); }

    QTemporaryDir dir;
    std::unique_ptr<DriveStore> store;
    std::shared_ptr<DriveService> service;
    Url album;
    std::shared_ptr<OfflineKeeper> keeper = OfflineKeeper::create();
};

TEST_F(OfflineKeeperTest, AFolderComesDownWholeWithOneProgressForIt) {
    ASSERT_EQ(cloudOnlyCount(), 3);
    std::atomic<double> lastFraction{0};
    std::atomic<int> published{0};
    const auto token = ItemProgress::addSubscriberForFileURL(
        album,
        [&](const std::shared_ptr<ItemProgress>& progress) -> ItemProgress::UnpublishingHandler {
            if (progress->fileURL() != album) {
                return {};
            }
            ++published;
            const auto id = progress->addFractionCompletedObserver(
                [&](ItemProgress& p) { lastFraction = p.fractionCompleted(); });
            return [progress, id] { progress->removeFractionCompletedObserver(id); };
        });
    bool finished = false;
    keeper->keepOffline(album, [&](const Url& url, const QList<Error>& errors, bool cancelled) {
        EXPECT_EQ(url, album);
        EXPECT_TRUE(errors.isEmpty());
        EXPECT_FALSE(cancelled);
        finished = true;
    });
    EXPECT_TRUE(keeper->isKeepingOffline(album));
    ASSERT_TRUE(waitFor([&] { return finished; }));
    ItemProgress::removeSubscriber(token);
    EXPECT_FALSE(keeper->isKeepingOffline(album));
    EXPECT_EQ(cloudOnlyCount(), 0);
    EXPECT_TRUE(CloudDocuments::shared().isItemPinned(album));
    // The drive service keeps pinned content down too and can hear of the new pin first: it may
    // then have fetched everything before the keeper looks, and there is no progress to show.
    EXPECT_LE(published.load(), 1);
    if (published.load() == 1) {
        EXPECT_DOUBLE_EQ(lastFraction.load(), 1.0);
    }

    bool removed = false;
    keeper->removeDownload(album, [&](const Url&, std::optional<Error> error) {
        EXPECT_FALSE(error);
        removed = true;
    });
    ASSERT_TRUE(waitFor([&] { return removed; }));
    EXPECT_FALSE(CloudDocuments::shared().isItemKeptOffline(album));
    EXPECT_EQ(cloudOnlyCount(), 4) << "the item that was here before goes too";
}

TEST_F(OfflineKeeperTest, CancellingStopsBetweenAndWithinItemsAndLeavesNoPartialFile) {
    throttle(16 * 1024);  // four seconds an item
    std::atomic<bool> started{false};
    const auto token = ItemProgress::addSubscriberForFileURL(
        album,
        [&](const std::shared_ptr<ItemProgress>& progress) -> ItemProgress::UnpublishingHandler {
            if (progress->fileURL() != album) {
                started = true;
            }
            return {};
        });
    bool finished = false;
    bool wasCancelled = false;
    keeper->keepOffline(album, [&](const Url&, const QList<Error>& errors, bool cancelled) {
        EXPECT_TRUE(errors.isEmpty()) << "a cancelled read is no failure";
        wasCancelled = cancelled;
        finished = true;
    });
    ASSERT_TRUE(waitFor([&] { return started.load(); })) << "the first item's download began";
    keeper->cancel(album);
    ASSERT_TRUE(waitFor([&] { return finished; }));
    ItemProgress::removeSubscriber(token);
    EXPECT_TRUE(wasCancelled);
    EXPECT_EQ(cloudOnlyCount(), 3);
    EXPECT_TRUE(CloudDocuments::shared().isItemPinned(album)) << "cancel alone keeps the pin";
    const QStringList names = QDir(album.path()).entryList(QDir::Files | QDir::Hidden);
    EXPECT_EQ(names.filter(QStringLiteral(".vlcloud")).size(), 2) << names.join(',').toStdString();
    EXPECT_EQ(names.size(), 3) << names.join(',').toStdString();

    // Remove Download while a keep-offline runs: it ends, unpinned and all in the cloud.
    finished = false;
    keeper->keepOffline(album, [&](const Url&, const QList<Error>&, bool cancelled) {
        wasCancelled = cancelled;
        finished = true;
    });
    bool removed = false;
    keeper->removeDownload(album, [&](const Url&, std::optional<Error> error) {
        EXPECT_FALSE(error);
        removed = true;
    });
    ASSERT_TRUE(waitFor([&] { return finished && removed; }));
    EXPECT_TRUE(wasCancelled);
    EXPECT_FALSE(CloudDocuments::shared().isItemPinned(album));
    EXPECT_EQ(cloudOnlyCount(), 4);
}

}  // namespace
}  // namespace vl
