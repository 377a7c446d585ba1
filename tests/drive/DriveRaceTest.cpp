#include "CoordinationFixture.h"

#include "drive/integrity/HomeLock.h"
#include "drive/service/CloudDocumentsService.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace vl::test {
namespace {

using namespace std::chrono_literals;

// Races between the drive's own changes and the cloud side's, each held open long enough to
// overlap for certain.
class DriveRaceTest : public CoordinationFixture {
protected:
    QString cloudPath(const QString& relative) const { return store_->cloudPathFor(relative); }

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
                                                   std::this_thread::sleep_for(300ms);
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
        std::this_thread::sleep_for(150ms);
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
    std::this_thread::sleep_for(200ms);
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
