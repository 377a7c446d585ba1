#pragma once

#include "platform/dispatch/Dispatch.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QList>

#include <functional>
#include <memory>
#include <optional>

namespace vl {

// Keep Offline and Remove Download of drive items. Keeping an item offline pins it and then
// downloads what of it is cloud-only (a folder: every cloud-only item inside, one at a time) by
// coordinated reads on a serial queue of its own; for a folder it publishes one progress for the
// folder's URL over the bytes of all of them. Removing a download cancels a keep-offline of the
// item (or of anything inside it) still under way, unpins the item and everything inside it, and
// evicts it. Requests run in the order they are made. Completions come on the main queue.
//
// The public operations are main-thread only.
class OfflineKeeper : public std::enable_shared_from_this<OfflineKeeper> {
public:
    // The network activity shown while a download runs.
    static inline const QString NetworkActivity = QStringLiteral("KeepOffline");

    // `errors`: one per item that could not be downloaded (a cancelled read is not one).
    using KeepCompletion =
        std::function<void(const Url& url, const QList<Error>& errors, bool cancelled)>;
    using RemoveCompletion = std::function<void(const Url& url, std::optional<Error> error)>;

    static std::shared_ptr<OfflineKeeper> create();
    ~OfflineKeeper();

    void keepOffline(const Url& url, KeepCompletion completion);
    void removeDownload(const Url& url, RemoveCompletion completion);
    // Whether a keep-offline of the item itself is queued or running.
    bool isKeepingOffline(const Url& url) const;
    // Cancels the keep-offline of the item and of everything inside it; the item stays pinned.
    void cancel(const Url& url);

private:
    struct Job;
    OfflineKeeper();
    // Keeper's queue.
    static void download(const std::shared_ptr<Job>& job);

    const DispatchQueuePtr queue_;
    QList<std::shared_ptr<Job>> jobs_;  // main thread: queued or running
};

}  // namespace vl
