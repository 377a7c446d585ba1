#include "fileops/LaunchUtils.h"
#include "model/DriveFixture.h"
#include "toolkit/apps/DesktopAppsEnvironment.h"

#include <gtest/gtest.h>

using namespace vl;
using vl::test::DesktopAppsEnvironment;

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace {

const auto* environment = ::testing::AddGlobalTestEnvironment(new DesktopAppsEnvironment);

class LaunchUtilsTest : public test::DriveFixture {
protected:
    void SetUp() override {
        DriveFixture::SetUp();
        QFile::remove(DesktopAppsEnvironment::launchesPath());
        addContainer("com.example.Editor", "Editor", "Editor");
    }
    // What the completion got; nothing when it was not called at once.
    std::optional<bool> open(const Url& url) {
        std::optional<bool> launched;
        LaunchUtils::openInDefaultAppRequireOpenInWithCompletionBlock(
            url, true, [&](bool answer) { launched = answer; });
        return launched;
    }
    QString appLine(const Url& url, const QString& fields) {
        return "App for " + url.description() + ": " + fields;
    }
};

TEST_F(LaunchUtilsTest, PicturesInTheUsersFoldersArePreviewedAndInAppLibrariesLaunched) {
    const Url photo = writeFile("Photos/cat.png");
    EXPECT_EQ(open(photo), false);
    EXPECT_TRUE(
        logged(7).contains("Preferring GP over default app to open " + photo.description()));

    const Url libraryPhoto = writeFile("Editor/cat.png");
    EXPECT_EQ(open(libraryPhoto), true);
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(1),
              QStringList{"Viewer " + libraryPhoto.path()});
    EXPECT_TRUE(
        logged(6).contains("Opening document " + libraryPhoto.description() + " in default app"));
    const QStringList appLines = logged(7).filter("App for " + libraryPhoto.description());
    ASSERT_EQ(appLines.size(), 1);
    EXPECT_TRUE(appLines[0].startsWith(
        appLine(libraryPhoto,
                "org.example.Viewer.desktop, Photo Viewer, Photo Viewer, , example.org, "
                "org.example.Viewer, " +
                    DesktopAppsEnvironment::root() + "/record-launch, " +
                    Url::fromPath(DesktopAppsEnvironment::applicationsDir(), true).description() +
                    ", 1, ")))
        << appLines[0].toStdString();

    // A name without an extension is no picture: the default-app rules decide (GIO offers text
    // applications for unknown data).
    const Url readme = writeFile("README");
    LaunchUtils::defaultAppForDocumentRequireOpenIn(readme, true);
    EXPECT_TRUE(logged(7).filter("Preferring GP").filter(readme.description()).isEmpty());
    EXPECT_EQ(logged(7).filter("App for " + readme.description()).size(), 1);
}

TEST_F(LaunchUtilsTest, AppsThatCannotOpenInPlaceAndThisAppItselfAreIgnored) {
    const Url pdf = writeFile("Report.pdf");
    EXPECT_EQ(open(pdf), false);
    EXPECT_TRUE(logged(7).contains(
        "App org.example.Launcher (Launcher) does not support open in place. Ignoring"));
    EXPECT_EQ(LaunchUtils::defaultAppNameForDocumentRequireOpenIn(pdf, false), "Launcher");

    const Url story = writeFile("Story.odt");
    EXPECT_EQ(open(story), false);
    EXPECT_TRUE(logged(7).contains("Ignoring com.tessaly.VelloraApp (Vellora) as default app"));
    EXPECT_EQ(LaunchUtils::defaultAppNameForDocumentRequireOpenIn(story, true), std::nullopt);
    EXPECT_TRUE(DesktopAppsEnvironment::waitForLaunches(1, 300).isEmpty())
        << "nothing was launched";
}

TEST_F(LaunchUtilsTest, CloudOnlyDocumentsAndReferencesGoToTheirDocumentsApp) {
    const Url cloudOnly = import("Notes.txt", "hello", true);
    EXPECT_EQ(LaunchUtils::defaultAppNameForDocumentRequireOpenIn(cloudOnly, true), "Notes");
    EXPECT_TRUE(logged(7).contains("Assuming apps can open a promised document..."));

    const Url target = writeFile("Editor/Chapter.txt");
    const Url reference = driveURL("Chapter.vlref");
    ASSERT_FALSE(store_->writeDocumentReference(reference, "Editor/Chapter.txt"));
    EXPECT_EQ(open(reference), true);
    EXPECT_TRUE(
        logged(6).contains("Opening document " + reference.description() + " in default app"));
    EXPECT_EQ(DesktopAppsEnvironment::waitForLaunches(1), QStringList{"Notes " + target.path()});
}

TEST_F(LaunchUtilsTest, OnlyTheDefaultContainersItemsLieInIt) {
    EXPECT_TRUE(LaunchUtils::isUrlInDefaultContainer(writeFile("Photos/cat.png")));
    EXPECT_FALSE(LaunchUtils::isUrlInDefaultContainer(writeFile("Editor/cat.png")));
    const Url outside = Url::fromPath(dir_.filePath("elsewhere.png"));
    EXPECT_FALSE(LaunchUtils::isUrlInDefaultContainer(outside));
    EXPECT_EQ(logged(4).filter("Can't get container for URL " + outside.description()).size(), 1);
}

}  // namespace
