#include "drive/service/DriveService.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentListModel.h"
#include "toolkit/DocumentListProgress.h"

#include <QDir>
#include <QFile>
#include <QListView>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>

using namespace vl;

namespace {

// A folder list over a drive with a cloud-only document, a local one, a folder and, with
// `manyFiles`, enough files that most rows are off screen.
class DocumentListOfflineTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        const QString home = dir.path() + QStringLiteral("/home");
        DriveStore store{DriveHome(home)};
        ASSERT_FALSE(store.prepare());
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store.writeAccount(account));
        const QString source = dir.path() + QStringLiteral("/source.txt");
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("hello");
        file.close();
        ASSERT_FALSE(store.importItem(source, QStringLiteral("Cloud.txt"), true));
        ASSERT_FALSE(store.importItem(source, QStringLiteral("Local.txt"), false));
        ASSERT_TRUE(QDir().mkpath(store.home().drivePathFor(QStringLiteral("Work"))));
        ASSERT_FALSE(store.importItem(source, QStringLiteral("Work/Letter.txt"), false));
        root = store.driveRootURL();
        service = DriveService::install(home);
    }
    void TearDown() override {
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }
    std::shared_ptr<DocumentListController> shownList(const Url& folder) {
        auto list = DocumentListController::createForURL(folder);
        list->loadViewIfNeeded();
        list->view()->resize(400, 300);
        list->view()->show();
        dispatch->runUntilIdle();
        return list;
    }
    static QModelIndex rowOf(const std::shared_ptr<DocumentListController>& list, const Url& url) {
        auto* model = static_cast<DocumentListModel*>(list->listView()->model());
        return model->index(model->rowForURL(url));
    }
    void advance(int ms) { dispatch->advanceBy(std::chrono::milliseconds(ms)); }

    VirtualDispatcher::Installation dispatch;
    QTemporaryDir dir;
    Url root;
    std::shared_ptr<DriveService> service;
};

TEST_F(DocumentListOfflineTest, PinnedRowsAreMarkedAndFollowPinChanges) {
    const Url local = root.appendingPathComponent("Local.txt");
    const Url work = root.appendingPathComponent("Work", true);
    ASSERT_FALSE(CloudDocuments::shared().setItemPinned(local, true));
    auto list = shownList(root);
    EXPECT_TRUE(rowOf(list, local).data(DocumentListModel::PinnedRole).toBool());
    EXPECT_EQ(rowOf(list, local).data(Qt::AccessibleDescriptionRole).toString(),
              QStringLiteral("Kept offline"));
    EXPECT_FALSE(rowOf(list, work).data(DocumentListModel::PinnedRole).toBool());
    EXPECT_FALSE(rowOf(list, work).data(Qt::AccessibleDescriptionRole).isValid());

    // Pinning a folder marks it here and everything inside it in its own list.
    ASSERT_FALSE(CloudDocuments::shared().setItemPinned(work, true));
    dispatch->runUntilIdle();
    EXPECT_TRUE(rowOf(list, work).data(DocumentListModel::PinnedRole).toBool());
    auto inside = shownList(work);
    EXPECT_TRUE(rowOf(inside, work.appendingPathComponent("Letter.txt"))
                    .data(DocumentListModel::PinnedRole)
                    .toBool());

    ASSERT_FALSE(CloudDocuments::shared().setItemPinned(work, false));
    ASSERT_FALSE(CloudDocuments::shared().setItemPinned(local, false));
    dispatch->runUntilIdle();
    EXPECT_FALSE(rowOf(list, local).data(DocumentListModel::PinnedRole).toBool());
    EXPECT_FALSE(rowOf(inside, work.appendingPathComponent("Letter.txt"))
                     .data(DocumentListModel::PinnedRole)
                     .toBool());
}

TEST_F(DocumentListOfflineTest, ARowShowsItsOwnDownloadCoalescedOnTheMainQueue) {
    const Url cloud = root.appendingPathComponent("Cloud.txt");
    const Url work = root.appendingPathComponent("Work", true);
    auto list = shownList(root);
    QSignalSpy changes(list->listView()->model(), &QAbstractItemModel::dataChanged);

    const auto progress = ItemProgress::create(200);
    progress->setFileURL(cloud);
    progress->publish();
    // Progress of an item inside a folder is not the folder's.
    const auto inner = ItemProgress::create(10);
    inner->setFileURL(work.appendingPathComponent("Letter.txt"));
    inner->publish();
    progress->setCompletedUnitCount(20);
    progress->setCompletedUnitCount(60);
    EXPECT_FALSE(rowOf(list, cloud).data(DocumentListModel::ProgressRole).isValid())
        << "applied on a later turn of the main queue";
    advance(DocumentListProgress::UpdateIntervalMs);
    EXPECT_DOUBLE_EQ(rowOf(list, cloud).data(DocumentListModel::ProgressRole).toDouble(), 0.3);
    EXPECT_EQ(rowOf(list, cloud).data(Qt::AccessibleDescriptionRole).toString(),
              QStringLiteral("Downloading, 30%"));
    EXPECT_EQ(changes.size(), 1) << "three changes, one repaint";
    EXPECT_FALSE(rowOf(list, work).data(DocumentListModel::ProgressRole).isValid());

    progress->setCompletedUnitCount(200);
    progress->unpublish();
    advance(DocumentListProgress::UpdateIntervalMs);
    EXPECT_FALSE(rowOf(list, cloud).data(DocumentListModel::ProgressRole).isValid());
    inner->unpublish();
}

TEST_F(DocumentListOfflineTest, OnlyTheRowsOnScreenAreFollowed) {
    const QString folder = root.path() + QStringLiteral("/Many");
    ASSERT_TRUE(QDir().mkpath(folder));
    for (int i = 0; i < 400; ++i) {
        QFile file(folder + QStringLiteral("/File %1.txt").arg(i, 3, 10, QLatin1Char('0')));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const Url many = Url::fromPath(folder, true);
    auto list = shownList(many);
    ASSERT_EQ(list->itemCount(), 400);
    const QList<Url> followed = list->downloadProgress()->subscribedURLs();
    EXPECT_GT(followed.size(), 3);
    EXPECT_LT(followed.size(), 40);
    EXPECT_TRUE(followed.contains(many.appendingPathComponent("File 000.txt")));

    // A download of a row off screen is followed once the row scrolls into view.
    const Url last = many.appendingPathComponent("File 399.txt");
    EXPECT_FALSE(followed.contains(last));
    const auto progress = ItemProgress::create(4);
    progress->setFileURL(last);
    progress->publish();
    progress->setCompletedUnitCount(1);
    list->listView()->scrollToBottom();
    dispatch->runUntilIdle();
    advance(DocumentListProgress::UpdateIntervalMs);
    EXPECT_TRUE(list->downloadProgress()->subscribedURLs().contains(last));
    EXPECT_FALSE(list->downloadProgress()->subscribedURLs().contains(
        many.appendingPathComponent("File 000.txt")));
    EXPECT_DOUBLE_EQ(rowOf(list, last).data(DocumentListModel::ProgressRole).toDouble(), 0.25);
    progress->unpublish();
}

}  // namespace
