#include "app/AppDelegate.h"

#include "browser/NavController.h"
#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"
#include "services/NetworkWatcher.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentPickerUnavailableController.h"
#include "toolkit/Window.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QThread>

namespace vl {
namespace {

class AppDelegateTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        home_ = dir_.path() + QStringLiteral("/home");
        store_ = std::make_unique<DriveStore>(DriveHome(home_));
        ASSERT_FALSE(store_->prepare());
        ServiceSettings settings;
        settings.network = ServiceSettings::NetworkCellular;
        ASSERT_FALSE(store_->writeServiceSettings(settings));
    }
    void TearDown() override {
        // The delegate starts the process-wide watcher; the next test's drive is another one.
        NetworkWatcher::sharedNetworkWatcher().stop();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    void signIn() {
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store_->writeAccount(account));
    }
    // Runs the main loop until `done` holds or ten seconds have passed.
    template <typename Predicate>
    static bool spinUntil(Predicate done) {
        QDeadlineTimer deadline(10'000);
        while (!done() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            QThread::msleep(5);
        }
        return done();
    }

    QTemporaryDir dir_;
    QString home_;
    std::unique_ptr<DriveStore> store_;
};

TEST_F(AppDelegateTest, LaunchingBuildsTheWindowAroundTheRootControllerAfterStartingTheWatcher) {
    signIn();
    const auto service = DriveService::install(home_);
    AppDelegate delegate;
    ASSERT_TRUE(delegate.applicationWillFinishLaunchingWithOptions({}));
    EXPECT_TRUE(delegate.applicationDidFinishLaunchingWithOptions(
        {{QStringLiteral("url"), QUrl(QStringLiteral("velloraapp:///x"))}}));

    Window* window = delegate.rootWindow();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->geometry(), Window::mainScreenBounds());
    EXPECT_FALSE(delegate.window());
    const auto root = std::dynamic_pointer_cast<NavController>(window->rootViewController());
    ASSERT_TRUE(root);
    EXPECT_EQ(root->restorationIdentifier(), QStringLiteral("Root"));
    EXPECT_TRUE(std::dynamic_pointer_cast<DocumentListController>(root->topViewController()));

    EXPECT_TRUE(delegate.applicationShouldSaveApplicationState());
    EXPECT_TRUE(delegate.applicationShouldRestoreApplicationState());

    // The watcher hears the drive's reachability (its override here) once started.
    EXPECT_TRUE(spinUntil([] {
        return NetworkWatcher::sharedNetworkWatcher().networkState() ==
               NetworkWatcher::NetworkStateCellular;
    }));
}

TEST_F(AppDelegateTest, WithoutAnAccountNoStateIsSavedOrRestored) {
    const auto service = DriveService::install(home_);
    AppDelegate delegate;
    EXPECT_FALSE(delegate.applicationShouldSaveApplicationState());
    ASSERT_TRUE(delegate.applicationWillFinishLaunchingWithOptions({}));
    const auto root =
        std::dynamic_pointer_cast<NavController>(delegate.rootWindow()->rootViewController());
    ASSERT_TRUE(root);
    EXPECT_TRUE(
        std::dynamic_pointer_cast<DocumentPickerUnavailableController>(root->topViewController()));
    EXPECT_FALSE(delegate.applicationShouldSaveApplicationState());
    EXPECT_FALSE(delegate.applicationShouldRestoreApplicationState());
}

}  // namespace
}  // namespace vl
