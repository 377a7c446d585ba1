#include "toolkit/DocumentListProgress.h"

#include "platform/dispatch/Dispatch.h"
#include "toolkit/DocumentListModel.h"

#include <QListView>
#include <QSet>

#include <chrono>
#include <mutex>

namespace vl {

// What the progress handlers share with the list; they run on the threads that publish and
// advance downloads.
struct DocumentListProgress::Shared {
    std::mutex mutex;
    QHash<Url, double> fractions;          // guarded by mutex: the downloads under way, by row URL
    bool applyScheduled = false;           // guarded by mutex
    QPointer<DocumentListProgress> owner;  // read on the main queue only

    void changed(const Url& url, std::optional<double> fraction,
                 const std::shared_ptr<Shared>& self) {
        std::lock_guard lock(mutex);
        if (fraction) {
            fractions.insert(url, *fraction);
        } else {
            fractions.remove(url);
        }
        if (applyScheduled) {
            return;
        }
        applyScheduled = true;
        Dispatch::mainQueue()->after(std::chrono::milliseconds(UpdateIntervalMs), [self] {
            if (self->owner) {
                self->owner->applyFractions();
            }
        });
    }
};

DocumentListProgress::DocumentListProgress(QListView* view, DocumentListModel* model)
    : QObject(view), view_(view), model_(model), shared_(std::make_shared<Shared>()) {
    shared_->owner = this;
}

DocumentListProgress::~DocumentListProgress() {
    for (const ItemProgress::SubscriptionToken& token : subscriptions_) {
        ItemProgress::removeSubscriber(token);
    }
}

void DocumentListProgress::scheduleSubscriptionUpdate() {
    if (updatePending_) {
        return;
    }
    updatePending_ = true;
    Dispatch::mainQueue()->async([self = QPointer<DocumentListProgress>(this)] {
        if (self) {
            self->updatePending_ = false;
            self->updateSubscriptions();
        }
    });
}

void DocumentListProgress::updateSubscriptions() {
    if (!view_ || !model_) {
        return;
    }
    // The rows on screen, in display order from the first one at the top (list and grid alike).
    QSet<Url> visible;
    const int rows = model_->rowCount();
    if (rows > 0 && view_->isVisible()) {
        const QRect area = view_->viewport()->rect();
        QModelIndex first = view_->indexAt(QPoint(2, 2));
        int row = first.isValid() ? first.row() : 0;
        for (; row < rows; ++row) {
            const QRect rect = view_->visualRect(model_->index(row));
            if (rect.top() > area.bottom()) {
                break;
            }
            if (rect.intersects(area)) {
                visible.insert(model_->entryAt(row).url());
            }
        }
    }
    for (auto it = subscriptions_.begin(); it != subscriptions_.end();) {
        if (!visible.contains(it.key())) {
            ItemProgress::removeSubscriber(it.value());
            it = subscriptions_.erase(it);
        } else {
            ++it;
        }
    }
    for (const Url& url : visible) {
        if (!subscriptions_.contains(url)) {
            subscribe(url);
        }
    }
}

void DocumentListProgress::subscribe(const Url& url) {
    const std::weak_ptr<Shared> weakShared = shared_;
    subscriptions_.insert(
        url, ItemProgress::addSubscriberForFileURL(
                 url,
                 [weakShared, url](const std::shared_ptr<ItemProgress>& progress)
                     -> ItemProgress::UnpublishingHandler {
                     // A folder's subscription hears of the items inside it too: its row
                     // shows only the progress of the folder itself.
                     const std::shared_ptr<Shared> shared = weakShared.lock();
                     if (!shared || progress->fileURL() != url) {
                         return {};
                     }
                     shared->changed(url, progress->fractionCompleted(), shared);
                     const ItemProgress::ObserverId id =
                         progress->addFractionCompletedObserver([weakShared, url](ItemProgress& p) {
                             if (const std::shared_ptr<Shared> s = weakShared.lock()) {
                                 s->changed(url, p.fractionCompleted(), s);
                             }
                         });
                     return [weakShared, url, progress, id] {
                         progress->removeFractionCompletedObserver(id);
                         if (const std::shared_ptr<Shared> s = weakShared.lock()) {
                             s->changed(url, std::nullopt, s);
                         }
                     };
                 }));
}

void DocumentListProgress::applyFractions() {
    QHash<Url, double> fractions;
    {
        std::lock_guard lock(shared_->mutex);
        shared_->applyScheduled = false;
        fractions = shared_->fractions;
    }
    if (!model_) {
        return;
    }
    for (auto it = applied_.cbegin(); it != applied_.cend(); ++it) {
        if (!fractions.contains(it.key())) {
            model_->setProgress(it.key(), std::nullopt);
        }
    }
    for (auto it = fractions.cbegin(); it != fractions.cend(); ++it) {
        if (applied_.value(it.key(), -1) != it.value()) {
            model_->setProgress(it.key(), it.value());
        }
    }
    applied_ = std::move(fractions);
}

}  // namespace vl
