#include "toolkit/DocumentThumbnailLoader.h"

#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/ItemAttributes.h"
#include "toolkit/ToolkitIcons.h"

#include <QPainter>
#include <QPixmap>

namespace vl {

// What the queue's blocks need after the loader may be gone: they hold this weakly.
struct DocumentThumbnailLoader::Shared {
    DispatchQueuePtr queue = Dispatch::serialQueue(
        QStringLiteral("com.tessaly.VelloraApp.DocumentThumbnails"), QualityOfService::Utility);
    std::function<void(const Url&, bool, const QImage&)> deliver;  // main thread
};

DocumentThumbnailLoader::DocumentThumbnailLoader(std::function<void(const Url&)> ready)
    : shared_(std::make_shared<Shared>()), ready_(std::move(ready)) {
    shared_->deliver = [this](const Url& url, bool cloudOnly, const QImage& image) {
        icons_.insert({url, cloudOnly}, QIcon(QPixmap::fromImage(image)));
        if (ready_) {
            ready_(url);
        }
    };
}

DocumentThumbnailLoader::~DocumentThumbnailLoader() = default;

bool DocumentThumbnailLoader::wantsThumbnail(const QString& contentType) {
    return contentType.startsWith(QLatin1String("image/")) ||
           contentType.startsWith(QLatin1String("video/")) ||
           contentType == QLatin1String("application/pdf");
}

QIcon DocumentThumbnailLoader::thumbnail(const Url& url, int size, bool cloudOnly) {
    const std::pair<Url, bool> key{url, cloudOnly};
    if (const auto found = icons_.constFind(key); found != icons_.constEnd()) {
        return *found;
    }
    if (requested_.contains(key) || !CloudDocuments::isInstalled()) {
        return {};
    }
    requested_.insert(key);
    const std::weak_ptr<Shared> weak = shared_;
    shared_->queue->async([weak, url, size, cloudOnly] {
        const std::optional<ItemAttributes> attributes =
            CloudDocuments::shared().promisedItemResourceValues(
                url, ItemAttributeKey::ThumbnailDictionary, nullptr);
        if (!attributes || !attributes->thumbnailDictionary) {
            return;
        }
        const QImage image =
            attributes->thumbnailDictionary->value(Thumbnail1024x1024SizeKey).value<QImage>();
        if (image.isNull()) {
            return;
        }
        // Scaled here, so the main thread only wraps it; centred on a square, so every row
        // keeps the height of an icon's.
        const QImage fitted =
            image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QImage scaled(size, size, QImage::Format_ARGB32_Premultiplied);
        scaled.fill(Qt::transparent);
        QPainter painter(&scaled);
        painter.setOpacity(cloudOnly ? 0.55 : 1.0);
        painter.drawImage((size - fitted.width()) / 2, (size - fitted.height()) / 2, fitted);
        if (cloudOnly) {
            painter.setOpacity(1.0);
            ToolkitIcons::drawCloudMark(painter, size);
        }
        painter.end();
        Dispatch::mainQueue()->async([weak, url, cloudOnly, scaled = std::move(scaled)] {
            if (const std::shared_ptr<Shared> shared = weak.lock(); shared && shared->deliver) {
                shared->deliver(url, cloudOnly, scaled);
            }
        });
    });
    return {};
}

}  // namespace vl
