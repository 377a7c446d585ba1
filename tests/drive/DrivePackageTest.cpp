#include "drive/store/DriveStore.h"
#include "platform/files/ContentTypeRegistry.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

const QString ManuscriptType = QStringLiteral("application/x-example-manuscript");

// Packages: folders that an app library's record declares to be one document each.
class DrivePackageTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        store_ = std::make_unique<DriveStore>(DriveHome(dir_.path() + QStringLiteral("/home")));
        ASSERT_FALSE(store_->prepare());
    }

    void declareManuscripts() {
        ContainerRecord writer;
        writer.identifier = QStringLiteral("com.example.Writer");
        writer.localizedName = QStringLiteral("Writer");
        writer.folder = QStringLiteral("Writer");
        writer.documentTypes.append(
            {QStringLiteral("Writer Document"), {QStringLiteral("text/plain")}});
        writer.documentTypes.append(
            {QStringLiteral("Manuscript"), {ManuscriptType}, true, {QStringLiteral("manuscript")}});
        ASSERT_FALSE(store_->addContainer(writer));
    }

    void writeFile(const QString& relative, const QByteArray& bytes) {
        const QString path = store_->home().drivePathFor(relative);
        QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/'))));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    std::optional<ItemAttributes> attributesOf(const QString& relative) {
        return store_->promisedItemAttributes(store_->driveURL(relative),
                                              ItemAttributeKeySets::itemModelKeys(), nullptr);
    }

    QTemporaryDir dir_;
    std::unique_ptr<DriveStore> store_;
};

TEST_F(DrivePackageTest, ContainerRecordsDeclareWhichFoldersArePackages) {
    writeFile(QStringLiteral("Writer/Book.manuscript/Text.md"), "text");
    writeFile(QStringLiteral("Loose.MANUSCRIPT/Text.md"), "text");
    writeFile(QStringLiteral("Stray.manuscript"), "a file, not a folder");
    QDir().mkpath(store_->home().drivePathFor(QStringLiteral("Letters.txt")));

    // Before any app declares the type, a manuscript is a plain folder.
    std::optional<ItemAttributes> book = attributesOf(QStringLiteral("Writer/Book.manuscript"));
    ASSERT_TRUE(book);
    EXPECT_FALSE(book->isPackage.value_or(true));
    EXPECT_EQ(book->contentType, ContentTypeRegistry::Folder);

    declareManuscripts();
    for (const char* name : {"Writer/Book.manuscript", "Loose.MANUSCRIPT"}) {
        book = attributesOf(QString::fromUtf8(name));
        ASSERT_TRUE(book) << name;
        EXPECT_TRUE(book->isPackage.value_or(false)) << name;
        EXPECT_EQ(book->contentType, ManuscriptType) << name;
        // The system knows nothing of the app's own type: the declared name describes it.
        EXPECT_EQ(book->localizedTypeDescription, QStringLiteral("Manuscript")) << name;
    }
    const std::optional<ItemAttributes> stray = attributesOf(QStringLiteral("Stray.manuscript"));
    ASSERT_TRUE(stray);
    EXPECT_FALSE(stray->isPackage.value_or(true));
    const std::optional<ItemAttributes> letters = attributesOf(QStringLiteral("Letters.txt"));
    ASSERT_TRUE(letters);
    EXPECT_FALSE(letters->isPackage.value_or(true));
    EXPECT_EQ(letters->contentType, ContentTypeRegistry::Folder);

    // The declaration survives the record's round trip through its file.
    const std::optional<ContainerRecord> read =
        store_->containerRecord(QStringLiteral("com.example.Writer"));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->documentTypes.size(), 2);
    EXPECT_TRUE(read->documentTypes.at(1).isPackage);
    EXPECT_EQ(read->documentTypes.at(1).extensions, QStringList{QStringLiteral("manuscript")});
    EXPECT_FALSE(read->documentTypes.at(0).isPackage);
}

TEST_F(DrivePackageTest, APackageIsEvictedWholeWhileAFolderKeepsItsPlace) {
    declareManuscripts();
    const QString sources = dir_.path() + QStringLiteral("/sources");
    QDir().mkpath(sources + QStringLiteral("/Book.manuscript"));
    for (const char* part : {"Text.md", "Outline.txt"}) {
        QFile file(sources + QStringLiteral("/Book.manuscript/") + QString::fromUtf8(part));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(part);
    }
    ASSERT_FALSE(store_->importItem(sources + QStringLiteral("/Book.manuscript"),
                                    QStringLiteral("Writer/Book.manuscript"), false));
    // Written into the drive folder by another program: eviction uploads it first.
    writeFile(QStringLiteral("Writer/Drafts/a.txt"), "a");

    const Url book = store_->driveURL(QStringLiteral("Writer/Book.manuscript"), true);
    ASSERT_FALSE(store_->evict(book));
    EXPECT_FALSE(QFile::exists(book.path()));
    EXPECT_TRUE(store_->isCloudOnly(book));
    const std::optional<ItemAttributes> placeholder =
        attributesOf(QStringLiteral("Writer/Book.manuscript"));
    ASSERT_TRUE(placeholder);
    EXPECT_TRUE(placeholder->isPackage.value_or(false));
    EXPECT_TRUE(
        QFile::exists(store_->cloudPathFor(QStringLiteral("Writer/Book.manuscript/Text.md"))));
    EXPECT_TRUE(
        QFile::exists(store_->cloudPathFor(QStringLiteral("Writer/Book.manuscript/Outline.txt"))));

    const Url drafts = store_->driveURL(QStringLiteral("Writer/Drafts"), true);
    ASSERT_FALSE(store_->evict(drafts));
    EXPECT_TRUE(QDir(drafts.path()).exists());
    EXPECT_FALSE(store_->isCloudOnly(drafts));
    EXPECT_TRUE(store_->isCloudOnly(store_->driveURL(QStringLiteral("Writer/Drafts/a.txt"))));
}

}  // namespace
}  // namespace vl
