#include "services/OfflineKeeper.h"

#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/cloud/ItemProgress.h"
#include "services/NetworkIndicator.h"

#include <atomic>
#include <mutex>

namespace vl {

struct OfflineKeeper::Job {
    std::weak_ptr<OfflineKeeper> owner;
    Url url;
    KeepCompletion completion;  // main thread
    std::atomic<bool> cancelled{false};
    std::mutex mutex;
    FileCoordinator* reading = nullptr;  // guarded by mutex: the read under way

    void cancel() {
        cancelled = true;
        std::lock_guard lock(mutex);
        if (reading) {
            reading->cancel();
        }
    }
};

OfflineKeeper::OfflineKeeper()
    : queue_(Dispatch::serialQueue(QStringLiteral("com.tessaly.VelloraApp.KeepOffline"),
                                   QualityOfService::Utility)) {}

OfflineKeeper::~OfflineKeeper() {
    for (const std::shared_ptr<Job>& job : jobs_) {
        job->cancel();
    }
}

std::shared_ptr<OfflineKeeper> OfflineKeeper::create() {
    return std::shared_ptr<OfflineKeeper>(new OfflineKeeper());
}

bool OfflineKeeper::isKeepingOffline(const Url& url) const {
    return std::any_of(jobs_.cbegin(), jobs_.cend(),
                       [&url](const std::shared_ptr<Job>& job) { return job->url == url; });
}

void OfflineKeeper::cancel(const Url& url) {
    for (const std::shared_ptr<Job>& job : jobs_) {
        if (url.isAncestorOf(job->url)) {
            VLLOG(6, "Keep offline of %@ cancelled", job->url);
            job->cancel();
        }
    }
}

void OfflineKeeper::keepOffline(const Url& url, KeepCompletion completion) {
    VLLOG(6, "Keep offline: %@", url);
    auto job = std::make_shared<Job>();
    job->owner = weak_from_this();
    job->url = url;
    job->completion = std::move(completion);
    jobs_.append(job);
    queue_->async([job] { download(job); });
}

void OfflineKeeper::download(const std::shared_ptr<Job>& job) {
    CloudDocuments& documents = CloudDocuments::shared();
    QList<Error> errors;
    const auto finish = [&] {
        const bool cancelled = job->cancelled.load();
        VLLOG(6, "Keep offline of %@ ended: %d failed%@", job->url, int(errors.size()),
              cancelled ? QStringLiteral(", cancelled") : QString());
        Dispatch::mainQueue()->async([job, errors, cancelled] {
            if (const std::shared_ptr<OfflineKeeper> owner = job->owner.lock()) {
                owner->jobs_.removeAll(job);
            }
            if (job->completion) {
                job->completion(job->url, errors, cancelled);
            }
        });
    };
    if (job->cancelled) {
        return finish();
    }
    if (std::optional<Error> error = documents.setItemPinned(job->url, true)) {
        VLLOG(3, "Can't pin %@: %@", job->url, *error);
        errors.append(*error);
        return finish();
    }
    const QList<Url> items = documents.cloudOnlyItemsAtURL(job->url);
    if (items.isEmpty()) {
        return finish();
    }

    // One progress over all the items of a folder; an item alone has the drive's own.
    std::shared_ptr<ItemProgress> overall;
    QList<qint64> sizes;
    if (items.size() > 1 || items.front() != job->url) {
        qint64 total = 0;
        for (const Url& item : items) {
            const std::optional<ItemAttributes> attributes = documents.promisedItemResourceValues(
                item, ItemAttributeKeys(ItemAttributeKey::FileSize), nullptr);
            sizes.append(qint64(attributes ? attributes->fileSize.value_or(0) : 0));
            total += sizes.back();
        }
        overall = ItemProgress::create(total);
        overall->setKind(ItemProgress::FileKind);
        overall->setFileURL(job->url);
        overall->publish();
    }

    NetworkIndicator::sharedNetworkIndicator().show(NetworkActivity);
    qint64 done = 0;
    for (qsizetype i = 0; i < items.size() && !job->cancelled; ++i) {
        const Url& item = items.at(i);
        // Unpinned meanwhile (Remove Download of something inside): it stays in the cloud.
        if (!documents.isItemKeptOffline(item)) {
            continue;
        }
        ItemProgress::SubscriptionToken subscription;
        if (overall) {
            subscription = ItemProgress::addSubscriberForFileURL(
                item,
                [overall, done, item](const std::shared_ptr<ItemProgress>& progress)
                    -> ItemProgress::UnpublishingHandler {
                    if (progress->fileURL() != item) {
                        return {};
                    }
                    const ItemProgress::ObserverId id =
                        progress->addFractionCompletedObserver([overall, done](ItemProgress& p) {
                            overall->setCompletedUnitCount(done + p.completedUnitCount());
                        });
                    return [progress, id] { progress->removeFractionCompletedObserver(id); };
                });
        }
        FileCoordinator coordinator;
        {
            std::lock_guard lock(job->mutex);
            job->reading = &coordinator;
        }
        if (job->cancelled) {
            coordinator.cancel();
        }
        std::optional<Error> error;
        coordinator.coordinateReadingItemAtURL(
            item,
            FileCoordinator::ReadingOptions(FileCoordinator::ReadingOption::WithoutChanges) |
                FileCoordinator::ReadingOption::ResolvesSymbolicLink,
            &error, [](const Url&) {});
        {
            std::lock_guard lock(job->mutex);
            job->reading = nullptr;
        }
        if (subscription) {
            ItemProgress::removeSubscriber(subscription);
        }
        if (error && error->code() != Error::UserCancelled) {
            VLLOG(3, "Keep offline: can't download %@: %@", item, *error);
            errors.append(*error);
        }
        if (!sizes.isEmpty()) {
            done += sizes.at(i);
        }
        if (overall) {
            overall->setCompletedUnitCount(done);
        }
    }
    NetworkIndicator::sharedNetworkIndicator().hide(NetworkActivity);
    if (overall) {
        overall->unpublish();
    }
    finish();
}

void OfflineKeeper::removeDownload(const Url& url, RemoveCompletion completion) {
    VLLOG(6, "Remove download: %@", url);
    cancel(url);
    queue_->async([url, completion = std::move(completion)] {
        CloudDocuments& documents = CloudDocuments::shared();
        std::optional<Error> error = documents.setItemPinned(url, false);
        if (!error) {
            error = documents.evictDriveItem(url);
        }
        if (error) {
            VLLOG(4, "Remove download of %@ failed: %@", url, *error);
        } else {
            VLLOG(6, "Removed download of %@", url);
        }
        Dispatch::mainQueue()->async([url, error, completion] {
            if (completion) {
                completion(url, error);
            }
        });
    });
}

}  // namespace vl
