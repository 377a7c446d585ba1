#include "browser/NavController.h"

#include "services/LogCapture.h"

#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "platform/app/Preferences.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentPickerUnavailableController.h"
#include "toolkit/ViewControllerRegistry.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

namespace vl {
namespace {

class NavControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        home_ = dir_.path() + QStringLiteral("/home");
        // velloractl's side of the same home.
        other_ = std::make_unique<DriveStore>(DriveHome(home_));
        ASSERT_FALSE(other_->prepare());
        ASSERT_TRUE(QDir().mkpath(DriveHome(home_).driveDir() + QStringLiteral("/Work")));
        Preferences::standard().remove(NavController::NimbraIdentityTokenKey);
    }
    void TearDown() override {
        nav_.reset();
        dispatch_->runUntilIdle();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    void signIn() {
        AccountRecord account;
        account.account = QStringLiteral("ada@example.com");
        account.identity = AccountRecord::makeIdentity();
        account.freeBytes = 5'000'000'000;
        ASSERT_FALSE(other_->writeAccount(account));
    }
    void signOut() { ASSERT_FALSE(other_->removeAccount()); }

    // Starts the drive service (after the test's initial sign-in, so that the service has no
    // change to report) and loads the controller's view, as the window does when it first shows it.
    void load() {
        service_ = DriveService::install(home_);
        nav_ = std::make_shared<NavController>();
        nav_->loadViewIfNeeded();
        dispatch_->runUntilIdle();
    }
    void post(const QString& name) {
        NotificationCenter::defaultCenter().post(name);
        dispatch_->runUntilIdle();
    }
    void activate() { post(Notifications::ApplicationDidBecomeActive); }

    std::optional<CloudAccountToken> stored() const {
        const QVariant value = Preferences::standard().value(NavController::NimbraIdentityTokenKey);
        if (!value.isValid()) {
            return std::nullopt;
        }
        return CloudAccountToken::fromSerialized(
            QByteArray::fromBase64(value.toString().toLatin1()));
    }
    template <typename T>
    std::shared_ptr<T> top() const {
        return std::dynamic_pointer_cast<T>(nav_->topViewController());
    }

    VirtualDispatcher::Installation dispatch_;
    test::LogCapture log_;
    QTemporaryDir dir_;
    QString home_;
    std::unique_ptr<DriveStore> other_;
    std::shared_ptr<DriveService> service_;
    std::shared_ptr<NavController> nav_;
};

TEST_F(NavControllerTest, FirstActivationWithAnAccountStoresTheTokenAndRebuildsOnce) {
    signIn();
    load();
    ASSERT_TRUE(nav_->checkNimbraState());
    const auto firstList = top<DocumentListController>();
    ASSERT_TRUE(firstList);
    EXPECT_EQ(nav_->viewControllers().size(), 1);
    EXPECT_FALSE(nav_->isToolbarHidden());
    EXPECT_EQ(nav_->delegate().get(), nav_.get());
    EXPECT_EQ(nav_->viewTitle(), firstList->title());
    EXPECT_FALSE(stored());

    activate();
    EXPECT_EQ(stored(), CloudAccount::shared().identityToken());
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Changed, enabled=YES, reinitializing view")),
              1);
    EXPECT_EQ(log_.count(QStringLiteral("NavController viewDidLoad")), 2);
    ASSERT_TRUE(top<DocumentListController>());
    EXPECT_NE(top<DocumentListController>(), firstList);

    const auto rebuilt = top<DocumentListController>();
    activate();
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Matches")), 1);
    EXPECT_EQ(top<DocumentListController>(), rebuilt);

    nav_->logContainerURL();
    EXPECT_EQ(log_.count(format("Nimbra container is at %@",
                                *CloudDocuments::shared().defaultContainerURL())),
              1);
}

TEST_F(NavControllerTest, SigningOutInTheBackgroundShowsThePlaceholderAndSigningInTheBrowser) {
    signIn();
    load();
    activate();
    nav_->setQuotaBytes(123456);
    const std::optional<CloudAccountToken> before = stored();
    ASSERT_TRUE(before);

    signOut();
    activate();
    EXPECT_EQ(nav_->viewControllers().size(), 1);
    EXPECT_TRUE(top<DocumentPickerUnavailableController>());
    EXPECT_TRUE(nav_->isToolbarHidden());
    EXPECT_EQ(nav_->quotaBytes(), 0u);
    EXPECT_FALSE(nav_->quotaFetcher());
    EXPECT_FALSE(Preferences::standard().contains(NavController::NimbraIdentityTokenKey));
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Changed, enabled=NO, reinitializing view")),
              1);
    nav_->logContainerURL();
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra is not available")), 1);

    // Another account signs in while the app is in front.
    signIn();
    post(Notifications::CloudAccountIdentityDidChange);
    EXPECT_TRUE(top<DocumentListController>());
    EXPECT_FALSE(nav_->isToolbarHidden());
    EXPECT_TRUE(stored());
    EXPECT_NE(stored(), before);
    EXPECT_GE(log_.count(QStringLiteral("Nimbra account availability changed")), 1);
}

TEST_F(NavControllerTest, NoAccountBeforeOrNowMatchesAndAnUnreadableStoredTokenCountsAsNone) {
    load();
    const auto placeholder = top<DocumentPickerUnavailableController>();
    ASSERT_TRUE(placeholder);
    EXPECT_TRUE(nav_->isToolbarHidden());
    activate();
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Matches")), 1);
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Changed, enabled=NO, reinitializing view")),
              0);
    EXPECT_EQ(top<DocumentPickerUnavailableController>(), placeholder);

    Preferences::standard().setValue(NavController::NimbraIdentityTokenKey,
                                     QStringLiteral("not a token"));
    activate();
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Matches")), 2);
    signIn();
    activate();
    EXPECT_EQ(stored(), CloudAccount::shared().identityToken());
    EXPECT_TRUE(top<DocumentListController>());
}

TEST_F(NavControllerTest, ActivationWithTheSameAccountKeepsTheStackAndEditMode) {
    signIn();
    load();
    activate();
    const auto work = DocumentListController::createForURL(
        Url::fromPath(DriveHome(home_).driveDir() + QStringLiteral("/Work")));
    ASSERT_TRUE(work);
    nav_->pushViewController(work, false);
    dispatch_->runUntilIdle();
    nav_->setEditMode(true);
    const auto stack = nav_->viewControllers();

    activate();
    post(Notifications::CloudAccountIdentityDidChange);
    EXPECT_EQ(nav_->viewControllers(), stack);
    EXPECT_TRUE(nav_->editMode());
    EXPECT_EQ(log_.count(QStringLiteral("Nimbra Token Matches")), 2);
}

TEST_F(NavControllerTest, WithoutThePlaceholderClassAnAlertSaysSo) {
    ViewControllerRegistry::unregisterClass(DocumentPickerUnavailableController::ClassName);
    load();
    ViewControllerRegistry::registerClass(DocumentPickerUnavailableController::ClassName, [] {
        return std::make_shared<DocumentPickerUnavailableController>();
    });
    EXPECT_TRUE(nav_->viewControllers().isEmpty());
    EXPECT_TRUE(nav_->isToolbarHidden());
    EXPECT_EQ(log_.count(QStringLiteral("DocumentPickerUnavailableController creation failed")), 1);
    const auto alert = std::dynamic_pointer_cast<AlertController>(nav_->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title(), QString());
    EXPECT_EQ(alert->message(), QStringLiteral("Nimbra is not enabled"));
    EXPECT_EQ(alert->actions().size(), 1);
}

}  // namespace
}  // namespace vl
