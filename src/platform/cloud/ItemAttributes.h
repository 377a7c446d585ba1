#pragma once

#include "platform/files/Url.h"

#include <QDateTime>
#include <QFlags>
#include <QImage>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace vl {

// The attributes of one drive item that the cloud documents service reads in one go. Keys are
// flags so that a caller asks for exactly the values it needs; a value that was not asked for, or
// that the item does not have (the size of a folder), is absent.
enum class ItemAttributeKey : unsigned {
    Name = 1u << 0,
    LocalizedName = 1u << 1,
    ContentType = 1u << 2,
    LocalizedTypeDescription = 1u << 3,
    FileSize = 1u << 4,
    CreationDate = 1u << 5,
    ContentModificationDate = 1u << 6,
    IsDirectory = 1u << 7,
    IsPackage = 1u << 8,
    HasHiddenExtension = 1u << 9,
    ParentDirectoryURL = 1u << 10,
    IsShared = 1u << 11,
    SharedRole = 1u << 12,
    DownloadingStatus = 1u << 13,
    // Not one of the item model's keys: made on demand, much dearer than the others.
    ThumbnailDictionary = 1u << 14,
};
Q_DECLARE_FLAGS(ItemAttributeKeys, ItemAttributeKey)
Q_DECLARE_OPERATORS_FOR_FLAGS(ItemAttributeKeys)

namespace ItemAttributeKeySets {
// The fourteen keys of the item model, in its order.
inline constexpr ItemAttributeKeys itemModelKeys() {
    return ItemAttributeKeys(0x3fffu);
}
}  // namespace ItemAttributeKeySets

// Values of the downloading-status key.
namespace DownloadingStatus {
inline const QString NotDownloaded = QStringLiteral("VLDriveItemDownloadingStatusNotDownloaded");
// A local copy exists, but the cloud has a newer version.
inline const QString Downloaded = QStringLiteral("VLDriveItemDownloadingStatusDownloaded");
// The local copy is the latest version.
inline const QString Current = QStringLiteral("VLDriveItemDownloadingStatusCurrent");
}  // namespace DownloadingStatus

// Values of the shared-role key.
namespace SharedItemRole {
inline const QString Owner = QStringLiteral("VLDriveSharedItemRoleOwner");
inline const QString Participant = QStringLiteral("VLDriveSharedItemRoleParticipant");
}  // namespace SharedItemRole

// The key of the 1024 x 1024 image (a QImage) in the thumbnail dictionary.
inline const QString Thumbnail1024x1024SizeKey = QStringLiteral("VLThumbnail1024x1024SizeKey");

struct ItemAttributes {
    std::optional<QString> name;
    std::optional<QString> localizedName;
    // A uniform type identifier from the content-type registry ("public.folder", "public.jpeg").
    std::optional<QString> contentType;
    std::optional<QString> localizedTypeDescription;
    std::optional<quint64> fileSize;
    std::optional<QDateTime> creationDate;
    std::optional<QDateTime> contentModificationDate;
    std::optional<bool> isDirectory;
    std::optional<bool> isPackage;
    std::optional<bool> hasHiddenExtension;
    std::optional<Url> parentDirectoryURL;
    std::optional<bool> isShared;
    std::optional<QString> sharedRole;         // a SharedItemRole value
    std::optional<QString> downloadingStatus;  // a DownloadingStatus value
    // Thumbnail1024x1024SizeKey -> QImage.
    std::optional<QVariantMap> thumbnailDictionary;

    // One value as a variant (a Url as QUrl, invalid when absent): the form of a single
    // attribute read by key.
    QVariant value(ItemAttributeKey key) const;
};

}  // namespace vl
