#include "drive/ThumbnailCache.h"

#include "logging/VLLogging.h"
#include "platform/ItemAttributes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

namespace vl {

namespace {

const char* folderFor(int size) {
    if (size <= 256) {
        return "large";
    }
    if (size <= 512) {
        return "x-large";
    }
    return "xx-large";
}

QString fileURI(const QString& path) {
    return QString::fromUtf8(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded());
}

}  // namespace

QString ThumbnailCache::cachePath(const QString& path, int size) {
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QByteArray digest =
        QCryptographicHash::hash(fileURI(path).toUtf8(), QCryptographicHash::Md5).toHex();
    return cache + QStringLiteral("/thumbnails/") + QLatin1String(folderFor(size)) +
           QLatin1Char('/') + QString::fromLatin1(digest) + QStringLiteral(".png");
}

std::optional<QImage> ThumbnailCache::thumbnail(const QString& path, int size) {
    const QFileInfo info(path);
    if (!info.isFile()) {
        return std::nullopt;
    }
    const QString uri = fileURI(path);
    const QString mtime = QString::number(info.lastModified().toSecsSinceEpoch());
    const QString cached = cachePath(path, size);
    {
        QImageReader reader(cached, "png");
        if (reader.canRead() && reader.text(QStringLiteral("Thumb::URI")) == uri &&
            reader.text(QStringLiteral("Thumb::MTime")) == mtime) {
            QImage image = reader.read();
            if (!image.isNull()) {
                return image;
            }
        }
    }
    // Decided by the name: reading a non-image's bytes to guess would be wasted work.
    QImageReader reader(path);
    reader.setDecideFormatFromContent(false);
    if (!reader.canRead()) {
        return std::nullopt;
    }
    reader.setAutoTransform(true);
    const QSize original = reader.size();
    if (original.isValid() && (original.width() > size || original.height() > size)) {
        reader.setScaledSize(original.scaled(size, size, Qt::KeepAspectRatio));
    }
    QImage image = reader.read();
    if (image.isNull()) {
        VLLOG(4, "Failed to make a thumbnail of %@: %@", path, reader.errorString());
        return std::nullopt;
    }
    if (image.width() > size || image.height() > size) {
        image = image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    image.setText(QStringLiteral("Thumb::URI"), uri);
    image.setText(QStringLiteral("Thumb::MTime"), mtime);
    image.setText(QStringLiteral("Thumb::Size"), QString::number(info.size()));
    QDir().mkpath(QFileInfo(cached).path());
    QFile::setPermissions(QFileInfo(cached).path(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QSaveFile file(cached);
    if (file.open(QIODevice::WriteOnly)) {
        QImageWriter writer(&file, "png");
        if (writer.write(image)) {
            file.commit();
            QFile::setPermissions(cached, QFile::ReadOwner | QFile::WriteOwner);
        } else {
            file.cancelWriting();
        }
    }
    return image;
}

std::optional<QVariantMap> ThumbnailCache::thumbnailDictionary(const QString& path) {
    const std::optional<QImage> image = thumbnail(path, 1024);
    if (!image) {
        return std::nullopt;
    }
    return QVariantMap{{Thumbnail1024x1024SizeKey, *image}};
}

}  // namespace vl
