#pragma once

#include "preview/DownloadView.h"
#include "preview/DownloadViewDelegate.h"
#include "preview/PreviewBaseViewController.h"
#include "preview/ThumbnailImageView.h"

#include <QPointer>

#include <atomic>
#include <memory>
#include <mutex>

class QBoxLayout;

namespace vl {

// The screen of an item whose content is only in the cloud: its picture beside or above a
// column with its name, the progress ring and the buttons that start and cancel the download
// through the screen's manager. Stacked in a portrait page, side by side in a landscape one.
// Main thread only, except updateProgress, which carries progress from any thread to the main
// thread.
class PreviewDownloadViewController : public PreviewBaseViewController,
                                      public DownloadViewDelegate {
    Q_OBJECT
public:
    static constexpr int kStackSpacing = 15;

    PreviewDownloadViewController();
    ~PreviewDownloadViewController() override;

    bool downloading() const { return downloading_; }
    // May come before the view exists: viewWillAppear passes it on.
    void setDownloading(bool downloading);

    QWidget* mainStackView() const { return mainStackView_; }
    DownloadView* downloadView() const { return downloadView_; }
    ThumbnailImageView* thumbnailView() const { return thumbnailView_; }
    // The arrangement shown: true side by side, false stacked.
    bool isSideBySide() const { return sideBySide_; }

    void refreshItem() override;
    void updateProgress(ItemProgress& progress) override;
    void adjustViewsForOrientation(int orientation);
    // The window changed shape: the arrangement follows on the next turn of the main queue.
    void viewWillTransitionToSize(const QSize& size);
    void viewWillAppear(bool animated) override;

    void downloadViewDidPressStartDownload(DownloadView& view, const Url& url) override;
    void downloadViewDidPressCancelDownload(DownloadView& view, const Url& url) override;

protected:
    void viewDidLoad() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setupViewsAndConstraints();
    void deliverProgress();

    bool downloading_ = false;
    QPointer<QWidget> mainStackView_;
    QBoxLayout* mainLayout_ = nullptr;
    QPointer<DownloadView> downloadView_;
    QPointer<ThumbnailImageView> thumbnailView_;
    bool sideBySide_ = false;
    QPointer<QWidget> watchedWindow_;

    // Progress arrives on the downloading thread; the main thread shows the latest of it, and
    // at most one delivery waits in the main queue however fast it comes.
    std::mutex pendingProgressMutex_;  // guards pendingProgress_
    std::shared_ptr<ItemProgress> pendingProgress_;
    std::atomic<bool> progressDeliveryQueued_{false};
};

}  // namespace vl
