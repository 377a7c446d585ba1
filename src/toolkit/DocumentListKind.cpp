#include "toolkit/DocumentListKind.h"

#include "toolkit/DocumentThumbnailLoader.h"
#include "toolkit/ToolkitIcons.h"

#include <QHash>

#include <deque>
#include <mutex>

namespace vl {

DocumentListKind::DocumentListKind(QString contentType, QString iconName, QString genericIconName)
    : contentType_(std::move(contentType)),
      iconName_(std::move(iconName)),
      genericIconName_(std::move(genericIconName)),
      wantsThumbnail_(DocumentThumbnailLoader::wantsThumbnail(contentType_)) {}

const DocumentListKind* DocumentListKind::intern(const QString& contentType,
                                                 const QString& iconName,
                                                 const QString& genericIconName) {
    static std::mutex mutex;
    // Guarded by `mutex`; a deque keeps the kinds where they are as it grows.
    static std::deque<DocumentListKind> kinds;
    static QHash<QString, const DocumentListKind*> byKey;
    const QString key =
        contentType + QLatin1Char('\n') + iconName + QLatin1Char('\n') + genericIconName;
    std::lock_guard lock(mutex);
    if (const auto found = byKey.constFind(key); found != byKey.constEnd()) {
        return *found;
    }
    const DocumentListKind* kind = &kinds.emplace_back(contentType, iconName, genericIconName);
    byKey.insert(key, kind);
    return kind;
}

const DocumentListKind* DocumentListKind::folder() {
    static const DocumentListKind* const kind = intern({}, QStringLiteral("folder"));
    return kind;
}

const DocumentListKind* DocumentListKind::appLibrary() {
    static const DocumentListKind* const kind =
        intern({}, QStringLiteral("folder-remote"), QStringLiteral("folder"));
    return kind;
}

QIcon DocumentListKind::icon() const {
    if (icon_.isNull()) {
        icon_ = ToolkitIcons::icon(iconName_, genericIconName_);
    }
    return icon_;
}

QIcon DocumentListKind::cloudOnlyIcon() const {
    if (cloudOnlyIcon_.isNull()) {
        cloudOnlyIcon_ = ToolkitIcons::cloudOnlyIcon(iconName_, genericIconName_);
    }
    return cloudOnlyIcon_;
}

}  // namespace vl
