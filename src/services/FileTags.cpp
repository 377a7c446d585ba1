#include "services/FileTags.h"

#include "logging/VLLogging.h"
#include "platform/app/NotificationCenter.h"
#include "platform/cloud/KeyValueStore.h"
#include "services/FileTagColors.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <memory>
#include <mutex>

namespace vl {

namespace {

struct PublishedTags {
    std::mutex mutex;  // guards table
    std::shared_ptr<const FileTags::TagTable> table = std::make_shared<FileTags::TagTable>();
};

PublishedTags& published() {
    static PublishedTags* tags = new PublishedTags;  // outlives late notifications at exit
    return *tags;
}

std::shared_ptr<const FileTags::TagTable> currentTable() {
    static std::once_flag listening;
    std::call_once(listening, [] {
        // The token is kept for the life of the process: nothing stops the listening.
        static NotificationCenter::TokenPtr token = NotificationCenter::defaultCenter().addObserver(
            Notifications::KeyValueStoreDidChangeExternally, nullptr,
            [](const Notification&) { FileTags::tagColorsDidChange(); });
        FileTags::tagColorsDidChange();
    });
    PublishedTags& tags = published();
    std::lock_guard lock(tags.mutex);
    return tags.table;
}

}  // namespace

QHash<QString, QColor> FileTags::tagColorsByTag() {
    return currentTable()->colorsByTag;
}

QStringList FileTags::allTags() {
    return currentTable()->tags;
}

const QList<QColor>& FileTags::tagBlipColors() {
    static const QList<QColor> colors{
        QColor::fromRgbF(0.8f, 0.8f, 0.8f, 1.0f),  // no colour
        QColor(145, 145, 150),                     // grey
        QColor(48, 190, 90),                       // green
        QColor(165, 90, 215),                      // purple
        QColor(30, 122, 240),                      // blue
        QColor(247, 200, 20),                      // yellow
        QColor(238, 64, 54),                       // red
        QColor(247, 146, 30),                      // orange
    };
    return colors;
}

FileTags::TagTable FileTags::tagTableFromDictionary(const QVariant& dictionary) {
    QVariantMap map;
    if (dictionary.isValid() && dictionary.canConvert<QVariantMap>()) {
        map = dictionary.toMap();
    }
    if (dictionary.isValid()) {
        const QVariant versionValue = map.value(TagDictionaryVersionKey);
        const qulonglong version = versionValue.toULongLong();
        if (version != TagDictionaryVersion) {
            VLLOG(7, "Curio tag dictionary has incorrect version (%lu, should be 2)",
                  static_cast<unsigned long>(version));
            map.clear();
        }
    }
    if (map.isEmpty()) {
        VLLOG(4, "Curio tag dictionary is empty");
    }
    TagTable table;
    const QList<QColor>& colors = tagBlipColors();
    for (const QVariant& entryValue : map.value(TagsKey).toList()) {
        const QVariantMap entry = entryValue.toMap();
        const QVariant name = entry.value(QStringLiteral("n"));
        if (!name.isValid() || name.toString().isNull()) {
            continue;
        }
        const qulonglong index = entry.value(QStringLiteral("l")).toULongLong();
        const QColor color =
            index < qulonglong(colors.size()) ? colors.at(qsizetype(index)) : colors.at(0);
        table.tags.append(name.toString());
        table.colorsByTag.insert(name.toString(), color);
    }
    return table;
}

void FileTags::tagColorsDidChange() {
    QVariant dictionary;
    if (KeyValueStore::isInstalled()) {
        dictionary = KeyValueStore::shared().objectForKey(TagDictionaryKey);
    }
    auto table = std::make_shared<const TagTable>(tagTableFromDictionary(dictionary));
    PublishedTags& tags = published();
    std::lock_guard lock(tags.mutex);
    tags.table = std::move(table);
}

QImage FileTags::blipWithTagImageSizeBlipHeightOffset(const QString& tag, const QSizeF& imageSize,
                                                      qreal blipHeight, const QPointF& offset) {
    if (tag.isNull()) {
        return {};
    }
    QImage image(std::max(1, int(std::ceil(imageSize.width()))),
                 std::max(1, int(std::ceil(imageSize.height()))),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const auto colors = tagColorsByTag();
    const auto found = colors.constFind(tag);
    if (found != colors.constEnd()) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(*found);
        painter.drawEllipse(QRectF(offset, QSizeF(blipHeight, blipHeight)));
    }
    return image;
}

QImage FileTags::blipWithTagsHeightScale(const QStringList& tags, qreal height, qreal scale) {
    if (tags.isEmpty() || scale <= 0) {
        return {};
    }
    const qreal step = height / 2;
    const qreal diameter = std::ceil(height);
    const QSizeF size(diameter + step * qreal(tags.size() - 1), diameter);
    QImage image(std::max(1, int(std::ceil(size.width() * scale))),
                 std::max(1, int(std::ceil(size.height() * scale))),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    const auto colors = tagColorsByTag();
    const QColor halfWhite = QColor::fromRgbF(1, 1, 1, 0.5f);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    for (qsizetype i = 0; i < tags.size(); ++i) {
        const QRectF square =
            QRectF(qreal(i) * step, 0, diameter, diameter).adjusted(0.5, 0.5, -0.5, -0.5);
        const QColor color = colors.value(tags.at(i));
        QPainterPath circle;
        circle.addEllipse(square);
        if (color.isValid()) {
            painter.fillPath(circle, color);
            painter.strokePath(circle,
                               QPen(FileTagColors::colorBlendedWithColor(color, halfWhite), 1.0));
        }
    }
    return image;
}

}  // namespace vl
