#include "LogCapture.h"

#include "platform/app/NotificationCenter.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "services/NetworkWatcher.h"
#include "services/QuotaFetcher.h"
#include "services/QuotaFetcherDelegate.h"

#include <gtest/gtest.h>

namespace vl {
namespace {

using namespace std::chrono_literals;

// An account service whose quota requests wait until the test answers them, on a queue of its
// own as the real service does.
class PendingQuotaAccount : public CloudAccount {
public:
    std::optional<CloudAccountToken> identityToken() const override {
        return CloudAccountToken("id");
    }
    void performQuotaOperation(QuotaCompletion completion) override {
        pending.append(std::move(completion));
    }
    void answer(quint64 freeBytes, std::optional<Error> error = std::nullopt) {
        const QuotaCompletion completion = pending.takeFirst();
        queue->async([completion, freeBytes, error] { completion(freeBytes, error); });
    }
    QList<QuotaCompletion> pending;
    DispatchQueuePtr queue = Dispatch::serialQueue(QStringLiteral("test.account"));
};

class Recorder : public QuotaFetcherDelegate {
public:
    void quotaFetcherDidUpdateValue(const std::shared_ptr<QuotaFetcher>&, quint64 bytes) override {
        EXPECT_TRUE(Dispatch::mainQueue()->isCurrent());
        values.append(bytes);
    }
    QList<quint64> values;
};

class QuotaFetcherTest : public ::testing::Test {
protected:
    void SetUp() override {
        CloudAccount::setShared(account);
        NetworkWatcher::sharedNetworkWatcher().updateState(NetworkWatcher::NetworkStateWiFi);
        fetcher->setDelegate(recorder);
    }
    void TearDown() override {
        fetcher.reset();
        dispatch->runUntilIdle();
        NetworkWatcher::sharedNetworkWatcher().updateState(NetworkWatcher::NetworkStateUnknown);
        CloudAccount::setShared(nullptr);
    }
    void post(const QString& name) {
        NotificationCenter::defaultCenter().post(name);
        dispatch->runUntilIdle();
    }
    qsizetype skipped() const {
        return log.count(QStringLiteral("Not fetching quota. Background or offline"));
    }

    VirtualDispatcher::Installation dispatch;
    test::LogCapture log;
    std::shared_ptr<PendingQuotaAccount> account = std::make_shared<PendingQuotaAccount>();
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    std::shared_ptr<QuotaFetcher> fetcher = QuotaFetcher::create();
};

TEST_F(QuotaFetcherTest, FetchesAtOnceThenEveryIntervalAndDeliversOnTheMainQueue) {
    EXPECT_TRUE(fetcher->canFetch());
    EXPECT_EQ(fetcher->queue()->label(), QStringLiteral("com.tessaly.VelloraApp.quotafetcher"));
    fetcher->runWithInterval(300);
    dispatch->runUntilIdle();
    ASSERT_EQ(account->pending.size(), 1);
    account->answer(5'000);
    dispatch->runUntilIdle();
    EXPECT_EQ(recorder->values, QList<quint64>{5'000});
    EXPECT_EQ(fetcher->freeBytes(), 5'000u);

    dispatch->advanceBy(299s);
    EXPECT_EQ(account->pending.size(), 0);
    dispatch->advanceBy(2s);
    EXPECT_EQ(account->pending.size(), 1);

    // A failed operation is logged and changes nothing.
    account->answer(0, Error::fileError(4355));
    dispatch->runUntilIdle();
    EXPECT_EQ(fetcher->freeBytes(), 5'000u);
    EXPECT_EQ(recorder->values.size(), 1);
    EXPECT_EQ(log.messages().filter(QStringLiteral("can't update quota: ")).size(), 1);
}

TEST_F(QuotaFetcherTest, ASecondRunReplacesTheSchedule) {
    fetcher->runWithInterval(300);
    dispatch->runUntilIdle();
    dispatch->advanceBy(100s);
    fetcher->runWithInterval(300);
    dispatch->runUntilIdle();
    EXPECT_EQ(account->pending.size(), 2);
    dispatch->advanceBy(250s);  // past the first schedule's next turn at 300 s
    EXPECT_EQ(account->pending.size(), 2);
    dispatch->advanceBy(51s);
    EXPECT_EQ(account->pending.size(), 3);
}

TEST_F(QuotaFetcherTest, TurnsAreSkippedWhileInactiveOrOffline) {
    fetcher->runWithInterval(10);
    dispatch->runUntilIdle();
    ASSERT_EQ(account->pending.size(), 1);
    post(Notifications::ApplicationWillResignActive);
    EXPECT_FALSE(fetcher->canFetch());
    dispatch->advanceBy(21s);
    EXPECT_EQ(account->pending.size(), 1);
    EXPECT_EQ(skipped(), 2);
    post(Notifications::ApplicationDidBecomeActive);
    dispatch->advanceBy(10s);
    EXPECT_EQ(account->pending.size(), 2);

    for (const auto state :
         {NetworkWatcher::NetworkStateUnknown, NetworkWatcher::NetworkStateNotConnected}) {
        NetworkWatcher::sharedNetworkWatcher().updateState(state);
        dispatch->advanceBy(10s);
    }
    EXPECT_EQ(account->pending.size(), 2);
    EXPECT_EQ(skipped(), 4);
    NetworkWatcher::sharedNetworkWatcher().updateState(NetworkWatcher::NetworkStateCellular);
    dispatch->advanceBy(10s);
    EXPECT_EQ(account->pending.size(), 3);
}

TEST_F(QuotaFetcherTest, AReleasedFetcherCallsNobody) {
    fetcher->runWithInterval(300);
    dispatch->runUntilIdle();
    ASSERT_EQ(account->pending.size(), 1);
    fetcher.reset();
    account->answer(42);
    dispatch->advanceBy(600s);
    EXPECT_TRUE(recorder->values.isEmpty());
    EXPECT_TRUE(account->pending.isEmpty()) << "the timer went with the fetcher";
}

}  // namespace
}  // namespace vl
