#include "platform/app/NotificationCenter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <thread>
#include <vector>

namespace vl {
namespace {

// A queue that runs nothing until the test drains it.
class ManualQueue : public DispatchQueue {
public:
    QString label() const override { return QStringLiteral("manual"); }
    void async(DispatchBlock block) override {
        std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
    }
    void sync(DispatchBlock block) override { block(); }
    void asyncAt(DispatchTime, DispatchBlock block) override { async(std::move(block)); }
    size_t pending() const {
        std::lock_guard lock(mutex_);
        return blocks_.size();
    }
    void drain() {
        for (;;) {
            DispatchBlock block;
            {
                std::lock_guard lock(mutex_);
                if (blocks_.empty()) {
                    return;
                }
                block = std::move(blocks_.front());
                blocks_.pop_front();
            }
            block();
        }
    }

private:
    mutable std::mutex mutex_;
    std::deque<DispatchBlock> blocks_;
};

const QString kName = QStringLiteral("TestNotification");

TEST(NotificationCenterDelivery, QueuedObserverRunsOnlyWhenItsQueueRuns) {
    NotificationCenter center;
    auto queue = std::make_shared<ManualQueue>();
    std::vector<Notification> received;
    center.addObserver(kName, queue, [&](const Notification& n) { received.push_back(n); });
    center.addObserver(QStringLiteral("Other"), queue,
                       [&](const Notification& n) { received.push_back(n); });

    center.post(kName, {{QStringLiteral("key"), 7}});
    EXPECT_TRUE(received.empty());
    ASSERT_EQ(queue->pending(), 1u);

    queue->drain();
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].name, kName);
    EXPECT_EQ(received[0].userInfo.value(QStringLiteral("key")).toInt(), 7);
}

TEST(NotificationCenterDelivery, ObserverWithoutQueueRunsOnThePostersThread) {
    NotificationCenter center;
    std::thread::id ranOn;
    int calls = 0;
    center.addObserver(kName, nullptr, [&](const Notification&) {
        ranOn = std::this_thread::get_id();
        ++calls;
    });
    std::thread poster([&] { center.post(kName); });
    const std::thread::id posterId = poster.get_id();
    poster.join();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(ranOn, posterId);
}

TEST(NotificationCenterDelivery, RealSerialQueueRunsTheObserverAsOneOfItsBlocks) {
    NotificationCenter center;
    auto queue = Dispatch::serialQueue(QStringLiteral("com.tessaly.tests.notifications"));
    std::mutex mutex;
    std::condition_variable done;
    QString label;
    bool delivered = false;
    center.addObserver(kName, queue, [&](const Notification&) {
        std::lock_guard lock(mutex);
        label = Dispatch::currentQueueLabel();
        delivered = true;
        done.notify_all();
    });
    center.post(kName);
    std::unique_lock lock(mutex);
    ASSERT_TRUE(done.wait_for(lock, std::chrono::seconds(10), [&] { return delivered; }));
    EXPECT_EQ(label, QStringLiteral("com.tessaly.tests.notifications"));
}

TEST(NotificationCenterRemoval, RemovingStopsDeliveriesAlreadyQueued) {
    NotificationCenter center;
    auto queue = std::make_shared<ManualQueue>();
    int calls = 0;
    auto token = center.addObserver(kName, queue, [&](const Notification&) { ++calls; });
    center.post(kName);
    center.post(kName);
    center.removeObserver(token);
    center.post(kName);

    EXPECT_EQ(queue->pending(), 2u);
    queue->drain();
    EXPECT_EQ(calls, 0);
}

TEST(NotificationCenterRemoval, ObserversMayAddRemoveAndPostFromInsideADelivery) {
    NotificationCenter center;
    int nested = 0;
    NotificationCenter::TokenPtr self;
    self = center.addObserver(kName, nullptr, [&](const Notification&) {
        center.removeObserver(self);
        center.addObserver(QStringLiteral("Nested"), nullptr,
                           [&](const Notification&) { ++nested; });
        center.post(QStringLiteral("Nested"));
    });
    center.post(kName);
    center.post(kName);  // the observer removed itself: no second nested observer
    EXPECT_EQ(nested, 1);
}

TEST(NotificationCenterConcurrency, PostsWhileObserversComeAndGoReachEveryPermanentObserver) {
    NotificationCenter center;
    auto queue = std::make_shared<ManualQueue>();
    std::atomic<int> syncCalls{0};
    std::atomic<int> queuedCalls{0};
    center.addObserver(kName, nullptr, [&](const Notification&) { ++syncCalls; });
    center.addObserver(kName, queue, [&](const Notification&) { ++queuedCalls; });

    constexpr int kPosters = 3;
    constexpr int kPosts = 300;
    std::atomic<bool> stop{false};
    std::thread churn([&] {
        while (!stop.load()) {
            auto transient = center.addObserver(kName, nullptr, [&](const Notification&) {
                // Registers from inside a delivery, as observers of a real app do.
                center.removeObserver(center.addObserver(QStringLiteral("Nested"), queue,
                                                         [](const Notification&) {}));
            });
            auto queued = center.addObserver(kName, queue, [](const Notification&) {});
            center.removeObserver(transient);
            center.removeObserver(queued);
        }
    });
    std::thread drainer([&] {
        while (!stop.load()) {
            queue->drain();
        }
    });
    std::vector<std::thread> posters;
    for (int i = 0; i < kPosters; ++i) {
        posters.emplace_back([&] {
            for (int p = 0; p < kPosts; ++p) {
                center.post(kName);
            }
        });
    }
    for (auto& poster : posters) {
        poster.join();
    }
    stop = true;
    churn.join();
    drainer.join();
    queue->drain();
    EXPECT_EQ(syncCalls.load(), kPosters * kPosts);
    EXPECT_EQ(queuedCalls.load(), kPosters * kPosts);
}

}  // namespace
}  // namespace vl
