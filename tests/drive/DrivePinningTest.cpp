#include "StoreFixture.h"

#include "drive/service/DriveService.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/cloud/KeyValueStore.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

namespace vl {
namespace {

// A store whose imports make the folders they go into.
class PinningFixture : public StoreFixture {
protected:
    Url add(const QString& relative, const QByteArray& bytes, bool cloudOnly) {
        QDir().mkpath(drive(relative).section(QLatin1Char('/'), 0, -2));
        return import(relative, bytes, cloudOnly);
    }
};

// Items kept offline, on the store alone: the pin's record, space reclaiming and eviction.
class DrivePinningTest : public PinningFixture {};

TEST_F(DrivePinningTest, PinsFollowMovesAndUnpinningAFolderUnpinsWhatItHolds) {
    add(QStringLiteral("Trips/Rome.jpg"), "rome", false);
    const Url notes = add(QStringLiteral("Notes.txt"), "notes", true);
    const Url trips = store_->driveURL(QStringLiteral("Trips"), true);
    const Url rome = store_->driveURL(QStringLiteral("Trips/Rome.jpg"));

    ASSERT_FALSE(store_->setPinned(trips, true));
    ASSERT_FALSE(store_->setPinned(rome, true));
    // A cloud-only item can be pinned before it is downloaded, by either of its URLs.
    ASSERT_FALSE(store_->setPinned(DriveStore::placeholderURLFor(notes), true));
    EXPECT_TRUE(store_->isPinned(notes));
    EXPECT_EQ(store_->pinnedItems(),
              QStringList({QStringLiteral("Notes.txt"), QStringLiteral("Trips"),
                           QStringLiteral("Trips/Rome.jpg")}));
    EXPECT_EQ(store_->pinnedNamesInFolder(trips), QSet<QString>({QStringLiteral("Rome.jpg")}));
    EXPECT_TRUE(store_->setPinned(store_->driveURL(QStringLiteral("Nothing.txt")), true));

    const Url moved = store_->driveURL(QStringLiteral("Journeys"), true);
    ASSERT_FALSE(store_->movePromisedItem(trips, moved));
    EXPECT_FALSE(store_->isPinned(trips));
    EXPECT_TRUE(store_->isPinned(moved));
    EXPECT_TRUE(store_->isPinned(store_->driveURL(QStringLiteral("Journeys/Rome.jpg"))));

    ASSERT_FALSE(store_->setPinned(moved, false));
    EXPECT_EQ(store_->pinnedItems(), QStringList({QStringLiteral("Notes.txt")}));
    EXPECT_FALSE(store_->isKeptOffline(store_->driveURL(QStringLiteral("Journeys/Rome.jpg"))));
}

TEST_F(DrivePinningTest, ReclaimingSpaceAndEvictionPassOverWhatIsKeptOffline) {
    const Url kept = add(QStringLiteral("Kept.txt"), QByteArray(300, 'k'), false);
    const Url inside = add(QStringLiteral("Album/Photo.jpg"), QByteArray(200, 'p'), false);
    const Url loose = add(QStringLiteral("Loose.txt"), QByteArray(100, 'l'), false);
    const Url other = add(QStringLiteral("Other/Page.txt"), QByteArray(50, 'o'), false);
    ASSERT_FALSE(store_->setPinned(kept, true));
    ASSERT_FALSE(store_->setPinned(store_->driveURL(QStringLiteral("Album"), true), true));
    EXPECT_EQ(store_->localContentSize(), 650u);

    QList<Url> evicted;
    EXPECT_EQ(store_->reclaimSpace(0, &evicted), 150u);
    EXPECT_EQ(QSet<Url>(evicted.cbegin(), evicted.cend()), QSet<Url>({loose, other}));
    EXPECT_TRUE(store_->isCloudOnly(loose));
    EXPECT_TRUE(QFileInfo::exists(kept.path()));
    EXPECT_TRUE(QFileInfo::exists(inside.path()));
    EXPECT_EQ(store_->localContentSize(), 500u);
    EXPECT_EQ(store_->cloudOnlyItems(store_->driveRootURL()).size(), 2);

    const std::optional<Error> refused = store_->evict(inside);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code(), Error::FeatureUnsupported);
    // Evicting the whole drive leaves the pinned items in place.
    EXPECT_FALSE(store_->evict(store_->driveRootURL()));
    EXPECT_TRUE(QFileInfo::exists(kept.path()));
    EXPECT_TRUE(QFileInfo::exists(inside.path()));
}

TEST_F(DrivePinningTest, AnEditTheCloudHasNotHadStaysWhileTheNetworkIsOff) {
    const Url notes = add(QStringLiteral("Notes.txt"), "first", false);
    writeFile(notes.path(), "edited here");
    ServiceSettings settings;
    settings.network = ServiceSettings::NetworkNone;
    ASSERT_FALSE(store_->writeServiceSettings(settings));

    const std::optional<Error> refused = store_->evict(notes);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code(), Error::CloudServerUnavailable);
    EXPECT_EQ(readAll(notes.path()), "edited here");

    settings.network = ServiceSettings::NetworkWifi;
    ASSERT_FALSE(store_->writeServiceSettings(settings));
    EXPECT_FALSE(store_->evict(notes));
    EXPECT_EQ(readAll(cloud(QStringLiteral("Notes.txt"))), "edited here");
}

// The running service: its pins outlive it, and it downloads what arrives for them.
class DrivePinningServiceTest : public PinningFixture {
protected:
    void SetUp() override {
        PinningFixture::SetUp();
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store_->writeAccount(account));
    }
    void TearDown() override {
        if (service_) {
            service_->stopWatching();
        }
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }
    void startService() {
        if (service_) {
            service_->stopWatching();
        }
        service_ = DriveService::install(store_->home().rootPath());
    }
    static bool waitUntil(const std::function<bool()>& done) {
        QElapsedTimer timer;
        timer.start();
        while (!done()) {
            if (timer.elapsed() > 10000) {
                return false;
            }
            QThread::msleep(5);
        }
        return true;
    }

    std::shared_ptr<DriveService> service_;
};

TEST_F(DrivePinningServiceTest, PinsSurviveARestartOfTheService) {
    add(QStringLiteral("Work/Plan.txt"), "plan", false);
    startService();
    const Url work = store_->driveURL(QStringLiteral("Work"), true);
    ASSERT_FALSE(CloudDocuments::shared().setItemPinned(work, true));

    startService();
    EXPECT_TRUE(CloudDocuments::shared().isItemPinned(work));
    EXPECT_TRUE(CloudDocuments::shared().isItemKeptOffline(
        store_->driveURL(QStringLiteral("Work/Plan.txt"))));
    EXPECT_FALSE(
        CloudDocuments::shared().isItemPinned(store_->driveURL(QStringLiteral("Work/Plan.txt"))));
    const std::optional<Error> refused = CloudDocuments::shared().evictDriveItem(work);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code(), Error::FeatureUnsupported);
}

TEST_F(DrivePinningServiceTest, WhatAnotherDeviceAddsToAPinnedFolderIsDownloaded) {
    add(QStringLiteral("Work/Plan.txt"), "plan", false);
    add(QStringLiteral("Elsewhere/Old.txt"), "old", false);
    startService();
    ASSERT_FALSE(CloudDocuments::shared().setItemPinned(
        store_->driveURL(QStringLiteral("Work"), true), true));

    // Another device adds a file to each folder (a cloud-only import, as velloractl makes it).
    DriveStore other(store_->home());
    const QString source = sources_ + QStringLiteral("/new");
    writeFile(source, "from the phone");
    ASSERT_FALSE(other.importItem(source, QStringLiteral("Work/New.txt"), true));
    ASSERT_FALSE(other.importItem(source, QStringLiteral("Elsewhere/New.txt"), true));

    const QString kept = drive(QStringLiteral("Work/New.txt"));
    ASSERT_TRUE(waitUntil([&] { return QFileInfo::exists(kept); }));
    EXPECT_EQ(readAll(kept), "from the phone");
    EXPECT_TRUE(store_->isCloudOnly(store_->driveURL(QStringLiteral("Elsewhere/New.txt"))));
}

TEST_F(DrivePinningServiceTest, APinnedItemLeftCloudOnlyIsDownloadedWhenTheServiceStarts) {
    const Url notes = add(QStringLiteral("Notes.txt"), "notes", true);
    ASSERT_FALSE(store_->setPinned(notes, true));
    startService();
    ASSERT_TRUE(waitUntil([&] { return QFileInfo::exists(notes.path()); }));
    EXPECT_EQ(readAll(notes.path()), "notes");
    EXPECT_TRUE(store_->isPinned(notes));
}

}  // namespace
}  // namespace vl
