#include "toolkit/PreviewImageView.h"

#include "logging/VLLogging.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/PreviewImageCanvas.h"

#include <QImageReader>
#include <QMovie>

namespace vl {

PreviewImageView::PreviewImageView(const Url& url, QSize screenPixels, QWidget* parent)
    : PreviewContentView(url, parent), canvas_(new PreviewImageCanvas(this)) {
    canvas_->setObjectName(QStringLiteral("previewImage"));
    canvas_->setAccessibleName(url.lastPathComponent());
    setContentWidget(canvas_);
    connect(canvas_, &PreviewImageCanvas::scaleChanged, this, [this](double scale) {
        // The screen-sized copy is enough until the zoom asks for more pixels than it has.
        const QImage shown = canvas_->image();
        if (fullResolution_ || fullRequested_ || shown.isNull() || isAnimated()) {
            return;
        }
        if (scale * canvas_->fullSize().width() > shown.width() * 1.05) {
            fullRequested_ = true;
            load({}, true);
        }
    });
    load(screenPixels, false);
}

PreviewImageView::~PreviewImageView() = default;

QSize PreviewImageView::imageSize() const {
    return canvas_->fullSize();
}

void PreviewImageView::zoomToFit() {
    canvas_->zoomToFit();
}

PreviewImageView::Decoded PreviewImageView::decode(const QString& path, QSize bound) {
    Decoded decoded;
    QImageReader reader(path);
    reader.setAutoTransform(true);
    reader.setDecideFormatFromContent(true);
    const QSize stored = reader.size();
    if (!reader.canRead()) {
        decoded.error = reader.errorString();
        return decoded;
    }
    const bool turned = reader.transformation() & QImageIOHandler::TransformationRotate90;
    decoded.fullSize = turned ? stored.transposed() : stored;
    if (reader.supportsAnimation() && reader.imageCount() != 1) {
        decoded.animated = true;
        return decoded;
    }
    if (!bound.isEmpty() && stored.isValid()) {
        const QSize storedBound = turned ? bound.transposed() : bound;
        if (stored.width() > storedBound.width() || stored.height() > storedBound.height()) {
            reader.setScaledSize(stored.scaled(storedBound, Qt::KeepAspectRatio));
        }
    }
    if (!reader.read(&decoded.image)) {
        decoded.error = reader.errorString();
        decoded.image = QImage();
        return decoded;
    }
    if (!decoded.fullSize.isValid()) {
        decoded.fullSize = decoded.image.size();
    }
    // The painter's fast paths want premultiplied pixels.
    if (decoded.image.hasAlphaChannel()) {
        decoded.image.convertTo(QImage::Format_ARGB32_Premultiplied);
    } else if (decoded.image.format() != QImage::Format_RGB32) {
        decoded.image.convertTo(QImage::Format_RGB32);
    }
    return decoded;
}

void PreviewImageView::load(QSize bound, bool full) {
    QPointer<PreviewImageView> self(this);
    const QString path = url().path();
    Dispatch::globalQueue(QualityOfService::UserInitiated)->async([self, path, bound, full] {
        Decoded decoded = decode(path, bound);
        Dispatch::mainQueue()->async([self, decoded = std::move(decoded), full] {
            if (self) {
                self->present(decoded, full);
            }
        });
    });
}

void PreviewImageView::present(const Decoded& decoded, bool full) {
    if (decoded.animated) {
        startAnimation();
        return;
    }
    if (decoded.image.isNull()) {
        if (!full) {
            showFailure(format(
                Strings::localized("The picture can’t be read (%@)."),
                decoded.error.isEmpty() ? Strings::localized("unknown format") : decoded.error));
        }
        return;
    }
    fullResolution_ = full || decoded.image.size() == decoded.fullSize;
    canvas_->setImage(decoded.image, decoded.fullSize);
    describe();
    markReady();
}

void PreviewImageView::startAnimation() {
    movie_ = new QMovie(url().path(), QByteArray(), this);
    if (!movie_->isValid()) {
        showFailure(movie_->lastErrorString());
        return;
    }
    connect(movie_, &QMovie::frameChanged, this, [this] {
        canvas_->setImage(movie_->currentImage());
        if (!isReady()) {
            describe();
            markReady();
        }
    });
    connect(movie_, &QMovie::error, this, [this] {
        if (!isReady()) {
            showFailure(movie_->lastErrorString());
        }
    });
    fullResolution_ = true;
    movie_->start();
}

void PreviewImageView::describe() {
    const QSize size = canvas_->fullSize();
    canvas_->setAccessibleDescription(
        format(Strings::localized("Picture, %d × %d pixels"), size.width(), size.height()));
}

}  // namespace vl
