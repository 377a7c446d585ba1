#pragma once

#include "platform/cloud/FilePresenter.h"

#include <memory>
#include <mutex>
#include <optional>

namespace vl {

class DriveStore;

// Keeps pinned items downloaded: it presents the drive's root, so it hears of every item that
// appears, changes or moves, and when one that is kept offline (pinned, or inside a pinned
// folder) is cloud-only it downloads it with a coordinated read, one at a time on its own queue.
// Once started it also looks at every pinned item, for what arrived while the service was not
// running. It only downloads: an item unpinned meanwhile is left as it is.
class PinnedContentKeeper : public FilePresenter,
                            public std::enable_shared_from_this<PinnedContentKeeper> {
public:
    explicit PinnedContentKeeper(std::shared_ptr<DriveStore> store);
    ~PinnedContentKeeper() override;

    // Registers the keeper as the presenter of the drive's root and queues a look at every
    // pinned item.
    void start();
    void stop();

    std::optional<Url> presentedItemURL() const override;
    DispatchQueuePtr presentedItemOperationQueue() const override;

    void presentedItemDidChange() override;
    void presentedSubitemDidChangeAtURL(const Url& url) override;
    void presentedSubitemDidAppearAtURL(const Url& url) override;
    void presentedSubitemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) override;

private:
    // Downloads whatever of `url` is cloud-only, when it is kept offline. Keeper's queue.
    void keepDownloaded(const Url& url);
    void lookAtEveryPinnedItem();

    const std::shared_ptr<DriveStore> store_;
    const DispatchQueuePtr queue_;
    mutable std::mutex mutex_;
    bool started_ = false;  // guarded by mutex_
};

}  // namespace vl
