#pragma once

#include "preview/RoundProgressView.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QWidget>

#include <memory>

namespace vl {

class DownloadViewDelegate;
class ItemProgress;
class VLItem;

// The download screen's column: the item's name, the progress ring, the cloud and Download
// buttons (idle) or the Cancel button (downloading), and a line with the size or the bytes
// arrived so far. The buttons are reported to the delegate, which starts and cancels. Main thread
// only.
class DownloadView : public QWidget {
    Q_OBJECT
public:
    static constexpr int kSpacing = 8;
    static constexpr int kRingSize = 32;

    explicit DownloadView(QWidget* parent = nullptr);
    ~DownloadView() override;

    std::shared_ptr<DownloadViewDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<DownloadViewDelegate>& delegate) { delegate_ = delegate; }
    const std::shared_ptr<VLItem>& item() const { return item_; }
    // Shows the item, idle.
    void setItem(const std::shared_ptr<VLItem>& item);
    bool downloading() const { return downloading_; }
    void setDownloading(bool downloading);
    // Only while downloading, and only a progress with a known total.
    void updateProgress(const ItemProgress& progress);

    QLabel* filenameLabel() const { return filenameLabel_; }
    RoundProgressView* roundProgressView() const { return roundProgressView_; }
    QPushButton* cloudButton() const { return cloudButton_; }
    QPushButton* downloadButton() const { return downloadButton_; }
    QPushButton* cancelButton() const { return cancelButton_; }
    QLabel* sizeLabel() const { return sizeLabel_; }

    // The button actions.
    void startDownloading();
    void cancelDownloading();

    QString downloadButtonTitle() const;
    QString zeroProgressMsg() const;
    static QString progressMsgWithBytesCompletedOfTotal(qint64 completed, qint64 total);

private:
    std::weak_ptr<DownloadViewDelegate> delegate_;
    std::shared_ptr<VLItem> item_;
    bool downloading_ = false;
    QPointer<QLabel> filenameLabel_;
    QPointer<RoundProgressView> roundProgressView_;
    QPointer<QPushButton> cloudButton_;
    QPointer<QPushButton> downloadButton_;
    QPointer<QPushButton> cancelButton_;
    QPointer<QLabel> sizeLabel_;
};

}  // namespace vl
