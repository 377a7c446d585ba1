#include "platform/dispatch/VirtualDispatcher.h"
#include "preview/RoundProgressView.h"

#include <gtest/gtest.h>

#include <QGraphicsEffect>

namespace vl {
namespace {

using namespace std::chrono_literals;

constexpr auto kTick = std::chrono::nanoseconds(16'666'667);

// The ring's look and its animation on virtual time: 60 ticks a second.
class RoundProgressViewTest : public ::testing::Test {
protected:
    // Runs `count` timer ticks.
    void ticks(int count) { dispatch_->advanceBy(count * kTick); }

    VirtualDispatcher::Installation dispatch_;
};

TEST_F(RoundProgressViewTest, OutlineAndSliceFollowTheSizeAndStyle) {
    RoundProgressView small(QRect(0, 0, 32, 32), RoundProgressView::StyleGrey);
    EXPECT_EQ(small.lineWidth(), 2.0);
    EXPECT_EQ(small.pieRadius(), 16);
    EXPECT_EQ(small.pieCenter(), QPointF(16, 16));
    EXPECT_EQ(small.circlePath().boundingRect(), QRectF(1, 1, 30, 30)) << "outline radius 15";
    EXPECT_FALSE(small.containerView()->graphicsEffect());
    EXPECT_EQ(small.size(), QSize(32, 32));

    RoundProgressView large(QRect(10, 10, 40, 40));
    EXPECT_EQ(large.style(), RoundProgressView::StyleLight);
    EXPECT_EQ(large.lineWidth(), 4.0);
    EXPECT_EQ(large.pieRadius(), 18) << "inside the thick outline";
    EXPECT_EQ(large.ringColor(), QColor(Qt::white));
    EXPECT_TRUE(large.containerView()->graphicsEffect()) << "white needs its shadow";

    RoundProgressView plain(QRect(0, 0, 39, 60), 7);
    EXPECT_EQ(plain.lineWidth(), 2.0);
    EXPECT_FALSE(plain.ringColor().isValid());
}

TEST_F(RoundProgressViewTest, BeforeAnyRealProgressTheRingStopsAtAQuarter) {
    RoundProgressView ring(QRect(0, 0, 32, 32), RoundProgressView::StyleGrey);
    EXPECT_FALSE(ring.isTimerRunning());
    EXPECT_TRUE(ring.slicePath().boundingRect().isEmpty());
    ring.setProgress(0);
    EXPECT_TRUE(ring.isTimerRunning());
    ticks(60);
    EXPECT_NEAR(ring.uiProgress(), 0.1, 1e-4) << "a tenth a second at first";
    EXPECT_FALSE(ring.slicePath().boundingRect().isEmpty());
    ticks(600);
    EXPECT_NEAR(ring.uiProgress(), 0.25, 0.002);
    EXPECT_FALSE(ring.isTimerRunning());
    EXPECT_EQ(ring.realProgress(), 0);

    ring.resetProgress();
    EXPECT_EQ(ring.uiProgress(), 0);
    EXPECT_EQ(ring.increaseRate(), RoundProgressView::kInitialIncreaseRate);
    EXPECT_TRUE(ring.slicePath().boundingRect().isEmpty());
}

TEST_F(RoundProgressViewTest, TheRateCatchesUpWithTheMeasuredSpeedButNeverGoesBack) {
    RoundProgressView ring(QRect(0, 0, 32, 32), RoundProgressView::StyleGrey);
    ring.setProgress(0);
    dispatch_->advanceBy(2s);
    ASSERT_NEAR(ring.uiProgress(), 0.2, 1e-4);
    ASSERT_EQ(ring.realProgress(), 0);

    // 2 s since the last report, 0.8 of the ring left for half the download: 3.2 s, held to
    // 0.3 s, so 0.8 / 0.3 / 60 a tick.
    ring.setProgress(0.5f);
    EXPECT_EQ(ring.realProgress(), 0.5f);
    EXPECT_NEAR(ring.increaseRate(), 0.0444, 1e-4);
    EXPECT_EQ(ring.prevUpdateTime(), dispatch_->now());

    ring.setProgress(0.4f);
    EXPECT_EQ(ring.progress(), 0.4f);
    EXPECT_EQ(ring.realProgress(), 0.5f);
    EXPECT_NEAR(ring.increaseRate(), 0.0444, 1e-4);

    // It moves up to the report and waits there.
    ticks(30);
    EXPECT_GE(ring.uiProgress(), 0.5f);
    EXPECT_LT(ring.uiProgress(), 0.5f + 0.045f);
    const float held = ring.uiProgress();
    ticks(30);
    EXPECT_EQ(ring.uiProgress(), held);

    // A long wait still moves the ring at no more than 0.3 s for the rest.
    dispatch_->advanceBy(100s);
    ring.setProgress(0.51f);
    EXPECT_NEAR(ring.increaseRate(), (1 - held) / 0.3 / 60, 1e-4);
    ring.recalculateIncreaseProgressWithTimeDiff(0.001f, 0.3);
    EXPECT_EQ(ring.increaseRate(), RoundProgressView::kMinimumIncreaseRate) << "the floor";

    // Almost done, quickly: the ring stops short of the full circle until it is done.
    ticks(1);
    ring.setProgress(0.99f);
    ticks(120);
    EXPECT_LT(ring.uiProgress(), 1.0f);
    EXPECT_FALSE(ring.isTimerRunning());
}

TEST_F(RoundProgressViewTest, CompletionClosesTheRingInAboutSixTicks) {
    RoundProgressView ring(QRect(0, 0, 32, 32), RoundProgressView::StyleGrey);
    ring.setProgress(0);
    ticks(6);
    ring.setProgress(0.2f);
    ticks(3);
    const float from = ring.uiProgress();
    ring.setProgress(1.0f);
    EXPECT_NEAR(ring.increaseRate(), (1 - from) / 0.1 / 60, 1e-6);
    int count = 0;
    while (ring.isTimerRunning() && count < 100) {
        ticks(1);
        ++count;
    }
    EXPECT_GE(count, 6);
    EXPECT_LE(count, 7);
    EXPECT_EQ(ring.uiProgress(), 1.0f);
    EXPECT_EQ(ring.slicePath().boundingRect(), QRectF(0, 0, 32, 32)) << "the whole disc";

    // Nothing moves a finished ring.
    ring.setProgress(0.5f);
    EXPECT_EQ(ring.realProgress(), 1.0f);
    EXPECT_FALSE(ring.isTimerRunning());
}

}  // namespace
}  // namespace vl
