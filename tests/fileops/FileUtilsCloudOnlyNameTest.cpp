#include "fileops/FileUtils.h"

#include "model/DriveFixture.h"

namespace vl::test {
namespace {

using FileUtilsCloudOnlyNameTest = DriveFixture;

// A cloud-only item is only a placeholder on this device, but its name is taken all the same: a
// move onto it, or a free name chosen beside it, never lands on it.
TEST_F(FileUtilsCloudOnlyNameTest, AMoveOntoACloudOnlyItemTakesTheNextFreeName) {
    makeDir(QStringLiteral("Shelf"));
    import(QStringLiteral("Shelf/Name.txt"), "in the cloud", true);
    import(QStringLiteral("Shelf/Name 2.txt"), "also in the cloud", true);
    const Url moving = writeFile(QStringLiteral("Name.txt"), "moving");

    EXPECT_EQ(FileUtils::generateUniquePath(driveURL(QStringLiteral("Shelf/Name.txt"))),
              driveURL(QStringLiteral("Shelf/Name 3.txt")));
    EXPECT_FALSE(FileUtils::moveTo(moving, driveURL(QStringLiteral("Shelf/Name.txt"))));
    EXPECT_EQ(readAll(drivePath(QStringLiteral("Shelf/Name 3.txt"))), QByteArray("moving"));
    EXPECT_TRUE(store_->isCloudOnly(driveURL(QStringLiteral("Shelf/Name.txt"))));
    EXPECT_EQ(readAll(store_->cloudPathFor(QStringLiteral("Shelf/Name.txt"))),
              QByteArray("in the cloud"));
}

}  // namespace
}  // namespace vl::test
