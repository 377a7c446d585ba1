#pragma once

#include "platform/cloud/ItemProgress.h"
#include "platform/files/Url.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <memory>

class QListView;

namespace vl {

class DocumentListModel;

// The download progress of the rows a folder list shows. It subscribes to the published progress
// of the rows on screen only (a folder of 100,000 items costs as much as one screenful), follows
// each download's fraction on whatever thread changes it, and hands the fractions to the model on
// the main queue at most every UpdateInterval, so a fast download repaints a row a few times a
// second rather than once per chunk. Main thread, except the progress handlers.
class DocumentListProgress : public QObject {
    Q_OBJECT
public:
    static constexpr int UpdateIntervalMs = 66;

    DocumentListProgress(QListView* view, DocumentListModel* model);
    ~DocumentListProgress() override;

    // Subscribes to the rows now on screen and drops the others, on the next main-queue turn.
    void scheduleSubscriptionUpdate();
    // The URLs subscribed to.
    QList<Url> subscribedURLs() const { return subscriptions_.keys(); }

private:
    struct Shared;
    void updateSubscriptions();
    void subscribe(const Url& url);
    // Main queue: gives the model the fractions that changed.
    void applyFractions();

    QPointer<QListView> view_;
    QPointer<DocumentListModel> model_;
    const std::shared_ptr<Shared> shared_;
    QHash<Url, ItemProgress::SubscriptionToken> subscriptions_;
    QHash<Url, double> applied_;
    bool updatePending_ = false;
};

}  // namespace vl
