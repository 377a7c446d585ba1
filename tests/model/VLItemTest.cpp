#include "model/VLItem.h"
#include "model/VLRAppBookmarks.h"
#include "model/VelloraAppPreview.h"

#include "model/DriveFixture.h"
#include "model/ForwardingCloudDocuments.h"
#include "model/PreviewCapability.h"
#include "model/RefusingCoordinatorBackend.h"
#include "platform/files/ContentTypeRegistry.h"

#include <QImage>
#include <QLocale>

#include <stdexcept>

namespace vl::test {
namespace {

class VLItemTest : public DriveFixture {
protected:
    void SetUp() override {
        DriveFixture::SetUp();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }
    void TearDown() override {
        QLocale::setDefault(QLocale::c());
        PreviewCapability::setPredicate({});
        DriveFixture::TearDown();
    }

    // A record filled from `values` alone, as the read of cacheValues would fill it.
    std::shared_ptr<VLItem> fromValues(const ItemAttributes& values) {
        auto item = VLItem::initWithURL(writeFile(QStringLiteral("any.txt")));
        item->initFromKeysAndValuesWithURL(values, item->resolvedURL());
        return item;
    }
};

TEST_F(VLItemTest, LocalFileIsDescribedFromItsAttributes) {
    const Url url = writeFile(QStringLiteral("Work/Photo.jpg"), QByteArray(1500, 'p'));
    auto item = VLItem::initWithURL(url);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->url(), url);
    EXPECT_EQ(item->resolvedURL(), url);
    EXPECT_EQ(item->localizedName(), QStringLiteral("Photo.jpg"));
    EXPECT_EQ(item->typeIdentifier(), QStringLiteral("image/jpeg"));
    EXPECT_EQ(item->localizedTypeDescription(),
              ContentTypeRegistry::shared().localizedDescription(QStringLiteral("image/jpeg")));
    EXPECT_EQ(item->fileSize(), 1500u);
    EXPECT_EQ(item->friendlyFileSize(), QStringLiteral("1.5 kB"));
    EXPECT_EQ(item->parentDirectoryURL(), driveURL(QStringLiteral("Work")));
    EXPECT_TRUE(item->creationDate());
    EXPECT_TRUE(item->isDownloaded());
    EXPECT_FALSE(item->isPromise());
    EXPECT_FALSE(item->isDirectory());
    EXPECT_FALSE(item->isContainer());
    EXPECT_TRUE(item->renameable());
    EXPECT_TRUE(item->canPreview());

    auto folder = VLItem::initWithURL(driveURL(QStringLiteral("Work"), true));
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->isDirectory());
    EXPECT_FALSE(folder->fileSize());
    EXPECT_TRUE(folder->friendlyFileSize().isNull());
    EXPECT_FALSE(folder->canPreview());
}

TEST_F(VLItemTest, MissingItemGivesNoRecordAndSaysSo) {
    const Url missing = driveURL(QStringLiteral("Missing.txt"));
    EXPECT_FALSE(VLItem::initWithURL(missing));
    EXPECT_FALSE(VLItem::initWithURL(Url()));
    EXPECT_TRUE(logged(3).contains(QStringLiteral("Failed to cache values for URL ") +
                                   missing.description()));
}

TEST_F(VLItemTest, ValuesFollowTheRulesOfTheModel) {
    ItemAttributes package;
    package.name = QStringLiteral("Book.pages");
    package.isDirectory = true;
    package.isPackage = true;
    auto item = fromValues(package);
    EXPECT_TRUE(item->isPackage());
    EXPECT_FALSE(item->isDirectory());
    EXPECT_EQ(item->localizedName(), QStringLiteral("Book.pages"));
    EXPECT_FALSE(item->hasHiddenExtension());

    ItemAttributes shared;
    shared.isShared = true;
    shared.sharedRole = SharedItemRole::Participant;
    EXPECT_FALSE(fromValues(shared)->renameable());
    shared.sharedRole = SharedItemRole::Owner;
    EXPECT_TRUE(fromValues(shared)->renameable());

    ItemAttributes status;
    EXPECT_FALSE(fromValues(status)->isDownloaded());
    status.downloadingStatus = DownloadingStatus::NotDownloaded;
    EXPECT_FALSE(fromValues(status)->isDownloaded());
    status.downloadingStatus = DownloadingStatus::Downloaded;
    EXPECT_TRUE(fromValues(status)->isDownloaded());
    status.downloadingStatus = DownloadingStatus::Current;
    EXPECT_TRUE(fromValues(status)->isDownloaded());
}

TEST_F(VLItemTest, AppLibraryShowsItsContainersName) {
    addContainer(QStringLiteral("com.example.Editor"), QStringLiteral("Editor"),
                 QStringLiteral("EditorFolder"));
    const Url library = driveURL(QStringLiteral("EditorFolder"), true);
    auto item = VLItem::initWithURL(library);
    ASSERT_TRUE(item);
    EXPECT_TRUE(item->isContainer());
    EXPECT_FALSE(item->renameable());
    EXPECT_EQ(item->localizedName(), QStringLiteral("Editor"));

    ForwardingCloudDocuments::install([](const Url&, Error* error) {
        *error = Error(Error::FileErrorDomain, Error::FileReadNoSuchFile);
        return std::nullopt;
    });
    item = VLItem::initWithURL(library);
    EXPECT_TRUE(item->isContainer());
    EXPECT_EQ(item->localizedName(), QStringLiteral("EditorFolder"));
}

TEST_F(VLItemTest, CloudOnlyItemIsAPromiseDescribedWithoutDownloading) {
    const Url logical = import(QStringLiteral("Cloud.pdf"), QByteArray(2000, 'c'), true);
    ASSERT_FALSE(store_->setTags(logical, {QStringLiteral("Red")}));
    auto item = VLItem::initWithURL(logical);
    ASSERT_TRUE(item);
    EXPECT_TRUE(item->isPromise());
    EXPECT_NE(item->promiseURL(), logical);
    EXPECT_FALSE(item->isDownloaded());
    EXPECT_EQ(item->fileSize(), 2000u);
    EXPECT_EQ(item->tags(), QStringList{QStringLiteral("Red")});
    EXPECT_FALSE(QFile::exists(logical.path()));
}

TEST_F(VLItemTest, PromisesAndReferencesResolveToTheRealItem) {
    const Url local = writeFile(QStringLiteral("Plain.txt"));
    EXPECT_FALSE(vlr_URLByResolvingPromise(local));
    EXPECT_FALSE(vlr_URLByResolvingBookmark(local));

    const Url logical = import(QStringLiteral("Deep.pdf"), "d", true);
    const Url placeholder = CloudDocuments::shared().physicalURL(logical);
    ASSERT_NE(placeholder, logical);
    const std::optional<Url> resolved = vlr_URLByResolvingPromise(placeholder);
    ASSERT_TRUE(resolved);
    EXPECT_EQ(*resolved, logical);
    EXPECT_EQ(resolved->promisedPhysicalURL(), placeholder);
    EXPECT_TRUE(VLItem::initWithURL(*resolved)->isPromise());

    const Url reference = driveURL(QStringLiteral("Deep.pdf.vlref"));
    ASSERT_FALSE(store_->writeDocumentReference(reference, QStringLiteral("Deep.pdf")));
    EXPECT_EQ(vlr_URLByResolvingBookmark(reference), logical);
    auto bookmark = VLItem::initWithURL(reference);
    ASSERT_TRUE(bookmark);
    EXPECT_TRUE(bookmark->isBookmark());
    EXPECT_EQ(bookmark->resolvedURL(), logical);
    EXPECT_TRUE(bookmark->isPromise());

    ASSERT_FALSE(store_->removeItem(logical));
    EXPECT_FALSE(vlr_URLByResolvingBookmark(reference));
    auto orphan = VLItem::initWithURL(reference);
    ASSERT_TRUE(orphan);
    EXPECT_FALSE(orphan->isBookmark());
    EXPECT_EQ(orphan->resolvedURL(), reference);
    EXPECT_TRUE(wantsDefaultMediaPlayer(reference));
}

TEST_F(VLItemTest, SetUrlRereadsOnlyForAnotherUrl) {
    const QImage red = [] {
        QImage image(64, 64, QImage::Format_RGB32);
        image.fill(Qt::red);
        return image;
    }();
    ASSERT_TRUE(red.save(drivePath(QStringLiteral("Red.png"))));
    const Url other = writeFile(QStringLiteral("Other.txt"), "other");
    auto item = VLItem::initWithURL(driveURL(QStringLiteral("Red.png")));
    ASSERT_TRUE(item);
    EXPECT_FALSE(item->thumbnail().isNull());
    EXPECT_TRUE(item->thumbnailFetched());

    item->setUrl(driveURL(QStringLiteral("Red.png")));
    EXPECT_TRUE(item->thumbnailFetched());
    item->setUrl(other);
    EXPECT_FALSE(item->thumbnailFetched());
    EXPECT_EQ(item->localizedName(), QStringLiteral("Other.txt"));
    EXPECT_TRUE(item->thumbnail().isNull());
    EXPECT_TRUE(item->thumbnailFetched());
}

TEST_F(VLItemTest, ThumbnailTakesOnlyTheLargeImageOfADictionary) {
    auto item = VLItem::initWithURL(writeFile(QStringLiteral("t.txt")));
    QImage image(8, 8, QImage::Format_RGB32);
    EXPECT_TRUE(item->thumbnail().isNull());
    item->updateThumbnailImage(QVariant(QStringLiteral("not a dictionary")));
    item->updateThumbnailImage(QVariantMap{{QStringLiteral("small"), image}});
    item->updateThumbnailImage(
        QVariantMap{{Thumbnail1024x1024SizeKey, QStringLiteral("no image")}});
    EXPECT_TRUE(item->thumbnail().isNull());
    item->updateThumbnailImage(QVariantMap{{Thumbnail1024x1024SizeKey, image}});
    EXPECT_EQ(item->thumbnail().size(), QSize(8, 8));

    EXPECT_FALSE(item->canGenerateThumbnail());
    int calls = 0;
    item->generateThumbnail([&calls](const QImage& generated) {
        ++calls;
        EXPECT_TRUE(generated.isNull());
    });
    EXPECT_EQ(calls, 1);
}

TEST_F(VLItemTest, FriendlyTextsFollowTheLocale) {
    EXPECT_EQ(VLItem::friendlyByteCount(1), QStringLiteral("1 byte"));
    EXPECT_EQ(VLItem::friendlyByteCount(999), QStringLiteral("999 bytes"));
    EXPECT_EQ(VLItem::friendlyByteCount(2500000), QStringLiteral("2.5 MB"));
    // A change of locale is seen at once, also by the small sizes' texts kept per thread.
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    EXPECT_NE(VLItem::friendlyByteCount(999), QStringLiteral("999 bytes"));
    QLocale::setDefault(previous);
    EXPECT_EQ(VLItem::friendlyByteCount(999), QStringLiteral("999 bytes"));

    const QDateTime date(QDate(2015, 10, 23), QTime(18, 29, 47));
    const std::optional<QString> longText = VLItem::friendlyDateStyle(date, VLItem::DateStyleLong);
    ASSERT_TRUE(longText);
    EXPECT_TRUE(longText->startsWith(QStringLiteral("October 23, 2015")))
        << longText->toStdString();
    EXPECT_TRUE(longText->contains(QStringLiteral("6:29"))) << longText->toStdString();
    EXPECT_FALSE(longText->contains(QStringLiteral(":47")));
    const std::optional<QString> mediumText =
        VLItem::friendlyDateStyle(date, VLItem::DateStyleMedium);
    ASSERT_TRUE(mediumText);
    EXPECT_TRUE(mediumText->startsWith(QStringLiteral("Oct 23, 2015")))
        << mediumText->toStdString();
    EXPECT_FALSE(VLItem::friendlyDateStyle(QStringLiteral("2015-10-23"), VLItem::DateStyleLong));

    auto item = VLItem::initWithURL(writeFile(QStringLiteral("d.txt")));
    EXPECT_TRUE(item->friendlyCreationDate(VLItem::DateStyleShort));
    EXPECT_TRUE(item->friendlyContentModificationDate(VLItem::DateStyleShort));
}

TEST_F(VLItemTest, RefusedReadKeepsTheClearedRecord) {
    const Url url = writeFile(QStringLiteral("Locked.txt"));
    RefusingCoordinatorBackend::Scope refusing(Error(Error::FileErrorDomain, Error::UserCancelled));
    auto item = VLItem::initWithURL(url);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->resolvedURL(), url);
    EXPECT_TRUE(item->localizedName().isNull());
    EXPECT_TRUE(item->renameable());
    EXPECT_TRUE(item->hasHiddenExtension());
}

TEST_F(VLItemTest, PreviewTestCanBeReplacedAndInitIsRefused) {
    PreviewCapability::setPredicate(
        [](const Url& url, std::optional<bool>) { return url.pathExtension() == "zip"; });
    EXPECT_TRUE(VLItem::initWithURL(writeFile(QStringLiteral("a.zip")))->canPreview());
    EXPECT_FALSE(VLItem::initWithURL(writeFile(QStringLiteral("a.jpg")))->canPreview());
    PreviewCapability::setPredicate({});
    EXPECT_FALSE(VLItem::initWithURL(writeFile(QStringLiteral("a.zip")))->canPreview());
    EXPECT_TRUE(VLItem::initWithURL(writeFile(QStringLiteral("a.txt")))->canPreview());

    try {
        VLItem item;
        FAIL() << "init must be refused";
    } catch (const std::invalid_argument& refusal) {
        EXPECT_STREQ(refusal.what(), "Don't call -[VLItem init].");
    }
}

}  // namespace
}  // namespace vl::test
