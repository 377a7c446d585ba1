#include "platform/cloud/ItemAttributes.h"

namespace vl {

namespace {

template <typename T>
QVariant variantOf(const std::optional<T>& value) {
    return value ? QVariant::fromValue(*value) : QVariant();
}

}  // namespace

QVariant ItemAttributes::value(ItemAttributeKey key) const {
    switch (key) {
        case ItemAttributeKey::Name:
            return variantOf(name);
        case ItemAttributeKey::LocalizedName:
            return variantOf(localizedName);
        case ItemAttributeKey::ContentType:
            return variantOf(contentType);
        case ItemAttributeKey::LocalizedTypeDescription:
            return variantOf(localizedTypeDescription);
        case ItemAttributeKey::FileSize:
            return variantOf(fileSize);
        case ItemAttributeKey::CreationDate:
            return variantOf(creationDate);
        case ItemAttributeKey::ContentModificationDate:
            return variantOf(contentModificationDate);
        case ItemAttributeKey::IsDirectory:
            return variantOf(isDirectory);
        case ItemAttributeKey::IsPackage:
            return variantOf(isPackage);
        case ItemAttributeKey::HasHiddenExtension:
            return variantOf(hasHiddenExtension);
        case ItemAttributeKey::ParentDirectoryURL:
            return parentDirectoryURL ? QVariant(parentDirectoryURL->toQUrl()) : QVariant();
        case ItemAttributeKey::IsShared:
            return variantOf(isShared);
        case ItemAttributeKey::SharedRole:
            return variantOf(sharedRole);
        case ItemAttributeKey::DownloadingStatus:
            return variantOf(downloadingStatus);
        case ItemAttributeKey::ThumbnailDictionary:
            return variantOf(thumbnailDictionary);
    }
    return {};
}

}  // namespace vl
