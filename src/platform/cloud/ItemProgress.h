#pragma once

#include "platform/files/Url.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vl {

// The progress of one piece of work on a file (a download), published for the file's URL so that
// anyone in the process can follow it: a kind, completed and total unit counts (bytes for the
// file kind), the fraction completed, and observation of that fraction.
//
// Every member may be used from any thread. Fraction observers run synchronously on the thread
// that changed the counts; once removeFractionCompletedObserver returns, the observer is not
// running and will not run again (it may remove itself from inside its own call). Observers must
// not wait for other threads.
//
// Subscriptions: addSubscriberForFileURL calls its publishing handler once for every progress
// object published for that URL or for an item inside it (at once for those already published),
// on the publishing or subscribing thread. The handler returns an unpublishing handler, called
// when that progress is unpublished or when the subscription is removed, whichever comes first;
// for one progress object the unpublishing handler always runs after its publishing handler.
// Handlers may remove subscriptions, their own included.
class ItemProgress : public std::enable_shared_from_this<ItemProgress> {
public:
    // The kind of a progress that transfers a file.
    static inline const QString FileKind = QStringLiteral("VLProgressKindFile");

    using FractionObserver = std::function<void(ItemProgress& progress)>;
    using ObserverId = quint64;
    using UnpublishingHandler = std::function<void()>;
    using PublishingHandler =
        std::function<UnpublishingHandler(const std::shared_ptr<ItemProgress>& progress)>;
    class Subscription;
    // Opaque; null means no subscription.
    using SubscriptionToken = std::shared_ptr<Subscription>;

    static std::shared_ptr<ItemProgress> create(qint64 totalUnitCount = -1);
    ~ItemProgress();

    QString kind() const;
    void setKind(const QString& kind);
    // The file the progress is about; set before publish().
    std::optional<Url> fileURL() const;
    void setFileURL(const Url& url);

    // A negative total means indeterminate.
    qint64 totalUnitCount() const { return total_.load(); }
    qint64 completedUnitCount() const { return completed_.load(); }
    void setTotalUnitCount(qint64 total);
    void setCompletedUnitCount(qint64 completed);
    // completed / total, 0 while indeterminate or empty.
    double fractionCompleted() const;
    bool isFinished() const;

    ObserverId addFractionCompletedObserver(FractionObserver observer);
    void removeFractionCompletedObserver(ObserverId id);

    // Makes the progress known to the subscribers of its file URL. Publishing twice, or
    // unpublishing what is not published, does nothing.
    void publish();
    void unpublish();

    static SubscriptionToken addSubscriberForFileURL(const Url& url, PublishingHandler handler);
    static void removeSubscriber(const SubscriptionToken& token);

    // "<ItemProgress 0x...> kind: ..., completed: 5 of 10, fraction: 0.5000"
    QString description() const;

private:
    ItemProgress() = default;
    void notifyObservers();

    std::atomic<qint64> total_{-1};
    std::atomic<qint64> completed_{0};
    mutable std::mutex mutex_;  // guards kind_, fileURL_
    QString kind_;
    std::optional<Url> fileURL_;

    struct Observation {
        ObserverId id;
        FractionObserver observer;
    };
    // Held while observers run, so that removal waits for a running observer.
    std::recursive_mutex observersMutex_;  // guards observers_, nextObserverId_
    std::vector<Observation> observers_;
    ObserverId nextObserverId_ = 1;
};

}  // namespace vl
