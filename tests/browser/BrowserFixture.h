#pragma once

#include "services/LogCapture.h"

#include "browser/NavController.h"
#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "drive/store/ContainerRecord.h"
#include "drive/store/DriveStore.h"
#include "platform/app/Preferences.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "services/NetworkWatcher.h"
#include "toolkit/DocumentListController.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vl::test {

// A signed-in drive on a temporary home and a NavController showing its root list:
//   drive/  a.txt  b.txt  Work/ (Letters/, memo.txt)  Plan.pages/
//           Notes/  (app library, no folders: n1.txt n2.txt)
//           Editor/ (app library, one level: Drafts/ (d.txt), e.txt)
class BrowserFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        home_ = dir_.path() + QStringLiteral("/home");
        store_ = std::make_unique<DriveStore>(DriveHome(home_));
        ASSERT_FALSE(store_->prepare());
        AccountRecord account;
        account.account = QStringLiteral("ada@example.com");
        account.identity = AccountRecord::makeIdentity();
        account.freeBytes = 3'650'722'202;  // 3.4 GB in 1024-based units
        ASSERT_FALSE(store_->writeAccount(account));
        addLibrary(QStringLiteral("com.example.Notes"), QStringLiteral("Notes"),
                   CloudContainer::FolderLevelsNone);
        addLibrary(QStringLiteral("com.example.Editor"), QStringLiteral("Editor"),
                   CloudContainer::FolderLevelsOne);
        root_ = store_->driveRootURL();
        for (const char* path : {"a.txt", "b.txt", "Work/memo.txt", "Plan.pages/index.xml",
                                 "com~example~Notes/n1.txt", "com~example~Notes/n2.txt",
                                 "com~example~Editor/Drafts/d.txt", "com~example~Editor/e.txt"}) {
            write(QString::fromUtf8(path));
        }
        ASSERT_TRUE(QDir(root_.path()).mkpath(QStringLiteral("Work/Letters")));
        Preferences::standard().remove(NavController::NimbraIdentityTokenKey);

        service_ = DriveService::install(home_);
        nav_ = std::make_shared<NavController>();
        nav_->loadViewIfNeeded();
        dispatch_->runUntilIdle();
    }
    void TearDown() override {
        nav_.reset();
        dispatch_->runUntilIdle();
        NetworkWatcher::sharedNetworkWatcher().updateState(NetworkWatcher::NetworkStateUnknown);
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    void addLibrary(const QString& identifier, const QString& name, const QString& levels) {
        ContainerRecord record;
        record.identifier = identifier;
        record.localizedName = name;
        record.folder = QString(identifier).replace(QLatin1Char('.'), QLatin1Char('~'));
        record.folderLevels = levels;
        ASSERT_FALSE(store_->addContainer(record));
    }
    void write(const QString& relative) {
        const QString path = root_.path() + QLatin1Char('/') + relative;
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("hello");
    }
    Url url(const QString& relative, bool directory = false) const {
        return Url::fromPath(root_.path() + QLatin1Char('/') + relative, directory);
    }
    // A loaded list of a folder, not on the stack.
    std::shared_ptr<DocumentListController> listOf(const QString& relative) {
        auto list = DocumentListController::createForURL(url(relative, true));
        dispatch_->runUntilIdle();
        return list;
    }
    std::shared_ptr<DocumentListController> top() const {
        return std::dynamic_pointer_cast<DocumentListController>(nav_->topViewController());
    }
    // Taps the folder's row in the top list, as a person does, and lets the push finish.
    void enter(const QString& relative) {
        ASSERT_TRUE(top()->tapItemAtURL(url(relative, true)));
        dispatch_->runUntilIdle();
    }

    VirtualDispatcher::Installation dispatch_;
    LogCapture log_;
    QTemporaryDir dir_;
    QString home_;
    std::unique_ptr<DriveStore> store_;
    Url root_;
    std::shared_ptr<DriveService> service_;
    std::shared_ptr<NavController> nav_;
};

}  // namespace vl::test
