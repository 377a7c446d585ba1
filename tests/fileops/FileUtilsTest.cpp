#include "fileops/FileUtils.h"

#include "drive/CoordinationFixture.h"
#include "model/DriveFixture.h"
#include "model/ForwardingCloudDocuments.h"
#include "model/RefusingCoordinatorBackend.h"

#include <QDir>
#include <QFile>

#include <cerrno>

namespace vl::test {
namespace {

using FileUtilsTest = DriveFixture;

TEST_F(FileUtilsTest, MoveOntoItsOwnPathSucceedsAndChangesNothing) {
    const Url file = writeFile(QStringLiteral("Same.txt"), "same");
    EXPECT_FALSE(FileUtils::moveTo(file, Url::fromPath(file.path())));
    EXPECT_EQ(readAll(file.path()), QByteArray("same"));
    EXPECT_TRUE(logged(7).contains(QStringLiteral("Move: src and dest are the same")));
}

TEST_F(FileUtilsTest, MoveNeverReplacesOrMergesAnExistingItem) {
    const Url file = writeFile(QStringLiteral("A/Name.ext"), "moving");
    writeFile(QStringLiteral("B/Name.ext"), "staying");
    const Url folder = makeDir(QStringLiteral("A/Sub"));
    writeFile(QStringLiteral("A/Sub/inner.txt"), "inner");
    writeFile(QStringLiteral("B/Sub/other.txt"), "other");

    EXPECT_FALSE(FileUtils::moveTo(file, driveURL(QStringLiteral("B/Name.ext"))));
    EXPECT_EQ(readAll(drivePath(QStringLiteral("B/Name.ext"))), QByteArray("staying"));
    EXPECT_EQ(readAll(drivePath(QStringLiteral("B/Name 2.ext"))), QByteArray("moving"));
    EXPECT_FALSE(FileUtils::exists(file));
    EXPECT_TRUE(
        logged(7).contains(QStringLiteral("Avail  dest1: '%1'")
                               .arg(driveURL(QStringLiteral("B/Name 2.ext")).description())));

    EXPECT_FALSE(FileUtils::moveTo(folder, driveURL(QStringLiteral("B/Sub"), true)));
    EXPECT_EQ(QDir(drivePath(QStringLiteral("B/Sub"))).entryList(QDir::Files),
              QStringList{QStringLiteral("other.txt")});
    EXPECT_EQ(readAll(drivePath(QStringLiteral("B/Sub 2/inner.txt"))), QByteArray("inner"));
    EXPECT_TRUE(logged(6).contains(QStringLiteral("Move successful")));
}

TEST_F(FileUtilsTest, MoveBetweenAFileAndAFolderIsRefusedBeforeAnythingMoves) {
    const Url file = writeFile(QStringLiteral("Thing"), "file");
    const Url folder = makeDir(QStringLiteral("Box/Thing"));
    const Url otherFolder = makeDir(QStringLiteral("Crate"));
    const Url otherFile = writeFile(QStringLiteral("Box/Crate"), "crate");

    const std::optional<Error> fileOntoFolder = FileUtils::moveTo(file, folder);
    ASSERT_TRUE(fileOntoFolder);
    EXPECT_EQ(fileOntoFolder->domain(), Error::FileErrorDomain);
    EXPECT_EQ(fileOntoFolder->code(), Error::FeatureUnsupported);
    const std::optional<Error> folderOntoFile = FileUtils::moveTo(otherFolder, otherFile);
    ASSERT_TRUE(folderOntoFile);
    EXPECT_EQ(folderOntoFile->code(), Error::FeatureUnsupported);

    EXPECT_TRUE(FileUtils::isFile(file));
    EXPECT_TRUE(FileUtils::isDir(folder));
    EXPECT_TRUE(FileUtils::isDir(otherFolder));
    EXPECT_EQ(readAll(otherFile.path()), QByteArray("crate"));
    const QStringList errors = logged(3);
    EXPECT_TRUE(
        errors.contains(QStringLiteral("Move: must move a file to a file (dest is a dir)")));
    EXPECT_TRUE(errors.contains(QStringLiteral("Move: must move a dir to a dir (dest is a file)")));
}

TEST_F(FileUtilsTest, MissingSourceFailsWithTheMoveError) {
    const std::optional<Error> error =
        FileUtils::moveTo(driveURL(QStringLiteral("Ghost.txt")), driveURL(QStringLiteral("B.txt")));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), Error::FileErrorDomain);
    EXPECT_EQ(error->code(), Error::FileNoSuchFile);
    EXPECT_TRUE(logged(6).contains(
        QStringLiteral("Move: source filename does not exist, must be a fault.")));
    EXPECT_TRUE(logged(4).contains(QStringLiteral("Move failed: ") + error->description()));
}

TEST_F(FileUtilsTest, CloudOnlyItemMovesWithoutDownloading) {
    const Url logical = import(QStringLiteral("Cloud.pdf"), "cloud content", true);
    makeDir(QStringLiteral("Archive"));
    const Url target = driveURL(QStringLiteral("Archive/Cloud.pdf"));

    EXPECT_FALSE(FileUtils::moveTo(logical, target));
    CloudDocuments& documents = CloudDocuments::shared();
    EXPECT_TRUE(documents.hasItemPromiseAtURL(target));
    EXPECT_FALSE(QFile::exists(target.path()));
    EXPECT_FALSE(documents.checkPromisedItemIsReachable(logical, nullptr));
}

TEST_F(FileUtilsTest, PresenterOfTheSourceHearsOfTheMove) {
    const Url file = writeFile(QStringLiteral("Watched.txt"));
    auto presenter = std::make_shared<RecordingPresenter>(file);
    FileCoordinator::addFilePresenter(presenter);
    const Url target = driveURL(QStringLiteral("Renamed.txt"));

    EXPECT_FALSE(FileUtils::moveTo(file, target));
    // Removing a presenter drops what is still queued for it, so it is heard out first.
    EXPECT_EQ(presenter->events(), QStringList{QStringLiteral("move ") + target.path()});
    FileCoordinator::removeFilePresenter(presenter.get());
}

TEST_F(FileUtilsTest, FreeNamesCountOnWithoutParsingExistingNumbers) {
    const QString folder = makeDir(QStringLiteral("Names")).path();
    writeFile(QStringLiteral("Names/Report.odt"));
    writeFile(QStringLiteral("Names/Report 2.odt"));
    writeFile(QStringLiteral("Names/Notes"));
    writeFile(QStringLiteral("Names/.profile"));

    EXPECT_EQ(FileUtils::stringByUniquingPathInsideDirectoryForBasename(folder,
                                                                        QStringLiteral("Free.odt")),
              std::nullopt);
    EXPECT_EQ(FileUtils::stringByUniquingPathInsideDirectoryForBasename(
                  folder, QStringLiteral("Report.odt")),
              QStringLiteral("Report 3.odt"));
    EXPECT_EQ(FileUtils::stringByUniquingPathInsideDirectoryForBasename(
                  folder, QStringLiteral("Report 2.odt")),
              QStringLiteral("Report 2 2.odt"));
    EXPECT_EQ(
        FileUtils::stringByUniquingPathInsideDirectoryForBasename(folder, QStringLiteral("Notes")),
        QStringLiteral("Notes 2"));
    EXPECT_EQ(FileUtils::stringByUniquingPathInsideDirectoryForBasename(folder,
                                                                        QStringLiteral(".profile")),
              QStringLiteral(".profile 2"));
    EXPECT_EQ(FileUtils::generateUniquePath(driveURL(QStringLiteral("Names/Notes"))),
              driveURL(QStringLiteral("Names/Notes 2")));
}

TEST_F(FileUtilsTest, FoldersAreMadeWithTheirParentsAndRemovedWithTheirContents) {
    const Url deep = driveURL(QStringLiteral("One/Two/Three"), true);
    EXPECT_FALSE(FileUtils::mkdir(deep));
    EXPECT_TRUE(FileUtils::isDir(deep));
    EXPECT_FALSE(FileUtils::isFile(deep));
    EXPECT_TRUE(
        logged(6).contains(QStringLiteral("Created directory: '%1'").arg(deep.description())));

    writeFile(QStringLiteral("One/Two/Three/file.txt"));
    const Url top = driveURL(QStringLiteral("One"), true);
    EXPECT_FALSE(FileUtils::remove(top));
    EXPECT_FALSE(FileUtils::exists(top));
    EXPECT_TRUE(logged(6).contains(QStringLiteral("Deleted item: '%1'").arg(top.description())));

    const Url cloudOnly = import(QStringLiteral("Gone.pdf"), "g", true);
    EXPECT_FALSE(FileUtils::remove(cloudOnly));
    EXPECT_FALSE(CloudDocuments::shared().checkPromisedItemIsReachable(cloudOnly, nullptr));

    const Url never = driveURL(QStringLiteral("Never.txt"));
    const std::optional<Error> removeError = FileUtils::remove(never);
    ASSERT_TRUE(removeError);
    EXPECT_EQ(removeError->domain(), Error::POSIXErrorDomain);
    EXPECT_EQ(removeError->code(), ENOENT);
    EXPECT_EQ(logged(3).filter(QStringLiteral("failed to delete item:")).size(), 1);

    const Url underFile =
        writeFile(QStringLiteral("Plain")).appendingPathComponent(QStringLiteral("Sub"), true);
    const std::optional<Error> mkdirError = FileUtils::mkdir(underFile);
    ASSERT_TRUE(mkdirError);
    EXPECT_EQ(mkdirError->domain(), Error::POSIXErrorDomain);
    EXPECT_EQ(mkdirError->code(), ENOTDIR);
    EXPECT_EQ(logged(3).filter(QStringLiteral("failed to create directory:")).size(), 1);
}

TEST_F(FileUtilsTest, RefusedCoordinationAnswersTheCoordinatorsErrorAndChangesNothing) {
    const Url file = writeFile(QStringLiteral("Kept.txt"), "kept");
    const Url folder = driveURL(QStringLiteral("NotMade"), true);
    const Error refusal(Error::FileErrorDomain, Error::UserCancelled);
    {
        RefusingCoordinatorBackend::Scope refusing(refusal);
        EXPECT_EQ(FileUtils::mkdir(folder), refusal);
        EXPECT_EQ(FileUtils::remove(file), refusal);
        EXPECT_EQ(FileUtils::moveTo(file, driveURL(QStringLiteral("Moved.txt"))), refusal);
    }
    EXPECT_FALSE(FileUtils::exists(folder));
    EXPECT_EQ(readAll(file.path()), QByteArray("kept"));
    EXPECT_FALSE(FileUtils::exists(driveURL(QStringLiteral("Moved.txt"))));
}

TEST_F(FileUtilsTest, ResourceValuesArePromisedFirstAndNeverReadWithoutAURL) {
    const Url cloudOnly = import(QStringLiteral("Big.bin"), QByteArray(4321, 'b'), true);
    auto counting = ForwardingCloudDocuments::install();

    EXPECT_FALSE(FileUtils::getResourceValueForURL(ItemAttributeKey::FileSize, Url()).isValid());
    EXPECT_EQ(counting->attributeReads(), 0);
    EXPECT_EQ(
        FileUtils::getResourceValueForURL(ItemAttributeKey::FileSize, cloudOnly).toULongLong(),
        4321u);
    EXPECT_FALSE(FileUtils::getResourceValueForURL(ItemAttributeKey::FileSize,
                                                   driveURL(QStringLiteral("None")))
                     .isValid());
}

TEST_F(FileUtilsTest, EvictionLeavesACloudOnlyItemAndLogsFailures) {
    const Url local = import(QStringLiteral("Local.txt"), "local", false);
    ASSERT_TRUE(QFile::exists(local.path()));
    FileUtils::evictDocument(local);
    EXPECT_FALSE(QFile::exists(local.path()));
    EXPECT_TRUE(CloudDocuments::shared().hasItemPromiseAtURL(local));

    FileUtils::evictDocument(Url::fromPath(dir_.filePath(QStringLiteral("outside.txt"))));
    EXPECT_EQ(logged(4).filter(QStringLiteral("Evict error: ")).size(), 1);
}

TEST_F(FileUtilsTest, FileAttributesAreLoggedOrTheFailureIs) {
    const Url file = writeFile(QStringLiteral("Program"), "12345");
    FileUtils::logFileAttributes(file.path());
    const QStringList debug = logged(7);
    EXPECT_TRUE(debug.contains(QStringLiteral("Size: 5 bytes")));
    const QStringList created = debug.filter(QStringLiteral("Date Created: "));
    ASSERT_EQ(created.size(), 1);
    EXPECT_TRUE(created.first().endsWith(QStringLiteral(" seconds ago)")));
    EXPECT_FALSE(created.first().contains(QStringLiteral("(-")));
    EXPECT_EQ(debug.filter(QStringLiteral("Date Modified: ")).size(), 1);

    const QString missing = dir_.filePath(QStringLiteral("missing"));
    FileUtils::logFileAttributes(missing);
    const QStringList errors = logged(3).filter(QStringLiteral("Cannot get attributes of ") +
                                                missing + QStringLiteral(": "));
    EXPECT_EQ(errors.size(), 1);
}

}  // namespace
}  // namespace vl::test
