#include "model/VLItem.h"

#include "logging/VLLogging.h"
#include "model/PreviewCapability.h"
#include "model/VLRAppBookmarks.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/files/ContentTypeRegistry.h"
#include "platform/text/Format.h"

#include <QLocale>

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <array>
#include <stdexcept>

namespace vl {

VLItem::VLItem() {
    throw std::invalid_argument(
        format("Don't call %@.", QStringLiteral("-[VLItem init]")).toStdString());
}

VLItem::VLItem(Tag, const Url& url) : url_(url) {}

std::shared_ptr<VLItem> VLItem::initWithURL(const Url& url) {
    auto item = std::make_shared<VLItem>(Tag{}, url);
    if (!item->cacheValues()) {
        VLLOG(3, "Failed to cache values for URL %@", url);
        return nullptr;
    }
    return item;
}

const std::vector<ItemAttributeKey>& VLItem::attributeKeys() {
    static const std::vector<ItemAttributeKey> keys{
        ItemAttributeKey::Name,
        ItemAttributeKey::LocalizedName,
        ItemAttributeKey::ContentType,
        ItemAttributeKey::LocalizedTypeDescription,
        ItemAttributeKey::FileSize,
        ItemAttributeKey::CreationDate,
        ItemAttributeKey::ContentModificationDate,
        ItemAttributeKey::IsDirectory,
        ItemAttributeKey::IsPackage,
        ItemAttributeKey::HasHiddenExtension,
        ItemAttributeKey::ParentDirectoryURL,
        ItemAttributeKey::IsShared,
        ItemAttributeKey::SharedRole,
        ItemAttributeKey::DownloadingStatus,
    };
    return keys;
}

namespace {

ItemAttributeKeys attributeKeySet() {
    static const ItemAttributeKeys set = [] {
        ItemAttributeKeys keys;
        for (ItemAttributeKey key : VLItem::attributeKeys()) {
            keys |= key;
        }
        return keys;
    }();
    return set;
}

bool hasError(const Error& error) {
    return !error.domain().isEmpty();
}

}  // namespace

void VLItem::clearValues() {
    resolvedURL_ = Url();
    localizedName_ = QString();
    typeIdentifier_ = QString();
    localizedTypeDescription_ = QString();
    fileSize_.reset();
    friendlyFileSize_ = QString();
    creationDate_.reset();
    contentModificationDate_.reset();
    parentDirectoryURL_ = Url();
    thumbnail_ = QImage();
    tags_.reset();
    promiseURL_ = Url();
    isContainer_ = false;
    isDirectory_ = false;
    isPackage_ = false;
    thumbnailFetched_ = false;
    isBookmark_ = false;
    isDownloaded_ = false;
    hasHiddenExtension_ = true;
    renameable_ = true;
}

bool VLItem::cacheValues() {
    clearValues();
    if (url_.isEmpty()) {
        return false;
    }
    CloudDocuments& documents = CloudDocuments::shared();
    if (std::optional<Url> bookmark = vlr_URLByResolvingBookmark(url_)) {
        resolvedURL_ = *bookmark;
        isBookmark_ = true;
    } else {
        resolvedURL_ = url_;
    }
    // This platform has no security-scoped access to start or stop around the read.

    bool result = true;
    // An item whose local attributes were read is its own physical item: only a cloud-only
    // one (or one that could not be described) asks the store for it.
    bool local = false;
    FileCoordinator coordinator;
    std::optional<Error> coordinatorError;
    coordinator.coordinateReadingItemAtURL(
        resolvedURL_, FileCoordinator::ReadingOption::ImmediatelyAvailableMetadataOnly,
        &coordinatorError, [&](const Url& newURL) {
            // Attributes found mean the item is reachable; only a failure asks the reachability
            // check, to tell an item that is gone from one the store can't describe.
            Error error;
            std::optional<ItemAttributes> values =
                documents.promisedItemResourceValues(newURL, attributeKeySet(), &error);
            if (!values) {
                if ((error.domain() == Error::FileErrorDomain &&
                     error.code() == Error::FileNoSuchFile) ||
                    !documents.checkPromisedItemIsReachable(newURL, nullptr)) {
                    result = false;
                    return;
                }
                VLLOG(4, "promisedItemResourceValuesForKeys failed on %@", newURL);
                values = documents.resourceValues(newURL, attributeKeySet(), nullptr);
                if (!values) {
                    result = false;
                    return;
                }
            }
            local = newURL == resolvedURL_ && !resolvedURL_.promisedPhysicalURL() &&
                    values->downloadingStatus != DownloadingStatus::NotDownloaded;
            initFromKeysAndValuesWithURL(*values, newURL);
            // A package is a folder on disk, which the preview can't show either.
            canPreview_ =
                PreviewCapability::canPreviewItem(resolvedURL_, isDirectory_ || isPackage_);
            tags_ = documents.tagNames(resolvedURL_, nullptr);
        });
    promiseURL_ = local ? resolvedURL_ : documents.physicalURL(resolvedURL_);
    return result;
}

void VLItem::initFromKeysAndValuesWithURL(const ItemAttributes& values, const Url& url) {
    localizedName_ = values.localizedName ? *values.localizedName : values.name.value_or(QString());
    typeIdentifier_ = values.contentType.value_or(QString());
    localizedTypeDescription_ = values.localizedTypeDescription.value_or(QString());
    // The store already describes the type; ask the registry only when it did not.
    if (!typeIdentifier_.isEmpty() && localizedTypeDescription_.isEmpty()) {
        const QString description =
            ContentTypeRegistry::shared().localizedDescription(typeIdentifier_);
        if (!description.isEmpty()) {
            localizedTypeDescription_ = description;
        }
    }
    if (values.fileSize) {
        fileSize_ = values.fileSize;
        friendlyFileSize_ = friendlyByteCount(*values.fileSize);
    }
    creationDate_ = values.creationDate;
    contentModificationDate_ = values.contentModificationDate;
    parentDirectoryURL_ = values.parentDirectoryURL.value_or(Url());
    isDirectory_ = values.isDirectory.value_or(false);
    isPackage_ = values.isPackage.value_or(false);
    if (isPackage_) {
        isDirectory_ = false;
    }
    hasHiddenExtension_ = values.hasHiddenExtension.value_or(false);

    CloudDocuments& documents = CloudDocuments::shared();
    isContainer_ = documents.isAppLibraryDocumentsURL(url);
    if (isContainer_) {
        renameable_ = false;
        Error error;
        const std::optional<CloudContainer> container =
            documents.containerForItemAtURL(url, &error);
        if (container && !hasError(error)) {
            localizedName_ = container->localizedName();
        }
    } else {
        renameable_ =
            !(values.isShared.value_or(false) && values.sharedRole == SharedItemRole::Participant);
    }
    isDownloaded_ =
        values.downloadingStatus && *values.downloadingStatus != DownloadingStatus::NotDownloaded;
}

void VLItem::setUrl(const Url& url) {
    if (url == url_) {
        return;
    }
    url_ = url;
    cacheValues();
}

bool VLItem::isPromise() const {
    return !promiseURL_.isEmpty() && promiseURL_ != resolvedURL_;
}

QString VLItem::friendlyByteCount(quint64 bytes) {
    const QLocale locale;
    if (bytes < 1000) {
        // Small files are many, and formatting a number in the system locale is slow: the texts
        // are kept per thread until the locale changes.
        thread_local QLocale textsLocale = QLocale::c();
        thread_local std::array<QString, 1000> texts;
        if (locale != textsLocale) {
            textsLocale = locale;
            texts.fill(QString());
        }
        QString& text = texts[bytes];
        if (text.isNull()) {
            // Qt's formatter says "1 bytes".
            text = bytes == 1 ? QStringLiteral("1 byte")
                              : QStringLiteral("%1 bytes").arg(locale.toString(bytes));
        }
        return text;
    }
    return locale.formattedDataSize(qint64(bytes), 1, QLocale::DataSizeSIFormat);
}

std::optional<QString> VLItem::friendlyCreationDate(int dateStyle) const {
    if (!creationDate_) {
        return std::nullopt;
    }
    return friendlyDateStyle(QVariant(*creationDate_), dateStyle);
}

std::optional<QString> VLItem::friendlyContentModificationDate(int dateStyle) const {
    if (!contentModificationDate_) {
        return std::nullopt;
    }
    return friendlyDateStyle(QVariant(*contentModificationDate_), dateStyle);
}

std::optional<QString> VLItem::friendlyDateStyle(const QVariant& object, int dateStyle) {
    if (object.typeId() != QMetaType::QDateTime) {
        return std::nullopt;
    }
    const QDateTime date = object.toDateTime();
    if (!date.isValid()) {
        return std::nullopt;
    }
    icu::DateFormat::EStyle style = icu::DateFormat::kNone;
    switch (dateStyle) {
        case DateStyleShort:
            style = icu::DateFormat::kShort;
            break;
        case DateStyleMedium:
            style = icu::DateFormat::kMedium;
            break;
        case DateStyleLong:
            style = icu::DateFormat::kLong;
            break;
        case DateStyleFull:
            style = icu::DateFormat::kFull;
            break;
        default:
            break;
    }
    const QByteArray localeName = QLocale().name().toLatin1();
    std::unique_ptr<icu::DateFormat> formatter(icu::DateFormat::createDateTimeInstance(
        style, icu::DateFormat::kShort, icu::Locale(localeName.constData())));
    if (!formatter) {
        return std::nullopt;
    }
    icu::UnicodeString text;
    formatter->format(static_cast<UDate>(date.toMSecsSinceEpoch()), text);
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

const QImage& VLItem::thumbnail() {
    if (!thumbnailFetched_) {
        thumbnailFetched_ = true;
        FileCoordinator coordinator;
        coordinator.coordinateReadingItemAtURL(
            resolvedURL_, FileCoordinator::ReadingOption::ImmediatelyAvailableMetadataOnly, nullptr,
            [this](const Url& newURL) {
                // The promised read first, then the ordinary one, as FileUtils reads one
                // attribute (the model sits below the file operations).
                CloudDocuments& documents = CloudDocuments::shared();
                const ItemAttributeKey key = ItemAttributeKey::ThumbnailDictionary;
                QVariant dictionary = documents.promisedItemResourceValues(newURL, key, nullptr)
                                          .value_or(ItemAttributes())
                                          .value(key);
                if (!dictionary.isValid()) {
                    dictionary = documents.resourceValues(newURL, key, nullptr)
                                     .value_or(ItemAttributes())
                                     .value(key);
                }
                updateThumbnailImage(dictionary);
            });
    }
    return thumbnail_;
}

void VLItem::updateThumbnailImage(const QVariant& object) {
    if (object.typeId() != QMetaType::QVariantMap) {
        return;
    }
    const QVariantMap dictionary = object.toMap();
    VLLOG(7, "URL Thumbs: %@", dictionary);
    if (dictionary.isEmpty()) {
        return;
    }
    const QVariant image = dictionary.value(Thumbnail1024x1024SizeKey);
    if (image.typeId() == QMetaType::QImage) {
        thumbnail_ = image.value<QImage>();
    }
}

void VLItem::generateThumbnail(const std::function<void(const QImage&)>& completion) {
    if (completion) {
        completion(QImage());
    }
}

}  // namespace vl
