#pragma once

#include "platform/cloud/FilePresenter.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QSet>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace vl {

class DriveStore;
class DriveChangeWatcher;
class ItemProgress;
class PathLockTable;
class PresenterRegistry;

// Downloads cloud-only items for coordinated reads: copies the cloud content into the staging
// area in chunks while publishing ItemProgress for the item's URL, honours the service's
// throttling and network setting, then puts the copy in place (the placeholder goes) and tells the
// item's presenters that it changed. A copy is installed only if the cloud copy stayed the version
// it started from; otherwise it is read again, up to MaxAttempts times, then the download fails.
// A cancelled or failed download removes its partial copy and leaves the placeholder. Two reads
// of one item download it once.
class ItemDownloader {
public:
    // Chunk of an unthrottled copy: large enough that progress bookkeeping costs nothing
    // against the copy, small enough for a fine progress ring and a prompt cancel.
    static constexpr qint64 ChunkBytes = 4 * 1024 * 1024;
    static constexpr int MaxAttempts = 3;

    ItemDownloader(std::shared_ptr<DriveStore> store, PathLockTable& locks,
                   DriveChangeWatcher& watcher, std::shared_ptr<PresenterRegistry> presenters);

    // Returns once the item is local (downloaded by this call or by another one it waited for),
    // or with the error that stopped it: Error::UserCancelled when `cancelled` became true,
    // Error::CloudServerUnavailable when the service plays "not connected".
    std::optional<Error> download(const Url& logicalURL, const std::atomic<bool>& cancelled,
                                  const FilePresenter* excludedPresenter);
    // Wakes waiting and throttled downloads so that they look at their cancel flags.
    void wakeAll();

private:
    std::optional<Error> copyItem(const QByteArray& source, const QByteArray& destination,
                                  ItemProgress& progress, quint64 throttle,
                                  const std::atomic<bool>& cancelled);
    std::optional<Error> copyTree(const QByteArray& source, const QByteArray& destination,
                                  ItemProgress& progress, qint64& done, quint64 throttle,
                                  const std::atomic<bool>& cancelled);
    // Adds the bytes copied to `base`.
    std::optional<Error> copyFile(const QByteArray& source, const QByteArray& destination,
                                  ItemProgress& progress, qint64& base, quint64 throttle,
                                  const std::atomic<bool>& cancelled);
    // Sleeps until `bytes` fit the throttle since the copy started, or until cancelled.
    void throttleWait(qint64 bytes, quint64 throttle, qint64 startedNs,
                      const std::atomic<bool>& cancelled);

    std::shared_ptr<DriveStore> store_;
    PathLockTable& locks_;
    DriveChangeWatcher& watcher_;
    std::shared_ptr<PresenterRegistry> presenters_;

    std::mutex mutex_;
    std::condition_variable changed_;
    QSet<QString> inProgress_;  // logical paths; guarded by mutex_
};

}  // namespace vl
