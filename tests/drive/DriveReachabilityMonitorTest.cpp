#include "drive/network/DriveReachabilityMonitor.h"
#include "drive/network/NetworkStateSource.h"
#include "drive/store/ServiceSettings.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace vl {
namespace {

using namespace std::chrono_literals;
using Flags = ReachabilityMonitor::Flags;

// Collects callbacks as they arrive on the monitor's queue.
struct Recorder {
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<Flags> flags;
    QString queueLabel;

    static void callback(Flags value, void* context) {
        auto* self = static_cast<Recorder*>(context);
        std::lock_guard lock(self->mutex);
        self->flags.push_back(value);
        self->queueLabel = Dispatch::currentQueueLabel();
        self->arrived.notify_all();
    }
    // The next delivered flags; absent when none came in a generous while.
    std::optional<Flags> next() {
        std::unique_lock lock(mutex);
        if (!arrived.wait_for(lock, 20s, [&] { return !flags.empty(); })) {
            return std::nullopt;
        }
        const Flags value = flags.front();
        flags.pop_front();
        return value;
    }
};

class DriveReachabilityMonitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home.isValid());
        setNetwork(ServiceSettings::NetworkWifi);
        DriveReachabilityMonitor::install(DriveHome(home.path()));
    }
    void TearDown() override { ReachabilityMonitor::setFactory(nullptr); }

    void setNetwork(const QString& network) {
        ServiceSettings settings;
        settings.network = network;
        ASSERT_FALSE(settings.write(DriveHome(home.path()).serviceFile()).has_value());
    }

    QTemporaryDir home;
};

TEST_F(DriveReachabilityMonitorTest, CreationNeedsAFactoryAndAHostName) {
    EXPECT_NE(ReachabilityMonitor::createWithName(QStringLiteral("www.example.com")), nullptr);
    EXPECT_EQ(ReachabilityMonitor::createWithName(QString()), nullptr);
    EXPECT_EQ(ReachabilityMonitor::createWithName(QStringLiteral("not a host")), nullptr);
    EXPECT_EQ(ReachabilityMonitor::createWithName(QStringLiteral("http://x/")), nullptr);
    ReachabilityMonitor::setFactory(nullptr);
    EXPECT_EQ(ReachabilityMonitor::createWithName(QStringLiteral("www.example.com")), nullptr);
}

TEST_F(DriveReachabilityMonitorTest, TheOverrideReachesARunningMonitorOnItsQueue) {
    auto monitor = ReachabilityMonitor::createWithName(QStringLiteral("www.example.com"));
    ASSERT_NE(monitor, nullptr);
    EXPECT_EQ(monitor->flags(), ReachabilityMonitor::Reachable);

    Recorder recorder;
    ASSERT_TRUE(monitor->setCallback(&Recorder::callback, &recorder));
    ASSERT_TRUE(monitor->setDispatchQueue(Dispatch::serialQueue(QStringLiteral("test.reach"))));
    EXPECT_EQ(recorder.next(), ReachabilityMonitor::Reachable);
    EXPECT_EQ(recorder.queueLabel, QStringLiteral("test.reach"));

    setNetwork(ServiceSettings::NetworkCellular);
    EXPECT_EQ(recorder.next(), ReachabilityMonitor::Reachable | ReachabilityMonitor::IsWWAN);
    setNetwork(ServiceSettings::NetworkNone);
    EXPECT_EQ(recorder.next(), Flags(0));
    EXPECT_EQ(monitor->flags(), Flags(0));

    // After the callback is removed nothing more is delivered; a new one starts with the flags
    // as they are then (the change may land just before or just after it).
    ASSERT_TRUE(monitor->setCallback(nullptr, nullptr));
    setNetwork(ServiceSettings::NetworkWifi);
    Recorder second;
    ASSERT_TRUE(monitor->setCallback(&Recorder::callback, &second));
    std::optional<Flags> first = second.next();
    if (first == Flags(0)) {
        first = second.next();
    }
    EXPECT_EQ(first, ReachabilityMonitor::Reachable);
    std::lock_guard lock(recorder.mutex);
    EXPECT_TRUE(recorder.flags.empty());
}

TEST(NetworkStateSourceTest, OverrideValuesStandForFixedFlags) {
    EXPECT_EQ(NetworkStateSource::overrideFlags(QStringLiteral("none")), Flags(0));
    EXPECT_EQ(NetworkStateSource::overrideFlags(QStringLiteral("wifi")), Flags(0x2));
    EXPECT_EQ(NetworkStateSource::overrideFlags(QStringLiteral("cellular")), Flags(0x40002));
    EXPECT_EQ(NetworkStateSource::overrideFlags(QStringLiteral("auto")), std::nullopt);
    EXPECT_EQ(NetworkStateSource::overrideFlags(QStringLiteral("bogus")), std::nullopt);
}

}  // namespace
}  // namespace vl
