// Coordinated access from several threads at once, made deterministic: a test that needs a request
// to be waiting asks the lock table until it really is, instead of racing the thread it started.

#include "drive/coordination/DriveCoordinationBackend.h"
#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/cloud/KeyValueStore.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vl {
namespace {

using ReadingOption = FileCoordinator::ReadingOption;
using WritingOption = FileCoordinator::WritingOption;
using namespace std::chrono_literals;

constexpr auto kPatience = 10s;

// A one-way signal between threads. A wait gives up after kPatience so that a fault fails the
// test instead of hanging it.
class Gate {
public:
    void open() {
        std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    bool wait() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kPatience, [this] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

// The order in which things happened on several threads.
class Journal {
public:
    void note(const std::string& event) {
        std::lock_guard lock(mutex_);
        events_.push_back(event);
    }
    std::vector<std::string> events() {
        std::lock_guard lock(mutex_);
        return events_;
    }

private:
    std::mutex mutex_;
    std::vector<std::string> events_;
};

// The drive service on a temporary home, as the app installs it.
class FileCoordinationConcurrencyTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        service_ = DriveService::install(dir_.path() + QStringLiteral("/home"));
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(service_->store()->writeAccount(account));
        ASSERT_TRUE(CloudDocuments::shared().driveRootURL());
        auto* backend =
            dynamic_cast<DriveCoordinationBackend*>(&FileCoordinator::Backend::shared());
        ASSERT_NE(backend, nullptr);
        locks_ = &backend->locks();
        root_ = *CloudDocuments::shared().driveRootURL();
    }
    void TearDown() override {
        service_->stopWatching();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
        FileCoordinator::Backend::setShared(nullptr);
    }

    Url url(const QString& relative, bool isFolder = false) const {
        return Url::fromPath(root_.path() + QLatin1Char('/') + relative, isFolder);
    }
    // True once `count` requests wait behind conflicting locks.
    bool blocked(int count) { return locks_->waitUntilBlocked(count, kPatience); }

    // Makes `relative` a drive item that the cloud has, cloud-only or local.
    void import(const QString& relative, const QByteArray& bytes, bool cloudOnly) {
        const QString source = sources_.path() + QStringLiteral("/source");
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
        file.close();
        ASSERT_FALSE(service_->store()->importItem(source, relative, cloudOnly));
    }
    void throttle(quint64 bytesPerSecond) {
        ServiceSettings settings;
        settings.throttleBytesPerSecond = bytesPerSecond;
        ASSERT_FALSE(service_->store()->writeServiceSettings(settings));
    }
    static QByteArray pattern(qint64 size) {
        QByteArray bytes(size, Qt::Uninitialized);
        for (qint64 i = 0; i < size; ++i) {
            bytes[i] = char('a' + (i * 31) % 251);
        }
        return bytes;
    }
    static QByteArray contents(const Url& url) {
        QFile file(url.path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    // Every entry of a drive folder, hidden ones included.
    QStringList entries(const QString& relative = {}) const {
        return QDir(url(relative, true).path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    QTemporaryDir dir_;
    QTemporaryDir sources_;
    std::shared_ptr<DriveService> service_;
    PathLockTable* locks_ = nullptr;
    Url root_;
};

TEST_F(FileCoordinationConcurrencyTest, AFolderWriteAndAWriteInsideItWaitForEachOther) {
    ASSERT_TRUE(QDir(root_.path()).mkdir(QStringLiteral("Folder")));
    const Url folder = url(QStringLiteral("Folder"), true);
    const Url inside = url(QStringLiteral("Folder/Item.txt"));
    const Url sibling = url(QStringLiteral("Other.txt"));

    for (const bool folderFirst : {false, true}) {
        SCOPED_TRACE(folderFirst ? "folder first" : "item first");
        const Url first = folderFirst ? folder : inside;
        const Url second = folderFirst ? inside : folder;
        Journal journal;
        Gate holding;
        Gate release;
        Gate siblingDone;
        std::thread holder([&] {
            FileCoordinator coordinator;
            coordinator.coordinateWritingItemAtURL(first, {}, nullptr, [&](const Url&) {
                journal.note("first in");
                holding.open();
                release.wait();
                journal.note("first out");
            });
        });
        EXPECT_TRUE(holding.wait());
        std::optional<Error> secondError;
        std::thread waiter([&] {
            FileCoordinator coordinator;
            coordinator.coordinateWritingItemAtURL(second, {}, &secondError,
                                                   [&](const Url&) { journal.note("second"); });
        });
        EXPECT_TRUE(blocked(1));
        // An item outside both is not held up.
        std::thread outside([&] {
            FileCoordinator coordinator;
            coordinator.coordinateWritingItemAtURL(sibling, {}, nullptr,
                                                   [&](const Url&) { siblingDone.open(); });
        });
        EXPECT_TRUE(siblingDone.wait());
        release.open();
        holder.join();
        waiter.join();
        outside.join();
        EXPECT_FALSE(secondError);
        EXPECT_EQ(journal.events(), (std::vector<std::string>{"first in", "first out", "second"}));
    }
}

TEST_F(FileCoordinationConcurrencyTest, ReadsShareAnItemWhileAWriteWaitsForBoth) {
    const Url item = url(QStringLiteral("Shared.txt"));
    Journal journal;
    Gate holding;
    Gate secondRead;
    Gate release;
    std::thread first([&] {
        FileCoordinator coordinator;
        coordinator.coordinateReadingItemAtURL(item, {}, nullptr, [&](const Url&) {
            holding.open();
            // The other read gets in while this one holds the item.
            journal.note(secondRead.wait() ? "first saw second" : "second kept out");
            release.wait();
            journal.note("first out");
        });
    });
    EXPECT_TRUE(holding.wait());
    std::thread second([&] {
        FileCoordinator coordinator;
        coordinator.coordinateReadingItemAtURL(item, ReadingOption::WithoutChanges, nullptr,
                                               [&](const Url&) { secondRead.open(); });
    });
    second.join();
    std::thread writer([&] {
        FileCoordinator coordinator;
        coordinator.coordinateWritingItemAtURL(item, WritingOption::ForReplacing, nullptr,
                                               [&](const Url&) { journal.note("write"); });
    });
    EXPECT_TRUE(blocked(1));
    release.open();
    first.join();
    writer.join();
    EXPECT_EQ(journal.events(),
              (std::vector<std::string>{"first saw second", "first out", "write"}));
}

TEST_F(FileCoordinationConcurrencyTest, TheWritingThreadCoordinatesAgainWhileOthersWait) {
    ASSERT_TRUE(QDir(root_.path()).mkdir(QStringLiteral("Folder")));
    const Url folder = url(QStringLiteral("Folder"), true);
    const Url item = url(QStringLiteral("Folder/Item.txt"));
    const Url renamed = url(QStringLiteral("Folder/Renamed.txt"));
    Journal journal;
    std::optional<Error> otherError;
    std::thread other;
    FileCoordinator outer;
    outer.coordinateWritingItemAtURL(folder, {}, nullptr, [&](const Url&) {
        other = std::thread([&] {
            FileCoordinator coordinator;
            coordinator.coordinateReadingItemAtURL(item, {}, &otherError,
                                                   [&](const Url&) { journal.note("other"); });
        });
        EXPECT_TRUE(blocked(1));
        // The locks this thread holds never block it: each nested access runs at once.
        FileCoordinator inner;
        std::optional<Error> error;
        inner.coordinateReadingItemAtURL(item, {}, &error,
                                         [&](const Url&) { journal.note("nested read"); });
        EXPECT_FALSE(error);
        inner.coordinateWritingItemAtURL(item, WritingOption::ForReplacing, &error,
                                         [&](const Url& target) {
                                             QFile file(target.path());
                                             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
                                             file.write("nested");
                                             journal.note("nested write");
                                         });
        EXPECT_FALSE(error);
        inner.coordinateWritingItemAtURL(
            item, WritingOption::ForMoving, renamed, WritingOption::ForReplacing, &error,
            [&](const Url& from, const Url& to) {
                inner.itemAtURLWillMoveToURL(from, to);
                EXPECT_FALSE(CloudDocuments::shared().movePromisedItem(from, to));
                journal.note("nested move");
            });
        EXPECT_FALSE(error);
        journal.note("outer out");
    });
    other.join();
    EXPECT_FALSE(otherError);
    EXPECT_EQ(journal.events(), (std::vector<std::string>{"nested read", "nested write",
                                                          "nested move", "outer out", "other"}));
    EXPECT_EQ(contents(renamed), QByteArray("nested"));
}

TEST_F(FileCoordinationConcurrencyTest, CancelFailsAReadThatIsWaitingBehindAWrite) {
    const Url item = url(QStringLiteral("Busy.txt"));
    FileCoordinator reader;
    std::optional<Error> readError;
    bool readRan = false;
    bool writerStillHeld = false;
    FileCoordinator writer;
    writer.coordinateWritingItemAtURL(item, WritingOption::ForReplacing, nullptr, [&](const Url&) {
        std::thread thread([&] {
            reader.coordinateReadingItemAtURL(item, {}, &readError,
                                              [&](const Url&) { readRan = true; });
        });
        EXPECT_TRUE(blocked(1));
        reader.cancel();
        thread.join();
        writerStillHeld = true;
    });
    EXPECT_TRUE(writerStillHeld) << "the read gave up while the write still held the item";
    ASSERT_TRUE(readError);
    EXPECT_EQ(readError->domain(), Error::FileErrorDomain);
    EXPECT_EQ(readError->code(), Error::UserCancelled);
    EXPECT_FALSE(readRan);

    // A cancelled coordinator stays cancelled; a new one reads at once.
    reader.coordinateReadingItemAtURL(item, {}, &readError, [&](const Url&) { readRan = true; });
    EXPECT_FALSE(readRan);
    FileCoordinator fresh;
    fresh.coordinateReadingItemAtURL(item, {}, &readError, [&](const Url&) { readRan = true; });
    EXPECT_FALSE(readError);
    EXPECT_TRUE(readRan);
}

// A throttled download runs long enough for a second reader, started from the download's own
// progress, to arrive while it is under way.
TEST_F(FileCoordinationConcurrencyTest, TwoReadersOfACloudOnlyItemShareOneDownload) {
    const QByteArray content = pattern(1024 * 1024);
    throttle(2 * 1024 * 1024);
    import(QStringLiteral("Movie.mp4"), content, true);
    const Url item = url(QStringLiteral("Movie.mp4"));

    std::mutex mutex;
    int published = 0;
    std::thread second;
    QByteArray secondSaw;
    std::optional<Error> secondError;
    const auto token = ItemProgress::addSubscriberForFileURL(
        item, [&](const std::shared_ptr<ItemProgress>&) -> ItemProgress::UnpublishingHandler {
            std::lock_guard lock(mutex);
            if (++published == 1) {
                second = std::thread([&] {
                    FileCoordinator coordinator;
                    coordinator.coordinateReadingItemAtURL(
                        item, {}, &secondError,
                        [&](const Url& target) { secondSaw = contents(target); });
                });
            }
            return [] {};
        });
    FileCoordinator first;
    std::optional<Error> firstError;
    QByteArray firstSaw;
    first.coordinateReadingItemAtURL(item, {}, &firstError,
                                     [&](const Url& target) { firstSaw = contents(target); });
    {
        std::lock_guard lock(mutex);
        ASSERT_TRUE(second.joinable());
    }
    second.join();
    ItemProgress::removeSubscriber(token);

    EXPECT_FALSE(firstError);
    EXPECT_FALSE(secondError);
    EXPECT_EQ(firstSaw, content);
    EXPECT_EQ(secondSaw, content);
    EXPECT_EQ(published, 1) << "one download for both";
    EXPECT_EQ(entries(), QStringList{QStringLiteral("Movie.mp4")});
}

// While a throttled download copies, another coordinator moves or deletes the item: the download
// must not put the copy where the item no longer is.
TEST_F(FileCoordinationConcurrencyTest, AnItemMovedOrDeletedDuringItsDownloadIsNotPutBack) {
    const QByteArray content = pattern(512 * 1024);
    throttle(1024 * 1024);
    ASSERT_TRUE(QDir(root_.path()).mkdir(QStringLiteral("Moved")));
    for (const bool moving : {true, false}) {
        SCOPED_TRACE(moving ? "moved" : "deleted");
        import(QStringLiteral("Song.m4a"), content, true);
        const Url item = url(QStringLiteral("Song.m4a"));
        const Url destination = url(QStringLiteral("Moved/Song.m4a"));

        std::optional<Error> changeError;
        bool changed = false;
        const auto token = ItemProgress::addSubscriberForFileURL(
            item,
            [&](const std::shared_ptr<ItemProgress>& progress)
                -> ItemProgress::UnpublishingHandler {
                // On the copying thread, once the first slice is copied; that thread holds no
                // lock of the item while it copies.
                const auto id = progress->addFractionCompletedObserver([&](ItemProgress&) {
                    if (std::exchange(changed, true)) {
                        return;
                    }
                    FileCoordinator other;
                    if (moving) {
                        other.coordinateWritingItemAtURL(
                            item, WritingOption::ForMoving, destination,
                            WritingOption::ForReplacing, &changeError,
                            [&](const Url& from, const Url& to) {
                                other.itemAtURLWillMoveToURL(from, to);
                                EXPECT_FALSE(CloudDocuments::shared().movePromisedItem(from, to));
                            });
                    } else {
                        other.coordinateWritingItemAtURL(
                            item, WritingOption::ForDeleting, &changeError,
                            [](const Url& target) { EXPECT_TRUE(QFile::remove(target.path())); });
                    }
                });
                return [progress, id] { progress->removeFractionCompletedObserver(id); };
            });
        FileCoordinator reader;
        std::optional<Error> readError;
        bool readRan = false;
        reader.coordinateReadingItemAtURL(item, {}, &readError,
                                          [&](const Url&) { readRan = true; });
        ItemProgress::removeSubscriber(token);

        EXPECT_TRUE(changed);
        EXPECT_FALSE(changeError);
        ASSERT_TRUE(readError);
        EXPECT_EQ(readError->domain(), Error::FileErrorDomain);
        EXPECT_EQ(readError->code(), Error::FileNoSuchFile);
        EXPECT_FALSE(readRan);
        // Nothing is left where the item was: no content, no partial copy.
        Error reachError;
        EXPECT_FALSE(CloudDocuments::shared().checkPromisedItemIsReachable(item, &reachError));
        EXPECT_EQ(reachError.domain(), Error::FileErrorDomain);
        EXPECT_EQ(reachError.code(), Error::FileReadNoSuchFile);
        EXPECT_EQ(entries(), QStringList{QStringLiteral("Moved")});
        if (moving) {
            // The moved item is still cloud-only and downloads in full at its new place.
            EXPECT_TRUE(CloudDocuments::shared().hasItemPromiseAtURL(destination));
            QByteArray seen;
            FileCoordinator fresh;
            fresh.coordinateReadingItemAtURL(destination, {}, &readError,
                                             [&](const Url& target) { seen = contents(target); });
            EXPECT_FALSE(readError);
            EXPECT_EQ(seen, content);
            EXPECT_EQ(entries(QStringLiteral("Moved")), QStringList{QStringLiteral("Song.m4a")});
        }
    }
}

}  // namespace
}  // namespace vl
