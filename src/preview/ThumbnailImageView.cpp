#include "preview/ThumbnailImageView.h"

#include "model/VLItem.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/files/ContentTypeRegistry.h"
#include "toolkit/PieProgressIndicatorView.h"
#include "toolkit/ToolkitIcons.h"

#include <QPainter>
#include <QPointer>

namespace vl {

ThumbnailImageView::ThumbnailImageView(QWidget* parent)
    : QWidget(parent), progressView_(new PieProgressIndicatorView(this)) {
    progressView_->resize(kPieSize, kPieSize);
    progressView_->hide();
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ThumbnailImageView::setItem(const std::shared_ptr<VLItem>& item) {
    item_ = item;
    if (!item) {
        return;
    }
    // The type's icon at once. The thumbnail is read through the drive and decoded, which may
    // take a while for a large picture: never on the main thread, and with an item of its own
    // there, since the screen's item may change meanwhile.
    showGenericImage();
    QPointer<ThumbnailImageView> self(this);
    const Url url = item->url();
    Dispatch::globalQueue(QualityOfService::UserInitiated)->async([self, url] {
        const std::shared_ptr<VLItem> reader = VLItem::initWithURL(url);
        QImage thumbnail = reader ? reader->thumbnail() : QImage();
        if (thumbnail.isNull()) {
            return;
        }
        Dispatch::mainQueue()->async([self, url, thumbnail = std::move(thumbnail)] {
            if (self && self->item_ && self->item_->url() == url) {
                self->setImage(thumbnail);
            }
        });
    });
}

void ThumbnailImageView::showGenericImage() {
    if (!item_) {
        return;
    }
    const ContentTypeRegistry& types = ContentTypeRegistry::shared();
    QString type = item_->typeIdentifier();
    if (type.isEmpty()) {
        type = types.identifierForFileName(item_->resolvedURL().lastPathComponent(),
                                           item_->isDirectory());
    }
    const QIcon icon = ToolkitIcons::icon(types.iconName(type), types.genericIconName(type));
    setImage(icon.pixmap(QSize(kIconSize, kIconSize)).toImage());
}

void ThumbnailImageView::setImage(const QImage& image) {
    image_ = image;
    setAccessibleName(item_ ? item_->localizedName() : QString());
    placeProgressView();
    updateGeometry();
    update();
}

void ThumbnailImageView::showProgress(bool show) {
    if (show) {
        progressView_->setProgress(0);
        progressView_->show();
        progressView_->raise();
    } else {
        progressView_->hide();
    }
}

void ThumbnailImageView::updateProgress(double progress) {
    if (!progressView_->isHidden()) {
        progressView_->setProgress(float(progress));
    }
}

QRect ThumbnailImageView::imageRect() const {
    if (image_.isNull()) {
        return {};
    }
    const QSizeF natural = image_.deviceIndependentSize();
    QSizeF fitted = natural;
    if (fitted.width() > width() || fitted.height() > height()) {
        fitted = natural.scaled(size(), Qt::KeepAspectRatio);
    }
    const QSize shown = fitted.toSize();
    return QRect(QPoint((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown);
}

QSize ThumbnailImageView::sizeHint() const {
    return image_.isNull() ? QSize(kIconSize, kIconSize) / 4
                           : image_.deviceIndependentSize().toSize().boundedTo(QSize(320, 320));
}

QSize ThumbnailImageView::minimumSizeHint() const {
    return QSize(kPieSize * 2, kPieSize * 2);
}

void ThumbnailImageView::paintEvent(QPaintEvent*) {
    if (image_.isNull()) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(imageRect(), image_);
}

void ThumbnailImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeProgressView();
}

void ThumbnailImageView::placeProgressView() {
    const QRect picture = imageRect().isNull() ? rect() : imageRect();
    const int x =
        layoutDirection() == Qt::RightToLeft ? picture.left() : picture.right() + 1 - kPieSize;
    progressView_->move(x, picture.bottom() + 1 - kPieSize);
}

}  // namespace vl
