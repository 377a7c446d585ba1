#include "drive/service/PinnedContentKeeper.h"

#include "drive/store/DriveStore.h"
#include "logging/VLLogging.h"
#include "platform/cloud/FileCoordinator.h"

namespace vl {

PinnedContentKeeper::PinnedContentKeeper(std::shared_ptr<DriveStore> store)
    : store_(std::move(store)),
      queue_(Dispatch::serialQueue(QStringLiteral("com.tessaly.VelloraDrive.PinnedContent"),
                                   QualityOfService::Utility)) {}

PinnedContentKeeper::~PinnedContentKeeper() = default;

void PinnedContentKeeper::start() {
    {
        std::lock_guard lock(mutex_);
        if (started_) {
            return;
        }
        started_ = true;
    }
    FileCoordinator::addFilePresenter(shared_from_this());
    queue_->async(Dispatch::weakBlock(shared_from_this(),
                                      [](const auto& self) { self->lookAtEveryPinnedItem(); }));
}

void PinnedContentKeeper::stop() {
    {
        std::lock_guard lock(mutex_);
        if (!started_) {
            return;
        }
        started_ = false;
    }
    FileCoordinator::removeFilePresenter(this);
}

std::optional<Url> PinnedContentKeeper::presentedItemURL() const {
    return store_->driveRootURL();
}

DispatchQueuePtr PinnedContentKeeper::presentedItemOperationQueue() const {
    return queue_;
}

void PinnedContentKeeper::presentedItemDidChange() {
    // Events were lost: anything may have arrived anywhere.
    lookAtEveryPinnedItem();
}

void PinnedContentKeeper::presentedSubitemDidChangeAtURL(const Url& url) {
    keepDownloaded(url);
}

void PinnedContentKeeper::presentedSubitemDidAppearAtURL(const Url& url) {
    keepDownloaded(url);
}

void PinnedContentKeeper::presentedSubitemAtURLDidMoveToURL(const Url&, const Url& newURL) {
    keepDownloaded(newURL);
}

void PinnedContentKeeper::lookAtEveryPinnedItem() {
    for (const QString& relative : store_->pinnedItems()) {
        keepDownloaded(store_->driveURL(relative));
    }
}

void PinnedContentKeeper::keepDownloaded(const Url& url) {
    if (!store_->isKeptOffline(url)) {
        return;
    }
    for (const Url& item : store_->cloudOnlyItems(url)) {
        // Unpinned while the items before it came down: the rest stays in the cloud.
        if (!store_->isKeptOffline(item)) {
            continue;
        }
        VLLOG(6, "Downloading %@: it is kept offline", item);
        FileCoordinator coordinator(this);
        std::optional<Error> error;
        coordinator.coordinateReadingItemAtURL(
            item,
            FileCoordinator::ReadingOptions(FileCoordinator::ReadingOption::WithoutChanges) |
                FileCoordinator::ReadingOption::ResolvesSymbolicLink,
            &error, [](const Url&) {});
        if (error) {
            VLLOG(4, "Could not download %@, which is kept offline: %@", item, *error);
        }
    }
}

}  // namespace vl
