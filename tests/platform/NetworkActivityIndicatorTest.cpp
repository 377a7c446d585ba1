#include "platform/app/NetworkActivityIndicator.h"
#include "platform/dispatch/VirtualDispatcher.h"

#include <QList>

#include <gtest/gtest.h>

#include <thread>

using namespace vl;

namespace {

TEST(NetworkActivityIndicatorTest, ObserversHearEachChangeOnTheMainQueueInOrder) {
    VirtualDispatcher::Installation dispatch;
    NetworkActivityIndicator& indicator = NetworkActivityIndicator::shared();
    indicator.setNetworkActivityIndicatorVisible(false);
    dispatch->runUntilIdle();

    QList<bool> heard;
    QList<QString> queues;
    auto token = indicator.addObserver([&](bool visible) {
        heard.append(visible);
        queues.append(Dispatch::currentQueueLabel());
    });
    std::thread([&] {
        indicator.setNetworkActivityIndicatorVisible(true);
        indicator.setNetworkActivityIndicatorVisible(true);  // no change, no call
        indicator.setNetworkActivityIndicatorVisible(false);
    }).join();
    EXPECT_TRUE(heard.isEmpty()) << "delivered on the main queue, not on the setter's thread";
    dispatch->runUntilIdle();
    EXPECT_EQ(heard, (QList<bool>{true, false}));
    EXPECT_EQ(queues.first(), Dispatch::mainQueue()->label());

    indicator.setNetworkActivityIndicatorVisible(true);
    token.reset();  // released before delivery: nothing more arrives
    dispatch->runUntilIdle();
    EXPECT_EQ(heard.size(), 2);
    EXPECT_TRUE(indicator.isNetworkActivityIndicatorVisible());
    indicator.setNetworkActivityIndicatorVisible(false);
}

}  // namespace
