#include "drive/service/CloudAccountService.h"
#include "drive/service/DriveService.h"
#include "platform/app/NotificationCenter.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace vl {
namespace {

// Waits for a notification posted from the service's watcher thread.
class NotificationWaiter {
public:
    explicit NotificationWaiter(const QString& name) {
        token_ = NotificationCenter::defaultCenter().addObserver(
            name, nullptr, [this](const Notification& notification) {
                std::lock_guard lock(mutex_);
                ++count_;
                last_ = notification;
                condition_.notify_all();
            });
    }
    ~NotificationWaiter() { NotificationCenter::defaultCenter().removeObserver(token_); }

    bool wait(int count = 1) {
        std::unique_lock lock(mutex_);
        return condition_.wait_for(lock, std::chrono::seconds(10), [&] { return count_ >= count; });
    }
    Notification last() {
        std::lock_guard lock(mutex_);
        return last_;
    }

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    int count_ = 0;
    Notification last_;
    NotificationCenter::TokenPtr token_;
};

class DriveServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        home_ = dir_.path() + QStringLiteral("/home");
        // Another process (velloractl) working on the same home.
        other_ = std::make_unique<DriveStore>(DriveHome(home_));
        ASSERT_FALSE(other_->prepare());
        AccountRecord account;
        account.account = QStringLiteral("ada@example.com");
        account.identity = AccountRecord::makeIdentity();
        account.freeBytes = 123456789;
        ASSERT_FALSE(other_->writeAccount(account));
        service_ = DriveService::install(home_);
    }
    void TearDown() override {
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    QTemporaryDir dir_;
    QString home_;
    std::unique_ptr<DriveStore> other_;
    std::shared_ptr<DriveService> service_;
};

TEST_F(DriveServiceTest, SignOutWhileRunningPostsIdentityChange) {
    const std::optional<CloudAccountToken> before = CloudAccount::shared().identityToken();
    ASSERT_TRUE(before);
    EXPECT_EQ(CloudAccountToken::fromSerialized(before->serialized()), before);
    EXPECT_TRUE(CloudDocuments::shared().driveRootURL());

    NotificationWaiter waiter(Notifications::CloudAccountIdentityDidChange);
    ASSERT_FALSE(other_->removeAccount());
    ASSERT_TRUE(waiter.wait());
    EXPECT_FALSE(CloudAccount::shared().identityToken());
    EXPECT_FALSE(CloudDocuments::shared().driveRootURL());

    AccountRecord account;
    account.identity = AccountRecord::makeIdentity();
    ASSERT_FALSE(other_->writeAccount(account));
    ASSERT_TRUE(waiter.wait(2));
    EXPECT_TRUE(CloudAccount::shared().identityToken());
    EXPECT_NE(CloudAccount::shared().identityToken(), before);
}

TEST_F(DriveServiceTest, QuotaAnswersFreeBytesOffTheCallersThreadOrAnError) {
    std::mutex mutex;
    std::condition_variable condition;
    std::optional<std::pair<quint64, std::optional<Error>>> answer;
    Qt::HANDLE answeredOn = nullptr;
    auto ask = [&] {
        answer.reset();
        CloudAccount::shared().performQuotaOperation(
            [&](quint64 freeBytes, std::optional<Error> error) {
                std::lock_guard lock(mutex);
                answer = {freeBytes, error};
                answeredOn = QThread::currentThreadId();
                condition.notify_all();
            });
        std::unique_lock lock(mutex);
        return condition.wait_for(lock, std::chrono::seconds(10),
                                  [&] { return answer.has_value(); });
    };
    ASSERT_TRUE(ask());
    EXPECT_EQ(answer->first, 123456789u);
    EXPECT_FALSE(answer->second);
    EXPECT_NE(answeredOn, QThread::currentThreadId());

    auto expectError = [&](const QString& domain, int code) {
        ASSERT_TRUE(ask());
        EXPECT_EQ(answer->first, 0u);
        ASSERT_TRUE(answer->second);
        EXPECT_EQ(answer->second->domain(), domain);
        EXPECT_EQ(answer->second->code(), code);
    };
    AccountRecord account = *other_->readAccount();
    account.freeBytes.reset();
    ASSERT_FALSE(other_->writeAccount(account));
    expectError(CloudAccountService::ErrorDomain, CloudAccountService::QuotaUnavailable);

    // Offline, the server can't be asked; signed out, there is no account to ask about.
    account.freeBytes = 42;
    ASSERT_FALSE(other_->writeAccount(account));
    ServiceSettings offline;
    offline.network = ServiceSettings::NetworkNone;
    ASSERT_FALSE(other_->writeServiceSettings(offline));
    expectError(Error::FileErrorDomain, Error::CloudServerUnavailable);
    ASSERT_FALSE(other_->removeAccount());
    expectError(CloudAccountService::ErrorDomain, CloudAccountService::NotAuthenticated);
}

TEST_F(DriveServiceTest, KeyValueStoreSeesOtherProcessesButNotItsOwnWrites) {
    NotificationWaiter waiter(Notifications::KeyValueStoreDidChangeExternally);
    KeyValueStore::shared().setObject(QStringLiteral("mine"), QStringLiteral("Local"));
    EXPECT_EQ(other_->readKeyValueStore().value(QStringLiteral("Local")), QStringLiteral("mine"));

    QVariantMap values = other_->readKeyValueStore();
    values.insert(QStringLiteral("CurioTagDict"),
                  QVariantMap{{QStringLiteral("CurioTagDictVersion"), 2}});
    ASSERT_FALSE(other_->writeKeyValueStore(values));
    ASSERT_TRUE(waiter.wait());
    EXPECT_EQ(waiter.last().userInfo.value(QStringLiteral("ChangedKeys")).toStringList(),
              QStringList{QStringLiteral("CurioTagDict")});
    const std::optional<QVariantMap> dictionary =
        KeyValueStore::shared().dictionaryForKey(QStringLiteral("CurioTagDict"));
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(dictionary->value(QStringLiteral("CurioTagDictVersion")).toInt(), 2);
}

TEST_F(DriveServiceTest, ContainersAndAppLibrariesThroughTheContract) {
    ContainerRecord editor;
    editor.identifier = QStringLiteral("com.example.Editor");
    editor.localizedName = QStringLiteral("Editor");
    editor.folder = QStringLiteral("Editor Files");
    editor.documentTypes = {{QStringLiteral("Text"), {QStringLiteral("text/plain")}}};
    ASSERT_FALSE(other_->addContainer(editor));

    CloudDocuments& documents = CloudDocuments::shared();
    const Url library = other_->driveURL(QStringLiteral("Editor Files"));
    EXPECT_TRUE(documents.isContainerRootURL(library));
    EXPECT_TRUE(documents.isAppLibraryDocumentsURL(library));
    EXPECT_FALSE(documents.isContainerRootURL(other_->driveRootURL()));
    EXPECT_EQ(documents.containers().size(), 2);
    EXPECT_EQ(documents.defaultContainerLocalizedName(), QStringLiteral("Vellora Drive"));

    Error error;
    const auto container = documents.containerForItemAtURL(
        library.appendingPathComponent(QStringLiteral("a.txt")), &error);
    ASSERT_TRUE(container);
    EXPECT_EQ(container->identifier(), editor.identifier);
    EXPECT_EQ(container->documentsURL(), library);
    EXPECT_EQ(container->allContentTypes(), QStringList{QStringLiteral("text/plain")});
    EXPECT_EQ(documents.relativePathForURL(library.appendingPathComponent(QStringLiteral("b"))),
              QStringLiteral("Editor Files/b"));

    EXPECT_FALSE(
        documents.containerForItemAtURL(Url::fromPath(QStringLiteral("/etc/hosts")), &error));
    EXPECT_EQ(error.domain(), Error::FileErrorDomain);
    EXPECT_EQ(error.code(), 256);
    const std::optional<Error> refused = documents.deleteAllContentsOfContainer(
        *documents.containerForItemAtURL(other_->driveRootURL(), nullptr));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->domain(), Error::FileErrorDomain);
    EXPECT_EQ(refused->code(), Error::FeatureUnsupported);
}

}  // namespace
}  // namespace vl
