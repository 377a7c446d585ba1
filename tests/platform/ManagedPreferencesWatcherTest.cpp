#include "platform/app/ManagedPreferencesWatcher.h"
#include "platform/app/NotificationCenter.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>

using namespace vl;

namespace {

int postsWithin(int milliseconds, const std::function<void()>& change) {
    int posts = 0;
    auto token = NotificationCenter::defaultCenter().addObserver(
        Notifications::ManagedPreferencesDidChange, nullptr, [&](const Notification&) { ++posts; });
    change();
    QDeadlineTimer deadline(milliseconds);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    NotificationCenter::defaultCenter().removeObserver(token);
    return posts;
}

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

}  // namespace

TEST(ManagedPreferencesWatcher, PostsWhenAWatchedFileAppearsChangesOrGoes) {
    QTemporaryDir dir;
    const QString marker = dir.filePath(QStringLiteral("marker"));
    const QString store = dir.filePath(QStringLiteral("store.conf"));
    write(store, "[General]\nVLLogLevel=3\n");
    ManagedPreferencesWatcher watcher({marker, store});

    EXPECT_GE(postsWithin(300, [&] { write(marker, ""); }), 1);
    EXPECT_GE(postsWithin(300, [&] { write(store, "[General]\nVLLogLevel=12\n"); }), 1);
    EXPECT_GE(postsWithin(300, [&] { QFile::remove(marker); }), 1);
    // Other files of the same folder are none of its business.
    EXPECT_EQ(postsWithin(300, [&] { write(dir.filePath(QStringLiteral("other")), "x"); }), 0);
}
