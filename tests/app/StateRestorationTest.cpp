#include "app/AppDelegate.h"
#include "app/StateRestoration.h"

#include "browser/NavController.h"
#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "drive/store/DriveStore.h"
#include "model/VLItem.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewItemManager.h"
#include "services/LogCapture.h"
#include "services/NetworkWatcher.h"
#include "toolkit/Window.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

// A run of the app that shows a file's details and ends, and the next run on the same archive.
class StateRestorationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        home_ = dir_.path() + QStringLiteral("/home");
        store_ = std::make_unique<DriveStore>(DriveHome(home_));
        ASSERT_FALSE(store_->prepare());
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store_->writeAccount(account));
        file_ = Url::fromPath(store_->driveRootURL().path() + QStringLiteral("/notes.txt"));
        QFile file(file_.path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("notes");
        service_ = DriveService::install(home_);
    }
    void TearDown() override {
        NetworkWatcher::sharedNetworkWatcher().stop();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    // A launched delegate with its state restored from the archive.
    std::unique_ptr<AppDelegate> launch() {
        auto delegate = std::make_unique<AppDelegate>();
        delegate->applicationWillFinishLaunchingWithOptions({});
        StateRestoration(*delegate, archive()).restoreApplicationState();
        dispatch_->runUntilIdle();
        return delegate;
    }
    static std::shared_ptr<NavController> rootOf(const AppDelegate& delegate) {
        return std::dynamic_pointer_cast<NavController>(
            delegate.rootWindow()->rootViewController());
    }
    RestorationArchive archive() const {
        return RestorationArchive(dir_.path() + QStringLiteral("/data/RestorationArchive.json"));
    }

    VirtualDispatcher::Installation dispatch_;
    test::LogCapture log_;
    QTemporaryDir dir_;
    QString home_;
    Url file_;
    std::unique_ptr<DriveStore> store_;
    std::shared_ptr<DriveService> service_;
};

TEST_F(StateRestorationTest, TheDetailsShownAtTheEndComeBackAtTheNextStart) {
    {
        const auto delegate = launch();
        rootOf(*delegate)->showPreviewPreviewMode(VLItem::initWithURL(file_),
                                                  PreviewItemManager::PreviewModeDetails);
        dispatch_->runUntilIdle();
        StateRestoration(*delegate, archive()).saveApplicationState();
    }
    const auto coders = archive().read();
    ASSERT_EQ(coders.count(QStringLiteral("Root")), 1);
    EXPECT_EQ(coders.at(QStringLiteral("Root")).url(QStringLiteral("url")), file_);
    EXPECT_EQ(coders.at(QStringLiteral("Root")).integer(QStringLiteral("PreviewMode")), 1);

    const auto delegate = launch();
    const auto root = rootOf(*delegate);
    ASSERT_TRUE(root->itemManager());
    EXPECT_EQ(root->itemManager()->item()->url(), file_);
    EXPECT_TRUE(std::dynamic_pointer_cast<PreviewDetailsViewController>(root->topViewController()));
}

TEST_F(StateRestorationTest, NothingIsKeptOrBroughtBackWhileSignedOut) {
    {
        const auto delegate = launch();
        rootOf(*delegate)->showPreviewPreviewMode(VLItem::initWithURL(file_),
                                                  PreviewItemManager::PreviewModeDetails);
        dispatch_->runUntilIdle();
        StateRestoration(*delegate, archive()).saveApplicationState();
        ASSERT_TRUE(QFile::exists(archive().path()));
        ASSERT_FALSE(store_->removeAccount());
        StateRestoration(*delegate, archive()).saveApplicationState();
        EXPECT_FALSE(QFile::exists(archive().path()));
    }

    // An archive from before the sign-out is not used either.
    StateCoder coder;
    coder.setUrl(QStringLiteral("url"), file_);
    ASSERT_FALSE(archive().write({{QStringLiteral("Root"), coder}}));
    const auto delegate = launch();
    EXPECT_FALSE(rootOf(*delegate)->itemManager());
}

TEST_F(StateRestorationTest, AnArchiveThatCantBeReadIsPassedOver) {
    ASSERT_FALSE(archive().write({}));
    for (const QByteArray& content : {QByteArray("{\"version\": 1, \"controllers\": "),
                                      QByteArray("{\"version\": 7, \"controllers\": {}}"),
                                      QByteArray("{\"version\": 1, \"controllers\": {\"Root\": "
                                                 "{\"url\": {\"integer\": \"3\"}}}}")}) {
        QFile file(archive().path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
        file.close();
        const auto delegate = launch();
        EXPECT_FALSE(rootOf(*delegate)->itemManager());
        EXPECT_EQ(rootOf(*delegate)->viewControllers().size(), 1);
    }
    EXPECT_EQ(log_.messages().filter(QStringLiteral("Not restoring the interface")).size(), 2);
}

}  // namespace
}  // namespace vl
