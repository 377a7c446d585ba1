#include "app/StartupFolders.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace vl;

namespace {

// Only what holds for root too: root writes through permission bits, so read-only folders are
// tried by the end-to-end test, on a read-only mount.
class StartupFoldersTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        QFile file(path("file"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QString path(const char* name) const {
        return dir_.path() + QLatin1Char('/') + QLatin1String(name);
    }

    QTemporaryDir dir_;
};

TEST_F(StartupFoldersTest, AMissingWritableFolderIsMadeAndLeftEmpty) {
    const QString folder = path("state/com.tessaly.VelloraApp");
    EXPECT_FALSE(StartupFolders::writableFolderProblem(folder, QStringLiteral("log folder"),
                                                       "XDG_STATE_HOME"));
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_TRUE(QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_F(StartupFoldersTest, AFileWhereAFolderBelongsIsNamedWithTheVariableThatMovesIt) {
    const std::optional<QString> problem = StartupFolders::writableFolderProblem(
        path("file"), QStringLiteral("log folder"), "XDG_STATE_HOME");
    ASSERT_TRUE(problem);
    EXPECT_TRUE(problem->startsWith(QStringLiteral("the log folder ") + path("file")));
    EXPECT_TRUE(problem->contains(QStringLiteral("XDG_STATE_HOME")));

    const std::optional<QString> beneath = StartupFolders::writableFolderProblem(
        path("file/state"), QStringLiteral("log folder"), "XDG_STATE_HOME");
    ASSERT_TRUE(beneath);
    EXPECT_TRUE(beneath->contains(QStringLiteral("cannot be made")));
}

TEST_F(StartupFoldersTest, TheDriveHomeMayBeMissingButNotAFile) {
    EXPECT_FALSE(StartupFolders::driveHomeProblem(path("home")));
    EXPECT_FALSE(QFileInfo::exists(path("home")));
    EXPECT_FALSE(StartupFolders::driveHomeProblem(dir_.path()));
    const std::optional<QString> file = StartupFolders::driveHomeProblem(path("file"));
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->contains(QStringLiteral("VELLORA_HOME")));
}

}  // namespace
