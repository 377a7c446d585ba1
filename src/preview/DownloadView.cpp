#include "preview/DownloadView.h"

#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "preview/DownloadViewDelegate.h"
#include "preview/RoundProgressView.h"

#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vl {

namespace {

// A text button as the toolkit's bars draw them: blue text on nothing, large enough for a finger.
QPushButton* textButton(const QString& title) {
    auto* button = new QPushButton(title);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(QStringLiteral(
        "QPushButton { color: #007aff; border: none; background: transparent; font-size: 17px;"
        " padding: 6px 12px; min-height: 32px; }"
        "QPushButton:pressed { color: #66aaff; }"));
    return button;
}

void pinVertically(QWidget* view) {
    QSizePolicy policy = view->sizePolicy();
    policy.setVerticalPolicy(QSizePolicy::Fixed);
    view->setSizePolicy(policy);
}

}  // namespace

DownloadView::DownloadView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("downloadView"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kSpacing);
    layout->setAlignment(Qt::AlignHCenter);

    filenameLabel_ = new QLabel;
    filenameLabel_->setObjectName(QStringLiteral("filenameLabel"));
    filenameLabel_->setAlignment(Qt::AlignCenter);
    filenameLabel_->setWordWrap(true);

    roundProgressView_ =
        new RoundProgressView(QRect(0, 0, kRingSize, kRingSize), RoundProgressView::StyleGrey);
    roundProgressView_->setObjectName(QStringLiteral("roundProgressView"));
    roundProgressView_->setFixedSize(kRingSize, kRingSize);

    cloudButton_ = new QPushButton;
    cloudButton_->setObjectName(QStringLiteral("cloudButton"));
    cloudButton_->setIcon(QIcon(QStringLiteral(":/icons/Cloudload.svg")));
    cloudButton_->setIconSize(QSize(kRingSize, kRingSize));
    cloudButton_->setFixedSize(roundProgressView_->size());
    cloudButton_->setFlat(true);
    cloudButton_->setCursor(Qt::PointingHandCursor);
    cloudButton_->setStyleSheet(
        QStringLiteral("QPushButton { border: none; background: transparent; padding: 0; }"));
    cloudButton_->setAccessibleName(Strings::localized("Download from the Cloud"));

    downloadButton_ = textButton(downloadButtonTitle());
    downloadButton_->setObjectName(QStringLiteral("downloadButton"));
    cancelButton_ = textButton(Strings::localized("Cancel Download"));
    cancelButton_->setObjectName(QStringLiteral("cancelButton"));
    cancelButton_->hide();

    sizeLabel_ = new QLabel;
    sizeLabel_->setObjectName(QStringLiteral("sizeLabel"));
    sizeLabel_->setAlignment(Qt::AlignCenter);
    QPalette palette = sizeLabel_->palette();
    palette.setColor(QPalette::WindowText, QColor(0x8e, 0x8e, 0x93));
    sizeLabel_->setPalette(palette);

    const QList<QWidget*> children{filenameLabel_,  roundProgressView_, cloudButton_,
                                   downloadButton_, cancelButton_,      sizeLabel_};
    for (QWidget* child : children) {
        pinVertically(child);
        layout->addWidget(child, 0, Qt::AlignHCenter);
    }
    pinVertically(this);

    connect(cloudButton_, &QPushButton::clicked, this, &DownloadView::startDownloading);
    connect(downloadButton_, &QPushButton::clicked, this, &DownloadView::startDownloading);
    connect(cancelButton_, &QPushButton::clicked, this, &DownloadView::cancelDownloading);
    setDownloading(false);
}

DownloadView::~DownloadView() = default;

QString DownloadView::downloadButtonTitle() const {
    return !item_ || item_->canPreview() ? Strings::localized("Download to View")
                                         : Strings::localized("Download");
}

void DownloadView::setItem(const std::shared_ptr<VLItem>& item) {
    item_ = item;
    const QString name = item_ ? item_->localizedName() : QString();
    filenameLabel_->setText(name);
    sizeLabel_->setText(item_ ? item_->friendlyFileSize() : QString());
    downloadButton_->setText(downloadButtonTitle());
    setDownloading(false);
}

void DownloadView::setDownloading(bool downloading) {
    downloading_ = downloading;
    cloudButton_->setVisible(!downloading);
    downloadButton_->setVisible(!downloading);
    cancelButton_->setVisible(downloading);
    roundProgressView_->setVisible(downloading);
    if (downloading) {
        sizeLabel_->setText(zeroProgressMsg());
    } else {
        roundProgressView_->resetProgress();
        sizeLabel_->setText(item_ ? item_->friendlyFileSize() : QString());
    }
}

QString DownloadView::zeroProgressMsg() const {
    if (item_ && item_->fileSize()) {
        return progressMsgWithBytesCompletedOfTotal(0, qint64(*item_->fileSize()));
    }
    return Strings::localized("Loading…");
}

QString DownloadView::progressMsgWithBytesCompletedOfTotal(qint64 completed, qint64 total) {
    return vl::format(Strings::localized("%1$@ of %2$@"),
                      VLItem::friendlyByteCount(quint64(std::max<qint64>(completed, 0))),
                      VLItem::friendlyByteCount(quint64(std::max<qint64>(total, 0))));
}

void DownloadView::updateProgress(const ItemProgress& progress) {
    if (!downloading_) {
        VLLOG(4, "Received progress when not downloading");
        return;
    }
    const qint64 total = progress.totalUnitCount();
    if (total <= 0) {
        return;
    }
    const qint64 completed = progress.completedUnitCount();
    roundProgressView_->setProgress(float(progress.fractionCompleted()));
    sizeLabel_->setText(progressMsgWithBytesCompletedOfTotal(completed, total));
}

void DownloadView::startDownloading() {
    VLLOG(6, "Pressed Start download...");
    if (const auto delegate = delegate_.lock()) {
        delegate->downloadViewDidPressStartDownload(*this, item_ ? item_->url() : Url());
    }
}

void DownloadView::cancelDownloading() {
    VLLOG(6, "Pressed Cancel download...");
    roundProgressView_->resetProgress();
    if (const auto delegate = delegate_.lock()) {
        delegate->downloadViewDidPressCancelDownload(*this, item_ ? item_->url() : Url());
    }
}

}  // namespace vl
