#include "CoordinationFixture.h"

#include "drive/coordination/PathLockTable.h"
#include "drive/integrity/HomeLock.h"
#include "drive/service/CloudDocumentsService.h"
#include "platform/cloud/ItemProgress.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace vl::test {
namespace {

using namespace std::chrono_literals;

// Races between the drive's own changes and the cloud side's, each held open long enough to
// overlap for certain.
class DriveRaceTest : public CoordinationFixture {
protected:
    QString cloudPath(const QString& relative) const { return store_->cloudPathFor(relative); }

    PathLockTable& locks() { return backend_->locks(); }

    // True once some but not all of the item's bytes have arrived.
    static bool waitForCopyUnderWay(const Url& url) {
        std::mutex mutex;
        std::condition_variable changed;
        bool underWay = false;
        const auto token = ItemProgress::addSubscriberForFileURL(
            url,
            [&](const std::shared_ptr<ItemProgress>& progress)
                -> ItemProgress::UnpublishingHandler {
                const auto id = progress->addFractionCompletedObserver([&](ItemProgress& p) {
                    if (p.completedUnitCount() > 0 && p.completedUnitCount() < p.totalUnitCount()) {
                        std::lock_guard lock(mutex);
                        underWay = true;
                        changed.notify_all();
                    }
                });
                return [weak = std::weak_ptr<ItemProgress>(progress), id] {
                    if (const auto p = weak.lock()) {
                        p->removeFractionCompletedObserver(id);
                    }
                };
            });
        bool result = false;
        {
            std::unique_lock lock(mutex);
            result = changed.wait_for(lock, 10s, [&] { return underWay; });
        }
        ItemProgress::removeSubscriber(token);
        return result;
    }

    void throttle(quint64 bytesPerSecond) {
        ServiceSettings settings;
        settings.throttleBytesPerSecond = bytesPerSecond;
        ASSERT_FALSE(store_->writeServiceSettings(settings));
    }
};

TEST_F(DriveRaceTest, EvictionFromTheAppWaitsForACoordinatedSaveUnderWay) {
    importBytes(QStringLiteral("Essay.txt"), "old", false);
    const Url url = driveURL(QStringLiteral("Essay.txt"));
    std::atomic<bool> halfWritten{false};
    std::thread saver([&] {
        FileCoordinator coordinator;
        std::optional<Error> error;
        coordinator.coordinateWritingItemAtURL(url, FileCoordinator::WritingOption::ForReplacing,
                                               &error, [&](const Url& newURL) {
                                                   QFile file(newURL.path());
                                                   ASSERT_TRUE(file.open(QIODevice::WriteOnly));
                                                   file.write("first half, ");
                                                   file.flush();
                                                   halfWritten = true;
                                                   // The eviction is waiting for this save.
                                                   EXPECT_TRUE(locks().waitUntilBlocked(1, 10s));
                                                   file.write("second half");
                                               });
        EXPECT_FALSE(error);
    });
    while (!halfWritten) {
        std::this_thread::sleep_for(1ms);
    }
    CloudDocumentsService documents(store_);
    EXPECT_FALSE(documents.evictDriveItem(url));
    saver.join();
    EXPECT_TRUE(store_->isCloudOnly(url));
    EXPECT_EQ(readFile(cloudPath(QStringLiteral("Essay.txt"))), "first half, second half");
}

TEST_F(DriveRaceTest, ADownloadOverlappingARemoteChangeInstallsOneWholeVersion) {
    const QByteArray before = pattern(3 * 1024 * 1024, 'a');
    const QByteArray after = pattern(3 * 1024 * 1024, 'z');
    for (const bool inPlace : {true, false}) {
        const QString name =
            inPlace ? QStringLiteral("InPlace.bin") : QStringLiteral("Renamed.bin");
        importBytes(name, before, true);
        throttle(6 * 1024 * 1024);
        const Url url = driveURL(name);
        std::optional<Error> error;
        std::thread reader([&] {
            FileCoordinator coordinator;
            coordinator.coordinateReadingItemAtURL(url, {}, &error, [](const Url&) {});
        });
        ASSERT_TRUE(waitForCopyUnderWay(url));
        // Another device's change lands while the copy is half way.
        const QString cloud = cloudPath(name);
        if (inPlace) {
            QFile file(cloud);
            ASSERT_TRUE(file.open(QIODevice::ReadWrite));
            ASSERT_EQ(file.write(after), after.size());
        } else {
            ASSERT_TRUE(writeFile(cloud + QStringLiteral(".new"), after));
            ASSERT_EQ(::rename(QFile::encodeName(cloud + QStringLiteral(".new")).constData(),
                               QFile::encodeName(cloud).constData()),
                      0);
        }
        reader.join();
        throttle(0);
        ASSERT_FALSE(error) << error->description().toStdString();
        ASSERT_FALSE(store_->isCloudOnly(url));
        EXPECT_TRUE(readFile(url.path()) == after) << "a torn or stale copy was installed";
        // So the next eviction sends nothing stale back.
        ASSERT_FALSE(store_->evict(url));
        EXPECT_TRUE(readFile(cloud) == after);
    }
}

TEST_F(DriveRaceTest, AnEvictionAndARemoteChangeNeverInterleave) {
    importBytes(QStringLiteral("Plan.txt"), "local version", false);
    const Url url = driveURL(QStringLiteral("Plan.txt"));
    std::optional<HomeLock> remote;
    remote.emplace(store_->home().rootPath());
    std::atomic<bool> evicted{false};
    std::thread evictor([&] {
        EXPECT_FALSE(store_->evict(url));
        evicted = true;
    });
    ASSERT_TRUE(HomeLock::waitUntilBlocked(1, 10s)) << "the eviction did not wait for the home";
    EXPECT_FALSE(evicted) << "the eviction ran while another device's change held the home";
    // The remote change, as velloractl makes it: both copies, then the lock goes.
    ASSERT_TRUE(writeFile(url.path(), "remote version"));
    ASSERT_TRUE(writeFile(cloudPath(QStringLiteral("Plan.txt")), "remote version"));
    remote.reset();
    evictor.join();
    EXPECT_TRUE(store_->isCloudOnly(url));
    EXPECT_EQ(readFile(cloudPath(QStringLiteral("Plan.txt"))), "remote version");
}

}  // namespace
}  // namespace vl::test
