#include "drive/watch/DriveChangeWatcher.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace vl::test {

namespace {

int maxQueuedEvents() {
    QFile limit(QStringLiteral("/proc/sys/fs/inotify/max_queued_events"));
    return limit.open(QIODevice::ReadOnly) ? limit.readAll().trimmed().toInt() : 0;
}

bool touch(const QString& path) {
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    return fd >= 0 && ::close(fd) == 0;
}

}  // namespace

// Holds the watcher's thread in its first delivery, so that the kernel's event queue can be made
// to overflow, and writes down every change (as plain strings: nothing Qt shares crosses threads).
class HeldSink {
public:
    void operator()(const DriveChange& change) {
        std::unique_lock lock(mutex_);
        changes_.push_back(std::to_string(int(change.kind)) + ' ' +
                           change.url.path().toStdString());
        if (!released_) {
            held_ = true;
            changed_.notify_all();
            changed_.wait(lock, [this] { return released_; });
        }
    }
    bool waitUntilHeld() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(5), [this] { return held_; });
    }
    void release() {
        std::lock_guard lock(mutex_);
        released_ = true;
        changed_.notify_all();
    }
    bool heard(DriveChange::Kind kind, const QString& path) const {
        const std::string wanted = std::to_string(int(kind)) + ' ' + path.toStdString();
        std::lock_guard lock(mutex_);
        return std::find(changes_.begin(), changes_.end(), wanted) != changes_.end();
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> changes_;  // guarded by mutex_
    bool held_ = false;                 // guarded by mutex_
    bool released_ = false;             // guarded by mutex_
};

TEST(DriveChangeWatcherTest, AfterLostEventsFoldersMadeMeanwhileAreWatchedAndAllIsToldToLookAgain) {
    const int limit = maxQueuedEvents();
    if (limit <= 0 || limit > 200'000) {
        GTEST_SKIP() << "inotify queue limit " << limit << " is too large to overflow here";
    }
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString root = dir.path();
    const QString a = root + QStringLiteral("/a.txt");
    const QString b = root + QStringLiteral("/b.txt");
    ASSERT_TRUE(touch(a) && touch(b));

    HeldSink sink;
    DriveChangeWatcher watcher(root, [&sink](const DriveChange& change) { sink(change); });
    ASSERT_TRUE(watcher.start());
    ASSERT_TRUE(touch(a));
    ASSERT_TRUE(sink.waitUntilHeld());

    // Alternating files, so that the kernel can't fold the events together.
    for (int i = 0; i < limit + 1000; ++i) {
        ASSERT_TRUE(touch(i % 2 ? a : b));
    }
    ASSERT_TRUE(QDir(root).mkdir(QStringLiteral("Later")));
    sink.release();

    QDeadlineTimer deadline(10'000);
    while (!sink.heard(DriveChange::Kind::Missed, root) && !deadline.hasExpired()) {
        QThread::msleep(5);
    }
    ASSERT_TRUE(sink.heard(DriveChange::Kind::Missed, root));

    const QString inLater = root + QStringLiteral("/Later/x.txt");
    ASSERT_TRUE(touch(inLater));
    watcher.waitUntilDelivered();
    EXPECT_TRUE(sink.heard(DriveChange::Kind::Appeared, inLater));
    watcher.stop();
}

TEST(DriveChangeWatcherTest, FenceFoldersOfDeadProcessesAreSweptAndOthersKept) {
    QTemporaryDir runtime;
    ASSERT_TRUE(runtime.isValid());
    const QByteArray saved = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));

    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    ASSERT_GT(child, 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    struct stat ns {};
    ASSERT_EQ(::stat("/proc/self/ns/pid", &ns), 0);
    const QString prefix = QStringLiteral("vellora-fences-%1-").arg(ns.st_ino);
    const QString dead = prefix + QStringLiteral("%1-abcdef").arg(child);
    const QString alive = prefix + QStringLiteral("%1-abcdef").arg(::getppid());
    const QString elsewhere = QStringLiteral("vellora-fences-1-%1-abcdef").arg(child);
    for (const QString& name : {dead, alive, elsewhere}) {
        ASSERT_TRUE(QDir(runtime.path()).mkpath(name + QStringLiteral("/f")));
    }

    QTemporaryDir drive;
    DriveChangeWatcher watcher(drive.path(), [](const DriveChange&) {});
    ASSERT_TRUE(watcher.start());
    const QStringList left = QDir(runtime.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    EXPECT_FALSE(left.contains(dead));
    EXPECT_TRUE(left.contains(alive));
    EXPECT_TRUE(left.contains(elsewhere));
    // Its own is made there, under its own id, and goes with it.
    EXPECT_EQ(left.size(), 3);
    EXPECT_EQ(left.filter(prefix + QString::number(::getpid()) + QLatin1Char('-')).size(), 1);
    watcher.stop();
    EXPECT_EQ(QDir(runtime.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
    qputenv("XDG_RUNTIME_DIR", saved);
}

}  // namespace vl::test
