#include "StoreFixture.h"
#include "drive/store/DriveStore.h"
#include "drive/store/ThumbnailCache.h"
#include "platform/files/ContentTypeRegistry.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace vl {
namespace {

class DriveStoreTest : public StoreFixture {};

TEST_F(DriveStoreTest, CloudOnlyItemIsDescribedFromItsPlaceholderWithoutDownloading) {
    const Url logical = import(QStringLiteral("Report.pdf"), QByteArray(5000, 'x'), true);
    ASSERT_FALSE(QFile::exists(logical.path()));

    Error error;
    const std::optional<ItemAttributes> attributes =
        store_->promisedItemAttributes(logical, ItemAttributeKeySets::itemModelKeys(), &error);
    ASSERT_TRUE(attributes) << error.description().toStdString();
    EXPECT_EQ(attributes->name, QStringLiteral("Report.pdf"));
    EXPECT_EQ(attributes->fileSize, 5000u);
    EXPECT_EQ(attributes->contentType, QStringLiteral("application/pdf"));
    EXPECT_FALSE(attributes->localizedTypeDescription.value_or(QString()).isEmpty());
    EXPECT_EQ(attributes->isDirectory, false);
    EXPECT_EQ(attributes->downloadingStatus, DownloadingStatus::NotDownloaded);
    EXPECT_EQ(attributes->parentDirectoryURL, store_->driveRootURL());
    EXPECT_FALSE(QFile::exists(logical.path())) << "describing must not download";

    // The placeholder itself describes the logical item too.
    const Url placeholder = DriveStore::placeholderURLFor(logical);
    const auto viaPlaceholder =
        store_->promisedItemAttributes(placeholder, ItemAttributeKeySets::itemModelKeys(), nullptr);
    ASSERT_TRUE(viaPlaceholder);
    EXPECT_EQ(viaPlaceholder->name, QStringLiteral("Report.pdf"));

    // Promise queries.
    EXPECT_TRUE(store_->hasItemPromise(logical));
    EXPECT_TRUE(store_->hasItemPromise(placeholder));
    EXPECT_EQ(store_->physicalURLOf(logical), placeholder);
    EXPECT_EQ(store_->logicalURLOfPlaceholder(placeholder, nullptr), logical);
    EXPECT_TRUE(store_->isReachable(logical, nullptr));

    // The plain read sees no file.
    Error plainError;
    EXPECT_FALSE(
        store_->localItemAttributes(logical, ItemAttributeKeySets::itemModelKeys(), &plainError));
    EXPECT_EQ(plainError.code(), Error::FileNoSuchFile);
}

TEST_F(DriveStoreTest, LocalItemsAreCurrentAndNoPromise) {
    const Url url = import(QStringLiteral("notes.txt"), "hello", false);
    QDir().mkpath(drive(QStringLiteral("Work")));
    const auto attributes =
        store_->promisedItemAttributes(url, ItemAttributeKeySets::itemModelKeys(), nullptr);
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->fileSize, 5u);
    EXPECT_EQ(attributes->contentType, QStringLiteral("text/plain"));
    EXPECT_EQ(attributes->downloadingStatus, DownloadingStatus::Current);
    EXPECT_EQ(attributes->isShared, false);
    EXPECT_FALSE(store_->hasItemPromise(url));
    EXPECT_EQ(store_->physicalURLOf(url), url);

    const auto folder = store_->promisedItemAttributes(
        store_->driveURL(QStringLiteral("Work")), ItemAttributeKeySets::itemModelKeys(), nullptr);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->isDirectory, true);
    EXPECT_EQ(folder->contentType, ContentTypeRegistry::Folder);
    EXPECT_FALSE(folder->fileSize);

    Error error;
    EXPECT_FALSE(store_->promisedItemAttributes(store_->driveURL(QStringLiteral("gone.txt")),
                                                ItemAttributeKeySets::itemModelKeys(), &error));
    EXPECT_EQ(error.code(), Error::FileNoSuchFile);
}

TEST_F(DriveStoreTest, TypesFollowEachItemsExtensionAndKindInAnyOrder) {
    const auto typeOf = [&](const QString& relative) {
        const auto attributes = store_->promisedItemAttributes(
            store_->driveURL(relative), ItemAttributeKeySets::itemModelKeys(), nullptr);
        return attributes ? attributes->contentType.value_or(QString()) : QString();
    };
    writeFile(drive(QStringLiteral("a.PNG")), "p");
    writeFile(drive(QStringLiteral("b.png")), "p");
    writeFile(drive(QStringLiteral("c.txt")), "t");
    writeFile(drive(QStringLiteral("README")), "r");
    QDir().mkpath(drive(QStringLiteral("Album.png")));
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(typeOf(QStringLiteral("a.PNG")), QStringLiteral("image/png"));
        EXPECT_EQ(typeOf(QStringLiteral("b.png")), QStringLiteral("image/png"));
        EXPECT_EQ(typeOf(QStringLiteral("Album.png")), ContentTypeRegistry::Folder);
        EXPECT_EQ(typeOf(QStringLiteral("b.png")), QStringLiteral("image/png"));
        EXPECT_EQ(typeOf(QStringLiteral("c.txt")), QStringLiteral("text/plain"));
        EXPECT_NE(typeOf(QStringLiteral("README")), QStringLiteral("text/plain"));
    }
}

TEST_F(DriveStoreTest, PromisedMoveMovesCloudOnlyItemAndItsCloudCopy) {
    const Url logical = import(QStringLiteral("Movie.mp4"), QByteArray(300, 'm'), true);
    QDir().mkpath(drive(QStringLiteral("Videos")));
    const Url destination = store_->driveURL(QStringLiteral("Videos/Trip.mp4"));

    ASSERT_FALSE(store_->movePromisedItem(logical, destination));
    EXPECT_FALSE(store_->hasItemPromise(logical));
    EXPECT_TRUE(store_->isCloudOnly(destination));
    EXPECT_EQ(readAll(cloud(QStringLiteral("Videos/Trip.mp4"))), QByteArray(300, 'm'));
    EXPECT_FALSE(QFile::exists(cloud(QStringLiteral("Movie.mp4"))));
    const auto record = store_->readPlaceholder(DriveStore::placeholderURLFor(destination));
    ASSERT_TRUE(record);
    EXPECT_EQ(record->name, QStringLiteral("Trip.mp4"));

    // An existing item is never replaced.
    const Url other = import(QStringLiteral("Other.mp4"), "o", false);
    const std::optional<Error> clash = store_->movePromisedItem(other, destination);
    ASSERT_TRUE(clash);
    EXPECT_EQ(clash->code(), Error::FileWriteFileExists);
    EXPECT_TRUE(QFile::exists(other.path()));
}

TEST_F(DriveStoreTest, MoveCarriesOnlyACloudCopyThereIs) {
    // Written into the drive by another program: the cloud never had it, and a move uploads
    // nothing. A cloud copy with no item at the destination may be the only copy of something:
    // the move is refused rather than replace it, and the recovery pass makes it reachable.
    writeFile(drive(QStringLiteral("Local.txt")), "local");
    writeFile(cloud(QStringLiteral("Orphan.txt")), "only copy");
    const std::optional<Error> refused =
        store_->movePromisedItem(store_->driveURL(QStringLiteral("Local.txt")),
                                 store_->driveURL(QStringLiteral("Orphan.txt")));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code(), Error::FileWriteFileExists);
    EXPECT_EQ(readAll(cloud(QStringLiteral("Orphan.txt"))), QByteArray("only copy"));
    EXPECT_EQ(store_->recover(), 1);
    EXPECT_TRUE(store_->isCloudOnly(store_->driveURL(QStringLiteral("Orphan.txt"))));

    ASSERT_FALSE(store_->movePromisedItem(store_->driveURL(QStringLiteral("Local.txt")),
                                          store_->driveURL(QStringLiteral("Renamed.txt"))));
    EXPECT_EQ(readAll(drive(QStringLiteral("Renamed.txt"))), QByteArray("local"));
    EXPECT_FALSE(QFile::exists(cloud(QStringLiteral("Local.txt"))));
    EXPECT_FALSE(QFile::exists(cloud(QStringLiteral("Renamed.txt"))));

    // Eviction then brings the cloud copy up to date before the local one goes.
    ASSERT_FALSE(store_->evict(store_->driveURL(QStringLiteral("Renamed.txt"))));
    EXPECT_EQ(readAll(cloud(QStringLiteral("Renamed.txt"))), QByteArray("local"));

    // A mirrored item's copy follows it into a folder the cloud does not have yet.
    const Url mirrored = import(QStringLiteral("Mirrored.txt"), "m", false);
    QDir().mkpath(drive(QStringLiteral("New Folder")));
    ASSERT_FALSE(store_->movePromisedItem(
        mirrored, store_->driveURL(QStringLiteral("New Folder/Mirrored.txt"))));
    EXPECT_EQ(readAll(cloud(QStringLiteral("New Folder/Mirrored.txt"))), QByteArray("m"));
}

TEST_F(DriveStoreTest, EvictThenDownloadGivesTheLastLocalContent) {
    const Url url = import(QStringLiteral("Letter.odt"), "first version", false);
    writeFile(url.path(), "edited locally");  // not mirrored yet
    ASSERT_FALSE(store_->setTags(url, {QStringLiteral("Red"), QStringLiteral("a,b")}));

    ASSERT_FALSE(store_->evict(url));
    EXPECT_FALSE(QFile::exists(url.path()));
    EXPECT_TRUE(store_->isCloudOnly(url));
    EXPECT_EQ(store_->tags(url), QStringList({QStringLiteral("Red"), QStringLiteral("a,b")}));
    EXPECT_FALSE(store_->evict(url)) << "evicting a cloud-only item changes nothing";

    // A plain download: the cloud content to a copy outside the drive, then into place.
    const std::optional<QString> content = store_->cloudContentPath(url, nullptr);
    ASSERT_TRUE(content);
    const QString partial = store_->home().stagingDir() + QStringLiteral("/copy");
    ASSERT_TRUE(QFile::copy(*content, partial));
    ASSERT_FALSE(store_->completeDownload(url, partial));

    EXPECT_EQ(readAll(url.path()), QByteArray("edited locally"));
    EXPECT_FALSE(store_->hasItemPromise(url));
    EXPECT_EQ(store_->tags(url), QStringList({QStringLiteral("Red"), QStringLiteral("a,b")}));
}

TEST_F(DriveStoreTest, ContainerDeletionEmptiesLocalAndCloudButKeepsTheLibrary) {
    ContainerRecord editor;
    editor.identifier = QStringLiteral("com.example.Editor");
    editor.localizedName = QStringLiteral("Editor");
    editor.folder = QStringLiteral("Editor");
    editor.folderLevels = CloudContainer::FolderLevelsOne;
    ASSERT_FALSE(store_->addContainer(editor));
    QDir().mkpath(drive(QStringLiteral("Editor/Drafts")));
    import(QStringLiteral("Editor/a.txt"), "a", false);
    import(QStringLiteral("Editor/Drafts/b.txt"), "b", true);
    const Url keep = import(QStringLiteral("keep.txt"), "k", false);

    const Url library = store_->driveURL(QStringLiteral("Editor"), true);
    EXPECT_TRUE(store_->appLibraryAtURL(library));
    EXPECT_FALSE(store_->appLibraryAtURL(store_->driveURL(QStringLiteral("Editor/Drafts"))));
    EXPECT_EQ(
        store_->containerRecordForURL(store_->driveURL(QStringLiteral("Editor/a.txt")), nullptr)
            ->identifier,
        editor.identifier);
    EXPECT_TRUE(store_->containerRecordForURL(keep, nullptr)->isDefault);

    ASSERT_FALSE(store_->deleteContainerContents(editor.identifier));
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    EXPECT_TRUE(QDir(drive(QStringLiteral("Editor"))).entryList(everything).isEmpty());
    EXPECT_TRUE(QDir(cloud(QStringLiteral("Editor"))).entryList(everything).isEmpty());
    EXPECT_TRUE(store_->containerRecord(editor.identifier));
    EXPECT_TRUE(QFile::exists(keep.path()));

    const std::optional<ContainerRecord> root = store_->defaultContainerRecord();
    ASSERT_TRUE(root);
    EXPECT_TRUE(store_->deleteContainerContents(root->identifier));
    EXPECT_TRUE(QFile::exists(keep.path()));
}

TEST_F(DriveStoreTest, CorruptRecordsGiveErrorsNotCrashes) {
    const Url logical = store_->driveURL(QStringLiteral("broken.txt"));
    writeFile(DriveStore::placeholderURLFor(logical).path(), "{not json");
    Error error;
    EXPECT_FALSE(
        store_->promisedItemAttributes(logical, ItemAttributeKeySets::itemModelKeys(), &error));
    EXPECT_EQ(error.code(), DriveStore::FileReadCorruptFile);
    writeFile(DriveStore::placeholderURLFor(logical).path(), R"({"name": 3})");
    EXPECT_FALSE(store_->readPlaceholder(DriveStore::placeholderURLFor(logical), &error));
    EXPECT_EQ(error.code(), DriveStore::FileReadCorruptFile);

    writeFile(store_->home().containerRecordFile(QStringLiteral("bad")), "[]");
    EXPECT_EQ(store_->containerRecords().size(), 1);  // the default one survives
    EXPECT_FALSE(store_->containerRecord(QStringLiteral("bad"), &error));
    EXPECT_EQ(error.code(), DriveStore::FileReadCorruptFile);

    writeFile(store_->home().accountFile(), R"({"account":"x","identity":"zz"})");
    EXPECT_FALSE(store_->readAccount(&error));
    EXPECT_EQ(error.code(), DriveStore::FileReadCorruptFile);

    writeFile(store_->home().keyValueStoreFile(), "nonsense");
    EXPECT_TRUE(store_->readKeyValueStore(&error).isEmpty());
    EXPECT_EQ(error.code(), DriveStore::FileReadCorruptFile);

    writeFile(store_->home().serviceFile(), "nonsense");
    EXPECT_EQ(store_->readServiceSettings().network, ServiceSettings::NetworkAuto);
}

TEST_F(DriveStoreTest, TagsAndSharingRoundTripOnLocalAndCloudOnlyItems) {
    const Url local = import(QStringLiteral("Plan.txt"), "p", false);
    const Url remote = import(QStringLiteral("Shared.pdf"), "s", true);

    ASSERT_FALSE(store_->setSharedRole(local, PlaceholderFile::RoleParticipant));
    auto attributes =
        store_->promisedItemAttributes(local, ItemAttributeKeySets::itemModelKeys(), nullptr);
    EXPECT_EQ(attributes->isShared, true);
    EXPECT_EQ(attributes->sharedRole, SharedItemRole::Participant);
    ASSERT_FALSE(store_->setSharedRole(local, std::nullopt));
    EXPECT_FALSE(store_->sharedRole(local));

    ASSERT_FALSE(store_->setTags(remote, {QStringLiteral("Blue")}));
    ASSERT_FALSE(store_->setSharedRole(remote, PlaceholderFile::RoleOwner));
    EXPECT_EQ(store_->tags(remote), QStringList{QStringLiteral("Blue")});
    attributes =
        store_->promisedItemAttributes(remote, ItemAttributeKeySets::itemModelKeys(), nullptr);
    EXPECT_EQ(attributes->sharedRole, SharedItemRole::Owner);

    ASSERT_FALSE(store_->setTags(local, {}));
    EXPECT_EQ(store_->tags(local), QStringList());
}

// User xattrs are refused on symbolic links, as on file systems without them: the tags go to
// metadata.json and follow moves and deletions.
TEST_F(DriveStoreTest, MetadataFallbackFollowsMovesAndDeletions) {
    const Url target = import(QStringLiteral("target.txt"), "t", false);
    const Url link = store_->driveURL(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(target.path(), link.path()));

    ASSERT_FALSE(store_->setTags(link, {QStringLiteral("Green")}));
    ASSERT_FALSE(store_->setSharedRole(link, PlaceholderFile::RoleOwner));
    EXPECT_EQ(store_->tags(link), QStringList{QStringLiteral("Green")});
    EXPECT_EQ(store_->tags(target), QStringList()) << "the link's tags are its own";
    EXPECT_TRUE(readAll(store_->home().metadataFile()).contains("Green"));

    // Another process's store reads the same record.
    DriveStore other{DriveHome(store_->home().rootPath())};
    EXPECT_EQ(other.tags(link), QStringList{QStringLiteral("Green")});

    QDir().mkpath(drive(QStringLiteral("Moved")));
    const Url moved = store_->driveURL(QStringLiteral("Moved/link2"));
    ASSERT_FALSE(store_->movePromisedItem(link, moved));
    EXPECT_EQ(store_->tags(moved), QStringList{QStringLiteral("Green")});
    EXPECT_EQ(store_->sharedRole(moved), PlaceholderFile::RoleOwner);

    ASSERT_FALSE(store_->removeItem(moved));
    EXPECT_FALSE(readAll(store_->home().metadataFile()).contains("Green"));
}

TEST_F(DriveStoreTest, DocumentReferencesResolveToTheirTarget) {
    const Url target = import(QStringLiteral("Deep.pdf"), "d", true);
    const Url reference = store_->driveURL(QStringLiteral("Deep.pdf.vlref"));
    ASSERT_FALSE(store_->writeDocumentReference(reference, QStringLiteral("Deep.pdf")));
    EXPECT_TRUE(DriveStore::isDocumentReferenceURL(reference));
    EXPECT_EQ(store_->documentReferenceTarget(reference, nullptr), target);

    ASSERT_FALSE(store_->removeItem(target));
    EXPECT_FALSE(store_->documentReferenceTarget(reference, nullptr));
    writeFile(reference.path(), R"({"target":"../../etc/passwd"})");
    EXPECT_FALSE(store_->documentReferenceTarget(reference, nullptr));
}

TEST_F(DriveStoreTest, ThumbnailIsMadeOnceAndKeptInTheFreedesktopCache) {
    QImage image(2048, 1024, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString path = drive(QStringLiteral("Wide.png"));
    ASSERT_TRUE(image.save(path));

    const std::optional<QVariantMap> dictionary = ThumbnailCache::thumbnailDictionary(path);
    ASSERT_TRUE(dictionary);
    const QImage thumbnail = dictionary->value(Thumbnail1024x1024SizeKey).value<QImage>();
    EXPECT_EQ(thumbnail.size(), QSize(1024, 512));

    const QString cached = ThumbnailCache::cachePath(path, 1024);
    EXPECT_TRUE(cached.contains(QStringLiteral("/thumbnails/xx-large/")));
    ASSERT_TRUE(QFile::exists(cached)) << cached.toStdString();
    const QHash<QString, QString> text = ThumbnailCache::pngTextChunks(cached);
    EXPECT_EQ(text.value(QStringLiteral("Thumb::URI")),
              QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded()));
    EXPECT_FALSE(text.value(QStringLiteral("Thumb::MTime")).isEmpty());

    // A changed file gets a new thumbnail, not the cached one.
    image.fill(Qt::blue);
    ASSERT_TRUE(image.save(path));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime().addSecs(60),
                         QFileDevice::FileModificationTime);
    }
    const QImage fresh =
        ThumbnailCache::thumbnailDictionary(path)->value(Thumbnail1024x1024SizeKey).value<QImage>();
    EXPECT_EQ(QColor(fresh.pixel(10, 10)), QColor(Qt::blue));

    EXPECT_FALSE(ThumbnailCache::thumbnailDictionary(drive(QStringLiteral("none.txt"))));
}

TEST(UrlTest, EqualityIgnoresTrailingSlashAndKeepsThePhysicalURL) {
    const Url folder = Url::fromPath(QStringLiteral("/a/b/"));
    EXPECT_EQ(folder, Url::fromPath(QStringLiteral("/a/b")));
    EXPECT_EQ(qHash(folder), qHash(Url::fromPath(QStringLiteral("/a/b"))));
    EXPECT_EQ(folder.description(), QStringLiteral("file:///a/b/"));
    EXPECT_EQ(folder.appendingPathComponent(QStringLiteral("c.tar.gz")).pathExtension(),
              QStringLiteral("gz"));
    EXPECT_EQ(Url::fromPath(QStringLiteral("/a/.profile")).pathExtension(), QString());
    EXPECT_EQ(Url::fromPath(QStringLiteral("/a/x.txt")).deletingPathExtension().path(),
              QStringLiteral("/a/x"));
    EXPECT_EQ(Url::fromPath(QStringLiteral("/a")).deletingLastPathComponent().path(),
              QStringLiteral("/"));
    EXPECT_TRUE(folder.isAncestorOf(Url::fromPath(QStringLiteral("/a/b/c"))));
    EXPECT_FALSE(folder.isAncestorOf(Url::fromPath(QStringLiteral("/a/bc"))));

    Url logical = Url::fromPath(QStringLiteral("/d/x.pdf"));
    logical.setPromisedPhysicalURL(Url::fromPath(QStringLiteral("/d/.x.pdf.vlcloud")));
    const Url copy = logical;
    EXPECT_EQ(copy.promisedPhysicalURL(), Url::fromPath(QStringLiteral("/d/.x.pdf.vlcloud")));
    EXPECT_EQ(copy, Url::fromPath(QStringLiteral("/d/x.pdf")));
}

}  // namespace
}  // namespace vl
