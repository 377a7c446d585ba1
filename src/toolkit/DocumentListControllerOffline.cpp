// The folder list's part in keeping items offline: the download progress of the rows on screen
// and the pinned marks, read again when pins change.

#include "toolkit/DocumentListController.h"

#include "toolkit/DocumentListModel.h"
#include "toolkit/DocumentListProgress.h"

#include <QEvent>
#include <QScrollBar>

namespace vl {

namespace {

// Subscribes again whenever the viewport's size changes.
class ViewportResizeWatcher : public QObject {
public:
    ViewportResizeWatcher(QObject* parent, DocumentListProgress* progress)
        : QObject(parent), progress_(progress) {}
    bool eventFilter(QObject*, QEvent* event) override {
        if ((event->type() == QEvent::Resize || event->type() == QEvent::Show) && progress_) {
            progress_->scheduleSubscriptionUpdate();
        }
        return false;
    }

private:
    QPointer<DocumentListProgress> progress_;
};

}  // namespace

void DocumentListController::followDownloadsAndPins() {
    progress_ = new DocumentListProgress(listView_, model_.get());
    DocumentListProgress* progress = progress_;
    const auto update = [progress] { progress->scheduleSubscriptionUpdate(); };
    connect(listView_->verticalScrollBar(), &QScrollBar::valueChanged, progress, update);
    connect(model_.get(), &QAbstractItemModel::modelReset, progress, update);
    connect(model_.get(), &QAbstractItemModel::layoutChanged, progress, update);
    listView_->viewport()->installEventFilter(new ViewportResizeWatcher(progress, progress));
    progress->scheduleSubscriptionUpdate();

    const QPointer<DocumentListController> self(this);
    pinningObserver_ = NotificationCenter::defaultCenter().addObserver(
        Notifications::DriveItemPinningDidChange, Dispatch::mainQueue(),
        [self](const Notification& notification) {
            if (!self) {
                return;
            }
            const Url changed =
                Url::fromQUrl(notification.userInfo.value(QStringLiteral("url")).toUrl());
            // The folder's rows change when one of them, the folder or a folder above it is
            // pinned or unpinned.
            if (changed.isAncestorOf(self->presentedURL_) ||
                changed.deletingLastPathComponent() == self->presentedURL_) {
                self->reloadData();
            }
        });
}

}  // namespace vl
