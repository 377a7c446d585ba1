#include "CoordinationFixture.h"

#include "platform/cloud/ItemProgress.h"

#include <atomic>
#include <condition_variable>
#include <thread>

namespace vl::test {

using ReadingOption = FileCoordinator::ReadingOption;
using WritingOption = FileCoordinator::WritingOption;

class FileCoordinationTest : public CoordinationFixture {};

TEST_F(FileCoordinationTest, ReadDownloadsCloudOnlyItemAndPublishesProgressEndingAtOne) {
    const QByteArray content = pattern(9 * 1024 * 1024 + 123, 'a');
    importBytes(QStringLiteral("Report.pdf"), content, true);
    const Url url = driveURL(QStringLiteral("Report.pdf"));

    std::mutex mutex;
    QStringList kinds;
    std::vector<double> fractions;
    int unpublished = 0;
    const auto token = ItemProgress::addSubscriberForFileURL(
        url,
        [&](const std::shared_ptr<ItemProgress>& progress) -> ItemProgress::UnpublishingHandler {
            {
                std::lock_guard lock(mutex);
                kinds.append(progress->kind());
            }
            // Not under `mutex`: the observer takes it while the progress holds its own lock.
            const auto id = progress->addFractionCompletedObserver([&](ItemProgress& p) {
                std::lock_guard inner(mutex);
                fractions.push_back(p.fractionCompleted());
            });
            return [&, progress, id] {
                progress->removeFractionCompletedObserver(id);
                std::lock_guard inner(mutex);
                ++unpublished;
            };
        });

    // A metadata-only read describes the item without downloading it.
    FileCoordinator coordinator;
    std::optional<Error> error;
    bool sawLocalContent = true;
    coordinator.coordinateReadingItemAtURL(
        url, ReadingOption::ImmediatelyAvailableMetadataOnly, &error,
        [&](const Url& newURL) { sawLocalContent = QFile::exists(newURL.path()); });
    EXPECT_FALSE(error);
    EXPECT_FALSE(sawLocalContent);
    EXPECT_TRUE(store_->isCloudOnly(url));

    QByteArray seen;
    coordinator.coordinateReadingItemAtURL(
        url, ReadingOption::WithoutChanges | ReadingOption::ResolvesSymbolicLink, &error,
        [&](const Url& newURL) { seen = readFile(newURL.path()); });
    ItemProgress::removeSubscriber(token);

    EXPECT_FALSE(error);
    EXPECT_EQ(seen, content);
    EXPECT_FALSE(store_->isCloudOnly(url));
    EXPECT_FALSE(QFile::exists(DriveHome::placeholderPathFor(url.path())));
    EXPECT_FALSE(QFile::exists(DriveHome::downloadPathFor(url.path())));
    std::lock_guard lock(mutex);
    EXPECT_EQ(kinds, QStringList{ItemProgress::FileKind});
    EXPECT_EQ(unpublished, 1);
    ASSERT_GE(fractions.size(), 3u);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_DOUBLE_EQ(fractions.back(), 1.0);
}

TEST_F(FileCoordinationTest, CancelFromAnotherThreadLeavesItemCloudOnlyWithoutPartialFile) {
    ServiceSettings settings;
    settings.throttleBytesPerSecond = 512 * 1024;
    ASSERT_FALSE(store_->writeServiceSettings(settings));
    importBytes(QStringLiteral("Movie.mp4"), pattern(8 * 1024 * 1024, 'm'), true);
    const Url url = driveURL(QStringLiteral("Movie.mp4"));

    std::mutex mutex;
    std::condition_variable started;
    bool copying = false;
    const auto token = ItemProgress::addSubscriberForFileURL(
        url,
        [&](const std::shared_ptr<ItemProgress>& progress) -> ItemProgress::UnpublishingHandler {
            const auto id = progress->addFractionCompletedObserver([&](ItemProgress&) {
                std::lock_guard lock(mutex);
                copying = true;
                started.notify_all();
            });
            return [progress, id] { progress->removeFractionCompletedObserver(id); };
        });

    FileCoordinator coordinator;
    std::optional<Error> error;
    bool accessorRan = false;
    std::thread reader([&] {
        coordinator.coordinateReadingItemAtURL(url, {}, &error,
                                               [&](const Url&) { accessorRan = true; });
    });
    {
        std::unique_lock lock(mutex);
        started.wait(lock, [&] { return copying; });
    }
    coordinator.cancel();
    reader.join();
    ItemProgress::removeSubscriber(token);

    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), Error::FileErrorDomain);
    EXPECT_EQ(error->code(), Error::UserCancelled);
    EXPECT_FALSE(accessorRan);
    EXPECT_TRUE(store_->isCloudOnly(url));
    EXPECT_FALSE(QFile::exists(DriveHome::downloadPathFor(url.path())));
}

TEST_F(FileCoordinationTest, ReadFailsWithServerUnavailableWhileNetworkIsOff) {
    ServiceSettings settings;
    settings.network = ServiceSettings::NetworkNone;
    ASSERT_FALSE(store_->writeServiceSettings(settings));
    importBytes(QStringLiteral("Notes.txt"), "offline", true);
    const Url url = driveURL(QStringLiteral("Notes.txt"));

    FileCoordinator coordinator;
    std::optional<Error> error;
    coordinator.coordinateReadingItemAtURL(url, {}, &error, [](const Url&) { FAIL(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), Error::FileErrorDomain);
    EXPECT_EQ(error->code(), Error::CloudServerUnavailable);
    EXPECT_TRUE(store_->isCloudOnly(url));
}

TEST_F(FileCoordinationTest, CoordinatedWritesReachTheCloudCopySoEvictThenDownloadGivesSameBytes) {
    importBytes(QStringLiteral("Draft.txt"), "first version", false);
    const Url url = driveURL(QStringLiteral("Draft.txt"));
    const QByteArray edited = pattern(300 * 1024, 'e');

    FileCoordinator coordinator;
    std::optional<Error> error;
    coordinator.coordinateWritingItemAtURL(
        url, WritingOption::ForReplacing, &error,
        [&](const Url& newURL) { ASSERT_TRUE(writeFile(newURL.path(), edited)); });
    ASSERT_FALSE(error);
    ASSERT_FALSE(store_->evict(url));
    ASSERT_TRUE(store_->isCloudOnly(url));

    QByteArray seen;
    coordinator.coordinateReadingItemAtURL(
        url, {}, &error, [&](const Url& newURL) { seen = readFile(newURL.path()); });
    EXPECT_FALSE(error);
    EXPECT_EQ(seen, edited);

    // A coordinated move and delete are mirrored as well.
    const Url moved = driveURL(QStringLiteral("Final.txt"));
    coordinator.coordinateWritingItemAtURL(url, WritingOption::ForMoving, moved,
                                           WritingOption::ForReplacing, &error,
                                           [&](const Url& from, const Url& to) {
                                               coordinator.itemAtURLWillMoveToURL(from, to);
                                               ASSERT_TRUE(QFile::rename(from.path(), to.path()));
                                           });
    EXPECT_FALSE(QFile::exists(store_->cloudPathFor(QStringLiteral("Draft.txt"))));
    EXPECT_EQ(readFile(store_->cloudPathFor(QStringLiteral("Final.txt"))), edited);
    coordinator.coordinateWritingItemAtURL(
        moved, WritingOption::ForDeleting, &error,
        [&](const Url& newURL) { ASSERT_TRUE(QFile::remove(newURL.path())); });
    EXPECT_FALSE(QFile::exists(store_->cloudPathFor(QStringLiteral("Final.txt"))));
}

TEST_F(FileCoordinationTest, DeletingACloudOnlyItemHandsThePlaceholderToTheAccessor) {
    importBytes(QStringLiteral("Old.key"), "slides", true);
    const Url url = driveURL(QStringLiteral("Old.key"));
    FileCoordinator coordinator;
    std::optional<Error> error;
    coordinator.coordinateWritingItemAtURL(
        url, WritingOption::ForDeleting, &error,
        [&](const Url& newURL) { EXPECT_TRUE(QFile::remove(newURL.path())); });
    EXPECT_FALSE(error);
    EXPECT_FALSE(store_->isReachable(url, nullptr));
    EXPECT_FALSE(QFile::exists(store_->cloudPathFor(QStringLiteral("Old.key"))));
}

TEST_F(FileCoordinationTest, OppositeTwoURLWritesDoNotDeadlock) {
    const Url a = driveURL(QStringLiteral("A"));
    const Url b = driveURL(QStringLiteral("B"));
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    auto work = [&](const Url& first, const Url& second) {
        FileCoordinator coordinator;
        for (int i = 0; i < 300; ++i) {
            coordinator.coordinateWritingItemAtURL(
                first, WritingOption::ForMoving, second, WritingOption::ForReplacing, nullptr,
                [&](const Url&, const Url&) {
                    overlapped = overlapped || inside.fetch_add(1) != 0;
                    inside.fetch_sub(1);
                });
        }
    };
    std::thread one(work, a, b);
    std::thread two(work, b, a);
    one.join();
    two.join();
    EXPECT_FALSE(overlapped);
}

}  // namespace vl::test
