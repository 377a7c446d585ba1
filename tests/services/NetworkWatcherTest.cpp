#include "services/NetworkWatcher.h"

#include "services/FakeReachabilityMonitor.h"
#include "services/LogCapture.h"

#include "platform/dispatch/VirtualDispatcher.h"

#include <gtest/gtest.h>

namespace vl {
namespace {

using test::FakeReachabilityMonitor;

class NetworkWatcherTest : public ::testing::Test {
protected:
    void SetUp() override { FakeReachabilityMonitor::install(&script_); }
    void TearDown() override { FakeReachabilityMonitor::install(nullptr); }

    FakeReachabilityMonitor& monitor() { return *script_.created; }

    VirtualDispatcher::Installation dispatch_;
    test::LogCapture log_;
    FakeReachabilityMonitor::Script script_;
};

TEST_F(NetworkWatcherTest, FlagWordsGiveTheState) {
    NetworkWatcher watcher;
    watcher.start();
    ASSERT_NE(script_.created, nullptr);
    EXPECT_EQ(script_.hostName, QString::fromLatin1(NetworkWatcher::ProbeHostName));
    EXPECT_EQ(monitor().queueLabel(), QStringLiteral("com.tessaly.VelloraApp.networkwatcher"));
    // No reading before the first callback.
    EXPECT_EQ(watcher.networkState(), NetworkWatcher::NetworkStateUnknown);

    const struct {
        ReachabilityMonitor::Flags flags;
        NetworkWatcher::NetworkState state;
        bool connected;
    } cases[] = {
        {0x2, NetworkWatcher::NetworkStateWiFi, true},
        {0x40002, NetworkWatcher::NetworkStateCellular, true},
        {0x40000, NetworkWatcher::NetworkStateNotConnected, false},
        {0x40003, NetworkWatcher::NetworkStateCellular, true},
        {0x0, NetworkWatcher::NetworkStateNotConnected, false},
        {0x10002, NetworkWatcher::NetworkStateWiFi, true},
    };
    for (const auto& c : cases) {
        monitor().deliver(c.flags);
        dispatch_->runUntilIdle();
        EXPECT_EQ(watcher.networkState(), c.state) << std::hex << c.flags;
        EXPECT_EQ(watcher.isConnected(), c.connected) << std::hex << c.flags;
        EXPECT_EQ(watcher.reachabilityFlags(), c.flags);
    }
}

TEST_F(NetworkWatcherTest, LogsEveryFlagChangeButEachStateChangeOnce) {
    NetworkWatcher watcher;
    watcher.start();
    monitor().deliver(0x2);
    monitor().deliver(0x10002);
    dispatch_->runUntilIdle();

    const QStringList messages = log_.messages();
    EXPECT_EQ(messages.count(QStringLiteral("Network reachability flags changed to 0x2")), 1);
    EXPECT_EQ(messages.count(QStringLiteral("Network reachability flags changed to 0x10002")), 1);
    EXPECT_EQ(messages.count(QStringLiteral("Network state changed to connected to Wi-Fi")), 1);
}

TEST_F(NetworkWatcherTest, StartTwiceKeepsOneMonitorAndStopGoesBackToUnknownQuietly) {
    NetworkWatcher watcher;
    watcher.start();
    FakeReachabilityMonitor* first = script_.created;
    watcher.start();
    EXPECT_EQ(script_.created, first);

    monitor().deliver(0x40002);
    dispatch_->runUntilIdle();
    ASSERT_EQ(watcher.networkState(), NetworkWatcher::NetworkStateCellular);

    watcher.stop();
    EXPECT_EQ(script_.created, nullptr);
    EXPECT_EQ(watcher.networkState(), NetworkWatcher::NetworkStateUnknown);
    EXPECT_EQ(watcher.reachabilityFlags(), 0u);
    EXPECT_EQ(log_.count(QStringLiteral("Network state changed to unknown")), 0);

    // Started again, it makes a new monitor.
    watcher.start();
    EXPECT_NE(script_.created, nullptr);
}

TEST_F(NetworkWatcherTest, SetUpFailuresLeaveItNotConnected) {
    {
        FakeReachabilityMonitor::install(nullptr);
        NetworkWatcher watcher;
        watcher.start();
        EXPECT_EQ(watcher.networkState(), NetworkWatcher::NetworkStateNotConnected);
        EXPECT_EQ(log_.count(QStringLiteral("Couldn't create reachability object")), 1);
        FakeReachabilityMonitor::install(&script_);
    }
    for (bool refuseCallback : {true, false}) {
        script_.refuseCallback = refuseCallback;
        script_.refuseQueue = !refuseCallback;
        NetworkWatcher watcher;
        watcher.start();
        EXPECT_EQ(watcher.networkState(), NetworkWatcher::NetworkStateNotConnected);
        // The handle stays, so starting again doesn't retry.
        FakeReachabilityMonitor* kept = script_.created;
        ASSERT_NE(kept, nullptr);
        watcher.start();
        EXPECT_EQ(script_.created, kept);
    }
    EXPECT_EQ(log_.count(QStringLiteral("Couldn't set reachability callback or queue")), 2);
}

// The process-wide watcher is made once and outlives the dispatchers that tests install: it
// listens on a queue of the dispatcher installed when it starts.
TEST(NetworkWatcherRestartTest, ListensOnTheDispatcherInstalledAtEachStart) {
    NetworkWatcher watcher;
    FakeReachabilityMonitor::Script script;
    FakeReachabilityMonitor::install(&script);
    for (ReachabilityMonitor::Flags flags : {0x2u, 0x40002u}) {
        VirtualDispatcher::Installation dispatch;
        watcher.start();
        ASSERT_NE(script.created, nullptr);
        script.created->deliver(flags);
        EXPECT_EQ(dispatch->pendingCount(), 1) << "queued on the installed dispatcher";
        dispatch->runUntilIdle();
        EXPECT_EQ(watcher.reachabilityFlags(), flags);
        watcher.stop();
    }
    FakeReachabilityMonitor::install(nullptr);
}

}  // namespace
}  // namespace vl
