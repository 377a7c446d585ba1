#include "app/AppDelegate.h"
#include "app/LaunchSource.h"

#include "browser/NavController.h"
#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "drive/store/DriveStore.h"
#include "model/VLItem.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "preview/PreviewItemManager.h"
#include "services/LogCapture.h"
#include "services/NetworkWatcher.h"
#include "toolkit/Window.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

// Launch URLs handed to a launched delegate on a signed-in drive holding
//   docs/Report one.txt   docs/50%.txt   docs/cloud.pdf (cloud-only)
class LaunchURLTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        home_ = dir_.path() + QStringLiteral("/home");
        store_ = std::make_unique<DriveStore>(DriveHome(home_));
        ASSERT_FALSE(store_->prepare());
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store_->writeAccount(account));
        docs_ = store_->driveRootURL().path() + QStringLiteral("/docs");
        ASSERT_TRUE(QDir().mkpath(docs_));
        for (const QString& name : {QStringLiteral("Report one.txt"), QStringLiteral("50%.txt")}) {
            QFile file(docs_ + QLatin1Char('/') + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("text");
        }
        QFile source(dir_.path() + QStringLiteral("/cloud.pdf"));
        ASSERT_TRUE(source.open(QIODevice::WriteOnly));
        source.write("%PDF-1.4");
        source.close();
        ASSERT_FALSE(store_->importItem(source.fileName(), QStringLiteral("docs/cloud.pdf"), true));

        service_ = DriveService::install(home_);
        ASSERT_TRUE(delegate_.applicationWillFinishLaunchingWithOptions({}));
        dispatch_->runUntilIdle();
    }
    void TearDown() override {
        NetworkWatcher::sharedNetworkWatcher().stop();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    std::shared_ptr<NavController> root() const {
        return std::dynamic_pointer_cast<NavController>(
            delegate_.rootWindow()->rootViewController());
    }
    // Opens "velloraapp://" + the escaped path of docs/<name> + query, from `source`.
    bool open(const QString& escapedName, const QString& query = QString(),
              const QVariant& source = LaunchSource::Drillbot) {
        QString text = QStringLiteral("velloraapp://") +
                       QString::fromUtf8(QUrl::toPercentEncoding(docs_, "/")) + QLatin1Char('/') +
                       escapedName;
        if (!query.isNull()) {
            text += QLatin1Char('?') + query;
        }
        return openText(text, source);
    }
    bool openText(const QString& text, const QVariant& source = LaunchSource::Drillbot) {
        QVariantMap options;
        if (source.isValid()) {
            options.insert(LaunchSource::OptionKey, source);
        }
        const bool opened =
            delegate_.applicationOpenURLOptions(QUrl(text, QUrl::StrictMode), options);
        dispatch_->runUntilIdle();
        return opened;
    }
    int mode() const { return root()->itemManager() ? root()->itemManager()->mode() : -1; }
    Url shownURL() const {
        return root()->itemManager() && root()->itemManager()->item()
                   ? root()->itemManager()->item()->url()
                   : Url();
    }

    VirtualDispatcher::Installation dispatch_;
    test::LogCapture log_;
    QTemporaryDir dir_;
    QString home_;
    QString docs_;
    std::unique_ptr<DriveStore> store_;
    std::shared_ptr<DriveService> service_;
    AppDelegate delegate_;
};

TEST_F(LaunchURLTest, TheLastRecognisedVerbChoosesTheMode) {
    const struct {
        const char* query;
        int mode;
    } cases[] = {
        {nullptr, PreviewItemManager::PreviewModePreview},
        {"mode=preview", PreviewItemManager::PreviewModePreview},
        {"mode=details", PreviewItemManager::PreviewModeDetails},
        {"mode=info", PreviewItemManager::PreviewModeDetails},
        {"mode=details&mode=preview", PreviewItemManager::PreviewModePreview},
        {"mode=preview&mode=bogus", PreviewItemManager::PreviewModePreview},
        {"mode=info&mode=bogus", PreviewItemManager::PreviewModeDetails},
        {"mode=preview&other=x&mode=info", PreviewItemManager::PreviewModeDetails},
        {"mode=edit", PreviewItemManager::PreviewModePreview},
        {"mode=Details", PreviewItemManager::PreviewModePreview},
        {"modes=details", PreviewItemManager::PreviewModePreview},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.query ? c.query : "(no query)");
        ASSERT_TRUE(open(QStringLiteral("Report%20one.txt"),
                         c.query ? QString::fromLatin1(c.query) : QString()));
        EXPECT_EQ(mode(), c.mode);
        EXPECT_EQ(shownURL().path(), docs_ + QStringLiteral("/Report one.txt"));
    }
}

TEST_F(LaunchURLTest, NamesValuesAndPathsAreUnescapedTwice) {
    ASSERT_TRUE(open(QStringLiteral("Report%20one.txt"), QStringLiteral("m%6Fde=d%65tails")));
    EXPECT_EQ(mode(), PreviewItemManager::PreviewModeDetails);
    ASSERT_TRUE(open(QStringLiteral("Report%20one.txt"), QStringLiteral("mode=preview")));
    ASSERT_TRUE(open(QStringLiteral("Report%2520one.txt"), QStringLiteral("m%256Fde=d%2565tails")));
    EXPECT_EQ(mode(), PreviewItemManager::PreviewModeDetails);
    EXPECT_EQ(shownURL().path(), docs_ + QStringLiteral("/Report one.txt"));
    // Three times is once too many: the verb is not heard.
    ASSERT_TRUE(open(QStringLiteral("Report%20one.txt"), QStringLiteral("mode=d%252565tails")));
    EXPECT_EQ(mode(), PreviewItemManager::PreviewModePreview);

    // A "%" that starts no escape survives both rounds.
    ASSERT_TRUE(open(QStringLiteral("50%25.txt"), QStringLiteral("mode=info")));
    EXPECT_EQ(shownURL().path(), docs_ + QStringLiteral("/50%.txt"));
}

TEST_F(LaunchURLTest, APromiseOpensAsTheItemItStandsFor) {
    ASSERT_TRUE(open(QStringLiteral(".cloud.pdf.vlcloud"), QStringLiteral("mode=details")));
    EXPECT_EQ(shownURL().path(), docs_ + QStringLiteral("/cloud.pdf"));
    ASSERT_TRUE(root()->itemManager()->item());
    EXPECT_TRUE(root()->itemManager()->item()->isPromise());
    EXPECT_EQ(mode(), PreviewItemManager::PreviewModeDetails);
}

TEST_F(LaunchURLTest, OnlyTheTwoTrustedSendersAreHeard) {
    EXPECT_TRUE(open(QStringLiteral("Report%20one.txt"), QString(), LaunchSource::HomeShell));
    EXPECT_TRUE(open(QStringLiteral("Report%20one.txt"), QString(), LaunchSource::Drillbot));

    root()->setItemManager(nullptr);
    EXPECT_FALSE(open(QStringLiteral("Report%20one.txt"), QString(), QVariant()));
    EXPECT_FALSE(open(QStringLiteral("Report%20one.txt"), QString(), "com.example.Mail"));
    EXPECT_FALSE(open(QStringLiteral("Report%20one.txt"), QString(), "com.tessaly.HomeShell"));
    EXPECT_FALSE(open(QStringLiteral("Report%20one.txt"), QString(), 42));
    EXPECT_FALSE(root()->itemManager());
    EXPECT_EQ(log_.count(QStringLiteral("Ignoring openURL launch from unknown source: (null)")), 2);
    EXPECT_EQ(
        log_.count(QStringLiteral("Ignoring openURL launch from unknown source: com.example.Mail")),
        1);
    EXPECT_EQ(log_.count(QStringLiteral(
                  "Ignoring openURL launch from unknown source: com.tessaly.HomeShell")),
              1);
}

TEST_F(LaunchURLTest, OtherSchemesAndPathsOutsideTheDriveAreRefused) {
    EXPECT_FALSE(openText(QStringLiteral("https://example.com") + docs_ + "/a.txt", QVariant()));
    EXPECT_FALSE(openText(QStringLiteral("velloraapp://host name/x"), QVariant()));
    EXPECT_EQ(log_.count(QStringLiteral("Ignoring openURL launch from unknown source: (null)")), 0);

    EXPECT_FALSE(openText(QStringLiteral("velloraapp:docs/Report%20one.txt")));
    EXPECT_FALSE(openText(QStringLiteral("velloraapp:///etc/hostname?mode=info")));
    EXPECT_FALSE(root()->itemManager());
}

}  // namespace
}  // namespace vl
