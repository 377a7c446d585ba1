#include "platform/dispatch/Dispatch.h"
#include "platform/dispatch/RealDispatcher.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <thread>
#include <vector>

using namespace vl;

namespace {

// Turns the main event loop until `done` holds; the bound only keeps a broken build from hanging.
template <typename Pred>
bool pumpUntil(Pred done) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::yield();
    }
    return true;
}

DispatchQueuePtr serial(const QString& label, QualityOfService qos = QualityOfService::Default) {
    return Dispatch::realDispatcher()->createSerialQueue(label, qos, 0);
}

}  // namespace

TEST(DispatchRealSerial, KeepsEachPostersOrderUnderConcurrentPosting) {
    auto queue = serial(QStringLiteral("com.tessaly.test.order"));
    std::vector<std::pair<int, int>> seen;  // guarded by queue
    std::vector<std::thread> posters;
    for (int p = 0; p < 4; ++p) {
        posters.emplace_back([&, p] {
            for (int i = 0; i < 500; ++i) {
                queue->async([&seen, p, i] { seen.emplace_back(p, i); });
            }
        });
    }
    for (auto& poster : posters) {
        poster.join();
    }
    std::vector<std::pair<int, int>> result;
    queue->sync([&] { result = seen; });
    ASSERT_EQ(result.size(), 2000u);
    std::vector<int> next(4, 0);
    for (const auto& [p, i] : result) {
        EXPECT_EQ(i, next[p]++);
    }
}

TEST(DispatchRealSerial, SyncRunsOnTheQueueAndReturnsAfterTheBlock) {
    auto queue = serial(QStringLiteral("com.tessaly.test.sync"));
    int counter = 0;  // guarded by queue
    for (int i = 0; i < 100; ++i) {
        queue->async([&] { ++counter; });
    }
    QString label;
    bool current = false;
    int seen = -1;
    queue->sync([&] {
        seen = counter;
        label = Dispatch::currentQueueLabel();
        current = queue->isCurrent();
    });
    EXPECT_EQ(seen, 100);
    EXPECT_EQ(label, QStringLiteral("com.tessaly.test.sync"));
    EXPECT_TRUE(current);
    EXPECT_FALSE(queue->isCurrent());

    // From its own block it would wait for itself: it runs inline instead.
    bool inner = false;
    queue->sync([&] { queue->sync([&] { inner = true; }); });
    EXPECT_TRUE(inner);
}

// Marks, from a worker thread's own exit, that the thread has ended.
struct ThreadEndMarker {
    std::atomic<bool>* ended = nullptr;
    ~ThreadEndMarker() {
        if (ended) {
            *ended = true;
        }
    }
};
// At namespace scope so that each thread that uses it registers its destructor.
thread_local ThreadEndMarker marker;

TEST(DispatchRealSerial, ThreadEndsAfterRunningWhatWasQueuedWhenReleased) {
    std::atomic<bool> releasedEnded{false};
    std::atomic<bool> selfReleasedEnded{false};
    std::atomic<int> ran{0};
    {
        auto queue = serial(QStringLiteral("com.tessaly.test.release"));
        queue->async([&] { marker.ended = &releasedEnded; });
        for (int i = 0; i < 50; ++i) {
            queue->async([&] { ++ran; });
        }
        queue->after(std::chrono::hours(1), [&] { ran += 1000; });
    }
    // Released from its own block: the last handle goes away on the queue's thread.
    {
        auto queue = serial(QStringLiteral("com.tessaly.test.self"));
        queue->async([&ran, &selfReleasedEnded, keep = queue] {
            marker.ended = &selfReleasedEnded;
            ++ran;
        });
    }
    ASSERT_TRUE(pumpUntil([&] { return releasedEnded && selfReleasedEnded; }));
    EXPECT_EQ(ran.load(), 51);
}

TEST(DispatchRealSerial, BackgroundQueueThreadRunsAtLowerPriority) {
    auto queue = serial(QStringLiteral("com.tessaly.test.nice"), QualityOfService::Background);
    const int base = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
    int nice = 0;
    queue->sync([&] { nice = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); });
    EXPECT_EQ(nice, std::min(base + 10, 19));
}

TEST(DispatchRealGlobal, RunsBlocksOnSeveralThreadsAtOnce) {
    auto queue = Dispatch::realDispatcher()->globalQueue(QualityOfService::Default);
    std::mutex mutex;
    std::condition_variable changed;
    int arrived = 0;
    int metAll = 0;
    int finished = 0;
    QStringList labels;
    for (int i = 0; i < 2; ++i) {
        queue->async([&] {
            std::unique_lock lock(mutex);
            ++arrived;
            labels << Dispatch::currentQueueLabel();
            changed.notify_all();
            // Only a second thread running the other block at the same time lets this go on.
            if (changed.wait_for(lock, std::chrono::seconds(20), [&] { return arrived == 2; })) {
                ++metAll;
            }
            ++finished;
            changed.notify_all();
        });
    }
    std::unique_lock lock(mutex);
    changed.wait_for(lock, std::chrono::seconds(60), [&] { return finished == 2; });
    EXPECT_EQ(metAll, 2);
    EXPECT_EQ(labels, QStringList({QStringLiteral("com.tessaly.global.default"),
                                   QStringLiteral("com.tessaly.global.default")}));
}

TEST(DispatchRealMain, DeliversOnTheMainThreadInOrder) {
    auto main = Dispatch::realDispatcher()->mainQueue();
    auto worker = serial(QStringLiteral("com.tessaly.test.tomain"));
    EXPECT_EQ(Dispatch::realDispatcher()->currentQueue(), main.get());
    EXPECT_EQ(main->label(), QStringLiteral("com.tessaly.main-thread"));

    std::vector<int> order;  // touched on the main thread only
    QStringList labels;
    std::atomic<bool> syncReturned{false};
    qint64 afterWaitedMs = -1;
    worker->async([&] {
        main->async([&] { order.push_back(1); });
        main->sync([&] {
            order.push_back(2);
            labels << Dispatch::currentQueueLabel();
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        });
        QElapsedTimer posted;
        posted.start();
        main->after(std::chrono::milliseconds(5), [&, posted] {
            afterWaitedMs = posted.elapsed();
            order.push_back(3);
        });
        syncReturned = true;
    });
    ASSERT_TRUE(pumpUntil([&] { return syncReturned && order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_GE(afterWaitedMs, 5);
    EXPECT_EQ(labels, QStringList{QStringLiteral("com.tessaly.main-thread")});

    bool inline_ = false;
    main->sync([&] { inline_ = true; });  // from the main thread itself: logged, run inline
    EXPECT_TRUE(inline_);
}

TEST(DispatchRealTimer, FiresRepeatedlyUntilCancelled) {
    auto queue = serial(QStringLiteral("com.tessaly.test.timer"));
    auto timer = DispatchTimer::create(queue);
    std::atomic<int> fired{0};
    timer->setEventHandler([&] { ++fired; });
    timer->schedule(queue->now(), std::chrono::milliseconds(1), std::chrono::milliseconds(0));
    timer->resume();
    ASSERT_TRUE(pumpUntil([&] { return fired >= 3; }));
    queue->sync([&] { timer->cancel(); });
    const int atCancel = fired;
    std::atomic<bool> later{false};
    queue->after(std::chrono::milliseconds(20), [&] { later = true; });
    ASSERT_TRUE(pumpUntil([&] { return later.load(); }));
    EXPECT_EQ(fired.load(), atCancel);
    EXPECT_TRUE(timer->isCancelled());
}

TEST(DispatchWeakBlock, DoesNothingOnceTheOwnerIsGone) {
    int calls = 0;
    auto owner = std::make_shared<int>(7);
    DispatchBlock block =
        Dispatch::weakBlock(owner, [&calls](const std::shared_ptr<int>& o) { calls += *o; });
    block();
    EXPECT_EQ(calls, 7);
    owner.reset();
    block();
    EXPECT_EQ(calls, 7);
}
