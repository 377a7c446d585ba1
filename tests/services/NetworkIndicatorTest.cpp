#include "services/NetworkIndicator.h"

#include "platform/app/NetworkActivityIndicator.h"

#include <gtest/gtest.h>

namespace vl {
namespace {

bool platformIndicatorOn() {
    return NetworkActivityIndicator::shared().isNetworkActivityIndicatorVisible();
}

TEST(NetworkIndicatorTest, OnExactlyWhileASetOfActivitiesIsNotEmpty) {
    NetworkIndicator indicator;
    ASSERT_FALSE(platformIndicatorOn());

    indicator.show(QStringLiteral("A"));
    EXPECT_TRUE(platformIndicatorOn());
    indicator.show(QStringLiteral("B"));
    indicator.hide(QStringLiteral("A"));
    EXPECT_TRUE(platformIndicatorOn());
    indicator.hide(QStringLiteral("B"));
    EXPECT_FALSE(platformIndicatorOn());

    // An unknown identifier changes nothing, whether the indicator is off or on.
    indicator.hide(QStringLiteral("C"));
    EXPECT_FALSE(platformIndicatorOn());
    indicator.show(QStringLiteral("D"));
    indicator.hide(QStringLiteral("C"));
    EXPECT_TRUE(platformIndicatorOn());

    // A set, not a count.
    indicator.show(QStringLiteral("D"));
    indicator.hide(QStringLiteral("D"));
    EXPECT_FALSE(platformIndicatorOn());

    EXPECT_EQ(&NetworkIndicator::sharedNetworkIndicator(),
              &NetworkIndicator::sharedNetworkIndicator());
}

}  // namespace
}  // namespace vl
