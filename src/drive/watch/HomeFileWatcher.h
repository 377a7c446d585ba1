#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <thread>

namespace vl {

// Watches a few files of one folder (account.json, kvstore.json) with inotify on a thread of its
// own, so that changes are seen whether or not anyone runs the main loop. The callback runs on
// that thread with the name of the file that was written, replaced or removed.
class HomeFileWatcher {
public:
    using Callback = std::function<void(const QString& fileName)>;

    HomeFileWatcher(const QString& folder, const QStringList& fileNames, Callback callback);
    ~HomeFileWatcher();
    HomeFileWatcher(const HomeFileWatcher&) = delete;
    HomeFileWatcher& operator=(const HomeFileWatcher&) = delete;

    bool isWatching() const { return inotifyFd_ >= 0; }

private:
    void run();

    const QStringList fileNames_;  // read-only after construction
    const Callback callback_;
    int inotifyFd_ = -1;
    int stopFd_ = -1;
    std::thread thread_;
};

}  // namespace vl
