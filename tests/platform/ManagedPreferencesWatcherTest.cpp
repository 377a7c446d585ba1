#include "platform/app/ManagedPreferencesWatcher.h"
#include "platform/app/NotificationCenter.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileSystemWatcher>
#include <QTemporaryDir>
#include <QTimer>

using namespace vl;

namespace {

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// Counts the posts while the main loop runs until `done` holds (or ten seconds passed).
class PostCounter {
public:
    PostCounter() {
        token_ = NotificationCenter::defaultCenter().addObserver(
            Notifications::ManagedPreferencesDidChange, nullptr,
            [this](const Notification&) { ++posts; });
    }
    ~PostCounter() { NotificationCenter::defaultCenter().removeObserver(token_); }

    template <typename Predicate>
    static bool spinUntil(Predicate done) {
        QDeadlineTimer deadline(10'000);
        QTimer wake;  // so that the wait below sees the deadline
        wake.start(20);
        while (!done() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return done();
    }
    // Applies the change and waits for its post.
    bool posted(const std::function<void()>& change) {
        const int before = posts;
        change();
        return spinUntil([&] { return posts > before; });
    }

    int posts = 0;

private:
    NotificationCenter::TokenPtr token_;
};

}  // namespace

TEST(ManagedPreferencesWatcher, PostsWhenAWatchedFileAppearsChangesOrGoes) {
    QTemporaryDir dir;
    const QString marker = dir.filePath(QStringLiteral("marker"));
    const QString store = dir.filePath(QStringLiteral("store.conf"));
    write(store, "[General]\nVLLogLevel=3\n");
    ManagedPreferencesWatcher watcher({marker, store});
    PostCounter counter;

    EXPECT_TRUE(counter.posted([&] { write(marker, ""); }));
    EXPECT_TRUE(counter.posted([&] { write(store, "[General]\nVLLogLevel=12\n"); }));
    EXPECT_TRUE(counter.posted([&] { QFile::remove(marker); }));

    // Other files of the same folder are none of its business. A watcher of the test's own sees
    // the same folder event; once it has, the one under test has had it too.
    const int before = counter.posts;
    QFileSystemWatcher witness({dir.path()});
    bool seen = false;
    QObject::connect(&witness, &QFileSystemWatcher::directoryChanged, [&] { seen = true; });
    write(dir.filePath(QStringLiteral("other")), "x");
    ASSERT_TRUE(PostCounter::spinUntil([&] { return seen; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.posts, before);
}
