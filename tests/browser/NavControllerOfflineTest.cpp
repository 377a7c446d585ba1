#include "BrowserFixture.h"

#include "services/OfflineKeeper.h"
#include "toolkit/AlertAction.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentListModel.h"

#include <QListView>

namespace vl {
namespace {

// Keep Offline and Remove Download from the actions menu, on the virtual dispatcher: the keeper's
// queue, and the downloads its coordinated reads make, run when the test drains the queues.
class NavControllerOfflineTest : public test::BrowserFixture {
protected:
    void SetUp() override {
        BrowserFixture::SetUp();
        const QString source = dir_.path() + QStringLiteral("/photo");
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(1000, 'p'));
        file.close();
        for (const char* path : {"Work/Rome.jpg", "Work/Letters/Paris.jpg", "Cloud.jpg"}) {
            ASSERT_FALSE(store_->importItem(source, QString::fromUtf8(path), true));
        }
        // A folder that is only in the cloud comes down whole.
        ASSERT_TRUE(QDir().mkpath(dir_.path() + QStringLiteral("/Trip")));
        ASSERT_TRUE(QFile::copy(source, dir_.path() + QStringLiteral("/Trip/Day1.jpg")));
        ASSERT_FALSE(store_->importItem(dir_.path() + QStringLiteral("/Trip"),
                                        QStringLiteral("Work/Trip"), true));
    }
    std::shared_ptr<AlertController> menuFor(const QString& relative, bool directory = false) {
        nav_->showActionsMenuFromViewUrlPresentedURLCompletion(nullptr, url(relative, directory),
                                                               root_, [] {});
        return std::dynamic_pointer_cast<AlertController>(nav_->presentedViewController());
    }
    // Whether the menu's entry is enabled; the menu is dismissed.
    bool offers(const QString& relative, const QString& title, bool directory = false) {
        const auto sheet = menuFor(relative, directory);
        bool enabled = false;
        for (const auto& action : sheet->actions()) {
            if (action->title() == title) {
                enabled = action->isEnabled();
            }
        }
        sheet->dismissViewControllerAnimated(false);
        return enabled;
    }
    void choose(const QString& relative, const QString& title, bool directory = false) {
        const auto sheet = menuFor(relative, directory);
        for (const auto& action : sheet->actions()) {
            if (action->title() == title) {
                sheet->triggerAction(action);
            }
        }
        dispatch_->runUntilIdle();
    }
    bool isCloudOnly(const QString& relative) { return store_->isCloudOnly(url(relative)); }
    std::shared_ptr<AlertController> alert() const {
        return std::dynamic_pointer_cast<AlertController>(top()->presentedViewController());
    }
};

TEST_F(NavControllerOfflineTest, KeepOfflineBringsAFolderDownWholeAndRemoveDownloadSendsItBack) {
    EXPECT_TRUE(offers(QStringLiteral("Cloud.jpg"), QStringLiteral("Keep Offline")));
    EXPECT_FALSE(offers(QStringLiteral("Cloud.jpg"), QStringLiteral("Remove Download")))
        << "nothing of it is here";
    EXPECT_TRUE(offers(QStringLiteral("Work"), QStringLiteral("Keep Offline"), true));

    choose(QStringLiteral("Work"), QStringLiteral("Keep Offline"), true);
    for (const char* path : {"Work/Rome.jpg", "Work/Letters/Paris.jpg", "Work/Trip"}) {
        EXPECT_FALSE(isCloudOnly(QString::fromUtf8(path))) << path;
    }
    EXPECT_TRUE(isCloudOnly(QStringLiteral("Cloud.jpg")));
    EXPECT_TRUE(CloudDocuments::shared().isItemPinned(url(QStringLiteral("Work"), true)));
    EXPECT_EQ(
        log_.count(format("Keep offline of %@ ended: 0 failed", url(QStringLiteral("Work"), true))),
        1);
    EXPECT_FALSE(offers(QStringLiteral("Work"), QStringLiteral("Keep Offline"), true));
    EXPECT_FALSE(offers(QStringLiteral("Work/Rome.jpg"), QStringLiteral("Keep Offline")))
        << "kept with its folder";
    // The root list marks the folder.
    const QModelIndex work = top()->listView()->model()->index(
        static_cast<DocumentListModel*>(top()->listView()->model())
            ->rowForURL(url(QStringLiteral("Work"), true)),
        0);
    EXPECT_TRUE(work.data(DocumentListModel::PinnedRole).toBool());
    EXPECT_EQ(work.data(Qt::AccessibleDescriptionRole).toString(), QStringLiteral("Kept offline"));

    // An item inside stays with its folder, and the user is told why.
    choose(QStringLiteral("Work/Rome.jpg"), QStringLiteral("Remove Download"));
    ASSERT_TRUE(alert());
    EXPECT_EQ(alert()->title(),
              QStringLiteral("“Rome.jpg” is kept offline with the folder “Work”."));
    alert()->dismissViewControllerAnimated(false);
    EXPECT_FALSE(isCloudOnly(QStringLiteral("Work/Rome.jpg")));

    choose(QStringLiteral("Work"), QStringLiteral("Remove Download"), true);
    for (const char* path : {"Work/Rome.jpg", "Work/Letters/Paris.jpg", "Work/memo.txt"}) {
        EXPECT_TRUE(isCloudOnly(QString::fromUtf8(path))) << path;
    }
    EXPECT_FALSE(CloudDocuments::shared().isItemKeptOffline(url(QStringLiteral("Work"), true)));
    EXPECT_FALSE(alert());
    EXPECT_FALSE(top()
                     ->listView()
                     ->model()
                     ->index(work.row(), 0)
                     .data(DocumentListModel::PinnedRole)
                     .toBool());
}

TEST_F(NavControllerOfflineTest, FailuresAreToldInOneAlertAndNothingIsLost) {
    // Offline: the download fails, and an edit the cloud has not had stays on the device.
    ServiceSettings settings;
    settings.network = ServiceSettings::NetworkNone;
    ASSERT_FALSE(store_->writeServiceSettings(settings));
    choose(QStringLiteral("Cloud.jpg"), QStringLiteral("Keep Offline"));
    ASSERT_TRUE(alert());
    EXPECT_EQ(alert()->title(), QStringLiteral("Couldn’t download “Cloud.jpg”."));
    EXPECT_EQ(alert()->message(),
              QStringLiteral("Unable to download the file. You are no longer connected to the "
                             "Internet."));
    alert()->dismissViewControllerAnimated(false);
    EXPECT_TRUE(isCloudOnly(QStringLiteral("Cloud.jpg")));

    choose(QStringLiteral("a.txt"), QStringLiteral("Remove Download"));
    ASSERT_TRUE(alert());
    EXPECT_EQ(alert()->title(), QStringLiteral("Couldn’t remove the download of “a.txt”."));
    EXPECT_TRUE(alert()->message().startsWith(QStringLiteral("Its changes aren’t in the cloud")));
    alert()->dismissViewControllerAnimated(false);
    QFile file(url(QStringLiteral("a.txt")).path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "hello");
}

}  // namespace
}  // namespace vl
