#pragma once

#include <QHash>
#include <QImage>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace vl {

// Thumbnails through the freedesktop thumbnail cache: $XDG_CACHE_HOME/thumbnails/<size>/<md5 of
// the file URI>.png with the "Thumb::URI" and "Thumb::MTime" keys. A cached thumbnail is used when
// both keys match the file; otherwise one is made with QImageReader (images only), scaled, and
// saved for the next reader. Safe from any thread; callers keep it off the main thread.
class ThumbnailCache {
public:
    // The thumbnail dictionary of a file ({Thumbnail1024x1024SizeKey: QImage}); absent when the
    // file is no image or can't be read.
    static std::optional<QVariantMap> thumbnailDictionary(const QString& path);
    // The cached or newly made thumbnail of at most `size` x `size` pixels (256, 512 or 1024).
    static std::optional<QImage> thumbnail(const QString& path, int size);
    // Where the thumbnail of `path` for `size` lives.
    static QString cachePath(const QString& path, int size);
    // The tEXt chunks of a PNG file before its image data. QImageReader::text() can't be used:
    // it splits keys at the colon, and the cache's keys contain "::".
    static QHash<QString, QString> pngTextChunks(const QString& path);
};

}  // namespace vl
