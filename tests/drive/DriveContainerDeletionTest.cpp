#include "CoordinationFixture.h"

#include "drive/service/CloudDocumentsService.h"

#include <QDirIterator>

namespace vl::test {
namespace {

// Deleting an app library's contents, as the browser's delete flow asks the cloud documents
// service to: everything of the library goes, here and in the cloud copy, and nothing else.
class DriveContainerDeletionTest : public CoordinationFixture {
protected:
    void SetUp() override {
        CoordinationFixture::SetUp();
        ContainerRecord editor;
        editor.identifier = QStringLiteral("com.example.Editor");
        editor.localizedName = QStringLiteral("Editor");
        editor.folder = QStringLiteral("Editor");
        editor.folderLevels = CloudContainer::FolderLevelsAny;
        ASSERT_FALSE(store_->addContainer(editor));
        QDir().mkpath(sources_.path() + QStringLiteral("/Chapters"));
        ASSERT_TRUE(writeFile(sources_.path() + QStringLiteral("/Chapters/1.txt"), "one"));
        ASSERT_FALSE(store_->importItem(sources_.path() + QStringLiteral("/Chapters"),
                                        QStringLiteral("Editor/Chapters"), false));
        importBytes(QStringLiteral("Editor/Draft.txt"), "draft", false);
        importBytes(QStringLiteral("Editor/Notes.txt"), "notes", true);
        importBytes(QStringLiteral("Letter.txt"), "letter", false);
        importBytes(QStringLiteral("Old.txt"), "old", true);
        // Another device's upload that this device has no placeholder for yet.
        ASSERT_TRUE(writeFile(store_->cloudPathFor(QStringLiteral("Editor/Remote.txt")), "r"));
        ASSERT_FALSE(store_->setSharedRole(driveURL(QStringLiteral("Editor/Draft.txt")),
                                           QStringLiteral("owner")));
        documents_ = std::make_unique<CloudDocumentsService>(store_);
    }

    CloudContainer container(const QString& relative) const {
        const auto found = documents_->containerForItemAtURL(
            driveURL(relative).appendingPathComponent(QStringLiteral("x")), nullptr);
        EXPECT_TRUE(found);
        return found.value_or(CloudContainer());
    }

    static QStringList entries(const QString& folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                      QDir::NoDotAndDotDot);
    }

    std::unique_ptr<CloudDocumentsService> documents_;
};

TEST_F(DriveContainerDeletionTest, EveryItemGoesHereAndInTheCloudAndNothingElse) {
    backend_->waitUntilExternalChangesDelivered();  // the imports of SetUp
    auto draft = std::make_shared<RecordingPresenter>(driveURL(QStringLiteral("Editor/Draft.txt")));
    auto letter = std::make_shared<RecordingPresenter>(driveURL(QStringLiteral("Letter.txt")));
    FileCoordinator::addFilePresenter(draft);
    FileCoordinator::addFilePresenter(letter);

    EXPECT_FALSE(documents_->deleteAllContentsOfContainer(container(QStringLiteral("Editor"))));

    // The library stays, empty on both sides.
    EXPECT_TRUE(QFileInfo(drivePath(QStringLiteral("Editor"))).isDir());
    EXPECT_TRUE(QFileInfo(store_->cloudPathFor(QStringLiteral("Editor"))).isDir());
    EXPECT_EQ(entries(drivePath(QStringLiteral("Editor"))), QStringList());
    EXPECT_EQ(entries(store_->cloudPathFor(QStringLiteral("Editor"))), QStringList());
    EXPECT_TRUE(store_->containerRecord(QStringLiteral("com.example.Editor")));
    EXPECT_FALSE(store_->sharedRole(driveURL(QStringLiteral("Editor/Draft.txt"))));
    // The rest of the drive is as it was.
    EXPECT_EQ(readFile(drivePath(QStringLiteral("Letter.txt"))), QByteArray("letter"));
    EXPECT_EQ(readFile(store_->cloudPathFor(QStringLiteral("Letter.txt"))), QByteArray("letter"));
    EXPECT_TRUE(store_->isCloudOnly(driveURL(QStringLiteral("Old.txt"))));
    // Whoever showed an item of the library hears it is gone; nobody else hears anything.
    backend_->waitUntilExternalChangesDelivered();
    EXPECT_EQ(draft->events(), QStringList{QStringLiteral("delete")});
    EXPECT_EQ(letter->events(), QStringList());
    // Nothing comes back when the home is opened again.
    DriveStore reopened{DriveHome(dir_.path())};
    EXPECT_FALSE(reopened.prepare());
    EXPECT_EQ(entries(drivePath(QStringLiteral("Editor"))), QStringList());
    FileCoordinator::removeFilePresenter(draft.get());
    FileCoordinator::removeFilePresenter(letter.get());
}

TEST_F(DriveContainerDeletionTest, TheDefaultContainerAndUnknownOnesAreRefused) {
    const std::optional<Error> refused =
        documents_->deleteAllContentsOfContainer(container(QString()));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->domain(), Error::FileErrorDomain);
    EXPECT_EQ(refused->code(), Error::FeatureUnsupported);
    EXPECT_EQ(readFile(drivePath(QStringLiteral("Letter.txt"))), QByteArray("letter"));
    EXPECT_EQ(readFile(drivePath(QStringLiteral("Editor/Draft.txt"))), QByteArray("draft"));

    const std::optional<Error> unknown =
        store_->deleteContainerContents(QStringLiteral("com.example.Gone"));
    ASSERT_TRUE(unknown);
    EXPECT_EQ(unknown->code(), Error::FileReadNoSuchFile);
}

// velloractl plays the cloud side without a coordinator: the store alone does the whole job.
TEST_F(DriveContainerDeletionTest, WithoutACoordinatorTheStoreDoesItAlone) {
    FileCoordinator::Backend::setShared(nullptr);
    EXPECT_FALSE(documents_->deleteAllContentsOfContainer(container(QStringLiteral("Editor"))));
    EXPECT_EQ(entries(drivePath(QStringLiteral("Editor"))), QStringList());
    EXPECT_EQ(entries(store_->cloudPathFor(QStringLiteral("Editor"))), QStringList());
    EXPECT_EQ(readFile(store_->cloudPathFor(QStringLiteral("Letter.txt"))), QByteArray("letter"));
}

}  // namespace
}  // namespace vl::test
