#include "drive/store/ThumbnailCache.h"

#include "logging/VLLogging.h"
#include "platform/cloud/ItemAttributes.h"

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

QHash<QString, QString> ThumbnailCache::pngTextChunks(const QString& path) {
    QHash<QString, QString> text;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.read(8) != QByteArray("\x89PNG\r\n\x1a\n", 8)) {
        return text;
    }
    for (;;) {
        const QByteArray header = file.read(8);
        if (header.size() != 8) {
            break;
        }
        const quint32 length = (quint32(uchar(header[0])) << 24) |
                               (quint32(uchar(header[1])) << 16) |
                               (quint32(uchar(header[2])) << 8) | quint32(uchar(header[3]));
        const QByteArray type = header.mid(4, 4);
        if (type == "IDAT" || type == "IEND" || length > (1u << 20)) {
            break;
        }
        const QByteArray data = file.read(length);
        file.read(4);  // CRC
        const qsizetype zero = data.indexOf('\0');
        if (zero <= 0) {
            continue;
        }
        const QString key = QString::fromLatin1(data.left(zero));
        if (type == "tEXt") {
            text.insert(key, QString::fromLatin1(data.mid(zero + 1)));
        } else if (type == "zTXt" && data.size() > zero + 2) {
            // zlib data; qUncompress wants the expected length in front.
            text.insert(key, QString::fromLatin1(
                                 qUncompress(QByteArray("\0\0\x10\0", 4) + data.mid(zero + 2))));
        } else if (type == "iTXt" && data.size() > zero + 3) {
            const bool compressed = data.at(zero + 1) != 0;
            const qsizetype language = data.indexOf('\0', zero + 3);
            const qsizetype translated = language < 0 ? -1 : data.indexOf('\0', language + 1);
            if (translated < 0) {
                continue;
            }
            const QByteArray value = data.mid(translated + 1);
            text.insert(
                key, QString::fromUtf8(compressed ? qUncompress(QByteArray("\0\0\x10\0", 4) + value)
                                                  : value));
        }
    }
    return text;
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
        const QHash<QString, QString> text = pngTextChunks(cached);
        if (text.value(QStringLiteral("Thumb::URI")) == uri &&
            text.value(QStringLiteral("Thumb::MTime")) == mtime) {
            // Only the built-in reader: left to guess, Qt asks every image format plugin
            // whether it reads PNG too, loading them all.
            QImageReader cache(cached, "png");
            cache.setAutoDetectImageFormat(false);
            const QImage image = cache.read();
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
