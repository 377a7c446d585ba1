#include "platform/dispatch/VirtualDispatcher.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <thread>

using namespace vl;
using namespace std::chrono_literals;

namespace {

class VirtualDispatch : public ::testing::Test {
protected:
    VirtualDispatcher::Installation virtualTime;
    VirtualDispatcher& d = *virtualTime;
    const DispatchTime t0 = d.now();
};

}  // namespace

TEST_F(VirtualDispatch, RunsNothingUntilDrainedThenInSubmissionOrder) {
    auto a = Dispatch::serialQueue(QStringLiteral("a"));
    auto b = Dispatch::serialQueue(QStringLiteral("b"));
    QStringList log;
    a->async([&] {
        log << QStringLiteral("a1");
        b->async([&] { log << QStringLiteral("b2"); });  // posted by a block: same drain
    });
    b->async([&] { log << QStringLiteral("b1"); });
    Dispatch::mainQueue()->async([&] { log << QStringLiteral("m1"); });
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ(d.pendingCount(), 3);
    EXPECT_EQ(d.runUntilIdle(), 4);
    EXPECT_EQ(log, QStringList({"a1", "b1", "m1", "b2"}));
    EXPECT_EQ(d.pendingCount(), 0);
    EXPECT_EQ(d.now(), t0);
}

TEST_F(VirtualDispatch, AdvancesDeadlineByDeadline) {
    auto q = Dispatch::serialQueue(QStringLiteral("q"));
    std::vector<std::pair<QString, DispatchTime>> log;
    auto record = [&](const char* name) {
        return [&log, name] { log.emplace_back(QString::fromLatin1(name), Dispatch::now()); };
    };
    q->after(3s, record("q3"));
    Dispatch::mainQueue()->after(1s, [&] {
        log.emplace_back(QStringLiteral("m1"), Dispatch::now());
        q->after(1s, record("q2"));  // posted at 1 s, due at 2 s: runs before q3
    });
    q->asyncAt(t0 + 3s, record("q3b"));  // same deadline as q3, submitted later
    Dispatch::globalQueue()->after(10s, record("g10"));

    d.advanceTo(t0 + 3s - 1ns);
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(d.nextDeadline(), t0 + 3s);
    d.advanceBy(1ns);
    EXPECT_EQ(log, (std::vector<std::pair<QString, DispatchTime>>{
                       {"m1", t0 + 1s}, {"q2", t0 + 2s}, {"q3", t0 + 3s}, {"q3b", t0 + 3s}}));
    EXPECT_EQ(d.now(), t0 + 3s);
    d.advanceTo(t0);  // the clock never goes back
    EXPECT_EQ(d.now(), t0 + 3s);
    EXPECT_EQ(d.pendingCount(), 1);
}

TEST_F(VirtualDispatch, SyncRunsEarlierDueBlocksFirstThenInline) {
    auto q = Dispatch::serialQueue(QStringLiteral("q"));
    QStringList log;
    q->async([&] { log << QStringLiteral("earlier"); });
    q->after(1s, [&] { log << QStringLiteral("delayed"); });
    q->sync([&] { log << Dispatch::currentQueueLabel(); });
    EXPECT_EQ(log, QStringList({"earlier", "q"}));
    EXPECT_EQ(d.pendingCount(), 1);
}

TEST_F(VirtualDispatch, NamesTheCurrentQueue) {
    EXPECT_EQ(Dispatch::currentQueueLabel(), QStringLiteral("com.tessaly.main-thread"));
    EXPECT_TRUE(Dispatch::mainQueue()->isCurrent());
    auto q = Dispatch::serialQueue(QStringLiteral("com.tessaly.VelloraApp.quotafetcher"));
    QStringList labels;
    bool mainIsCurrent = true;
    q->async([&] {
        labels << Dispatch::currentQueueLabel();
        mainIsCurrent = Dispatch::mainQueue()->isCurrent();
    });
    Dispatch::globalQueue(QualityOfService::Utility)->async([&] {
        labels << Dispatch::currentQueueLabel();
    });
    std::thread([&] { labels << Dispatch::currentQueueLabel(); }).join();
    d.runUntilIdle();
    EXPECT_EQ(labels, QStringList({"", "com.tessaly.VelloraApp.quotafetcher",
                                   "com.tessaly.global.utility"}));
    EXPECT_FALSE(mainIsCurrent);
}

TEST_F(VirtualDispatch, ReleasedSerialQueueRunsDueBlocksAndDropsDelayedOnes) {
    int ran = 0;
    {
        auto q = Dispatch::serialQueue(QStringLiteral("q"));
        q->async([&] { ++ran; });
        q->after(1s, [&] { ran += 100; });
        q->async([&ran, keep = q] { ++ran; });  // holds its own queue until it has run
    }
    EXPECT_EQ(d.pendingCount(), 3);
    d.advanceBy(2s);
    EXPECT_EQ(ran, 2);
    EXPECT_EQ(d.pendingCount(), 0);
}

TEST_F(VirtualDispatch, AcceptsBlocksFromOtherThreadsWhileDraining) {
    auto q = Dispatch::serialQueue(QStringLiteral("q"));
    int ran = 0;  // guarded by q
    std::thread poster([&] {
        for (int i = 0; i < 2000; ++i) {
            q->async([&] { ++ran; });
        }
    });
    while (ran < 2000 && d.runUntilIdle() >= 0) {
        if (ran < 2000) {
            std::this_thread::yield();
        }
    }
    poster.join();
    EXPECT_EQ(ran, 2000);
}

TEST(VirtualDispatchInstallation, RestoresThePreviousDispatcher) {
    auto outer = VirtualDispatcher::create();
    {
        VirtualDispatcher::Installation first(outer);
        {
            VirtualDispatcher::Installation second;
            EXPECT_EQ(&Dispatch::dispatcher(), second.dispatcher().get());
        }
        EXPECT_EQ(&Dispatch::dispatcher(), outer.get());
    }
    EXPECT_EQ(Dispatch::installedDispatcher(), nullptr);
    EXPECT_EQ(&Dispatch::dispatcher(), Dispatch::realDispatcher().get());
}

class VirtualDispatchTimer : public VirtualDispatch {
protected:
    std::shared_ptr<DispatchTimer> makeTimer() {
        auto timer = DispatchTimer::create(queue);
        timer->setEventHandler([this] { fired.push_back(d.now() - t0); });
        return timer;
    }
    DispatchQueuePtr queue = Dispatch::serialQueue(QStringLiteral("timer"));
    std::vector<DispatchDuration> fired;
};

TEST_F(VirtualDispatchTimer, FiresAtStartThenEveryIntervalNeverEarly) {
    auto timer = makeTimer();
    timer->schedule(t0 + 1s, 2s, 500ms);
    d.advanceBy(5s);
    EXPECT_TRUE(fired.empty());  // not resumed yet
    timer->resume();
    d.runUntilIdle();  // the start has passed: it fires at once, then keeps the cadence
    d.advanceTo(t0 + 9s - 1ns);
    EXPECT_EQ(fired, (std::vector<DispatchDuration>{5s, 7s}));
    d.advanceBy(1ns);
    EXPECT_EQ(fired.back(), 9s);
}

TEST_F(VirtualDispatchTimer, NewScheduleReplacesTheOldCadence) {
    auto timer = makeTimer();
    timer->schedule(t0, 300s, 1s);
    timer->resume();
    d.advanceBy(300s);
    timer->schedule(t0 + 350s, 100s, 1s);
    d.advanceBy(400s);  // past 600 s, where the old cadence would have fired
    EXPECT_EQ(fired, (std::vector<DispatchDuration>{0s, 300s, 350s, 450s, 550s, 650s}));
}

TEST_F(VirtualDispatchTimer, CancelAndReleaseStopIt) {
    auto cancelled = makeTimer();
    cancelled->schedule(t0 + 1s, 1s, 0s);
    cancelled->resume();
    d.advanceBy(2s);
    cancelled->cancel();
    cancelled->resume();
    d.advanceBy(5s);
    EXPECT_EQ(fired, (std::vector<DispatchDuration>{1s, 2s}));
    EXPECT_TRUE(cancelled->isCancelled());

    fired.clear();
    auto released = makeTimer();
    released->schedule(d.now(), 1s, 0s);
    released->resume();
    d.runUntilIdle();
    released.reset();
    d.advanceBy(5s);
    EXPECT_EQ(fired.size(), 1u);
}

TEST_F(VirtualDispatchTimer, NonPositiveIntervalFiresOnce) {
    auto timer = makeTimer();
    timer->schedule(t0 + 2s, 0s, 0s);
    timer->resume();
    d.advanceBy(10s);
    EXPECT_EQ(fired, (std::vector<DispatchDuration>{2s}));
}
