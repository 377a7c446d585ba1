#pragma once

#include "platform/cloud/ItemAttributes.h"
#include "platform/files/Url.h"

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

namespace vl {

// The app's record of one drive item: a snapshot of its attributes, read in one coordinated,
// metadata-only read when it is made (or when setUrl() is given another URL). Bookmarks and
// promises are followed; the thumbnail is read lazily, once per read of the values.
//
// Nil values are empty: an empty Url, a null QString or QImage, an absent optional. A record is
// used on one thread at a time.
class VLItem {
public:
    // The date-formatter styles.
    enum DateStyle {
        DateStyleNone = 0,
        DateStyleShort,
        DateStyleMedium,
        DateStyleLong,
        DateStyleFull
    };

    // Refused: throws std::invalid_argument. Records are made with initWithURL().
    VLItem();
    // The record of the item at `url`, or null when it can't be read.
    static std::shared_ptr<VLItem> initWithURL(const Url& url);

    // The keys read for every item, in the model's order; built once per process.
    static const std::vector<ItemAttributeKey>& attributeKeys();

    bool cacheValues();
    void clearValues();
    void initFromKeysAndValuesWithURL(const ItemAttributes& values, const Url& url);

    const Url& url() const { return url_; }
    void setUrl(const Url& url);
    const Url& resolvedURL() const { return resolvedURL_; }
    const Url& promiseURL() const { return promiseURL_; }
    const Url& parentDirectoryURL() const { return parentDirectoryURL_; }

    const QString& localizedName() const { return localizedName_; }
    const QString& typeIdentifier() const { return typeIdentifier_; }
    const QString& localizedTypeDescription() const { return localizedTypeDescription_; }
    const std::optional<quint64>& fileSize() const { return fileSize_; }
    const QString& friendlyFileSize() const { return friendlyFileSize_; }
    const std::optional<QDateTime>& creationDate() const { return creationDate_; }
    const std::optional<QDateTime>& contentModificationDate() const {
        return contentModificationDate_;
    }
    const std::optional<QStringList>& tags() const { return tags_; }

    bool isContainer() const { return isContainer_; }
    void setIsContainer(bool value) { isContainer_ = value; }
    bool isDirectory() const { return isDirectory_; }
    void setIsDirectory(bool value) { isDirectory_ = value; }
    bool isPackage() const { return isPackage_; }
    bool hasHiddenExtension() const { return hasHiddenExtension_; }
    void setHasHiddenExtension(bool value) { hasHiddenExtension_ = value; }
    bool canPreview() const { return canPreview_; }
    bool renameable() const { return renameable_; }
    void setRenameable(bool value) { renameable_ = value; }
    bool isBookmark() const { return isBookmark_; }
    void setIsBookmark(bool value) { isBookmark_ = value; }
    bool isDownloaded() const { return isDownloaded_; }
    void setIsDownloaded(bool value) { isDownloaded_ = value; }
    bool thumbnailFetched() const { return thumbnailFetched_; }
    void setThumbnailFetched(bool value) { thumbnailFetched_ = value; }

    // The item is still a placeholder for cloud content.
    bool isPromise() const;

    // Size in decimal units by the user's locale ("1 byte", "12.3 MB").
    static QString friendlyByteCount(quint64 bytes);
    std::optional<QString> friendlyCreationDate(int dateStyle) const;
    std::optional<QString> friendlyContentModificationDate(int dateStyle) const;
    // The date in the user's locale with the given date style and a short time; nothing when
    // `object` is not a date.
    static std::optional<QString> friendlyDateStyle(const QVariant& object, int dateStyle);

    // Reads the thumbnail on the first call.
    const QImage& thumbnail();
    void updateThumbnailImage(const QVariant& object);
    bool canGenerateThumbnail() const { return false; }
    void generateThumbnail(const std::function<void(const QImage&)>& completion);

private:
    struct Tag {};

public:
    VLItem(Tag, const Url& url);

private:
    bool isContainer_ = false;
    bool isDirectory_ = false;
    bool isPackage_ = false;
    bool hasHiddenExtension_ = true;
    bool canPreview_ = false;
    bool renameable_ = true;
    bool isBookmark_ = false;
    bool isDownloaded_ = false;
    bool thumbnailFetched_ = false;
    Url url_;
    Url resolvedURL_;
    QString localizedName_;
    QString typeIdentifier_;
    QString localizedTypeDescription_;
    std::optional<quint64> fileSize_;
    QString friendlyFileSize_;
    std::optional<QDateTime> creationDate_;
    std::optional<QDateTime> contentModificationDate_;
    Url parentDirectoryURL_;
    QImage thumbnail_;
    std::optional<QStringList> tags_;
    Url promiseURL_;
};

}  // namespace vl
