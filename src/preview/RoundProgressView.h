#pragma once

#include "platform/dispatch/Dispatch.h"

#include <QColor>
#include <QPainterPath>
#include <QPointF>
#include <QWidget>

#include <memory>

namespace vl {

class DispatchTimer;

// A progress ring: an outline circle and a pie slice that fills clockwise from the top. The
// slice does not jump to each reported fraction; a 60-a-second timer moves it at the speed
// measured between reports, a little ahead of them, never backwards, to at most a quarter before
// any real progress, and never to the full circle before the report of completion, after which
// it closes within about a tenth of a second. The timer runs on the main queue, so tests drive it
// on virtual time. Main thread only.
class RoundProgressView : public QWidget {
    Q_OBJECT
public:
    // 0: white on a shadow, for pictures; 1: light grey at half opacity, for white pages.
    enum Style { StyleLight = 0, StyleGrey = 1 };

    static constexpr double kTimerInterval = 1.0 / 60;
    static constexpr float kInitialIncreaseRate = 1.0f / 600;
    static constexpr float kMinimumIncreaseRate = 1.0f / 6000;
    static constexpr float kLookAhead = 1.1f;
    static constexpr float kMaximumRemainingTime = 0.3f;
    static constexpr float kFinishingTime = 0.1f;
    static constexpr float kMaximumProgressBeforeReal = 0.25f;
    // Views at least this wide get the thick outline.
    static constexpr int kThickLineMinimumWidth = 40;

    RoundProgressView(const QRect& frame, int style, QWidget* parent = nullptr);
    explicit RoundProgressView(const QRect& frame, QWidget* parent = nullptr);
    ~RoundProgressView() override;

    int style() const { return style_; }
    float progress() const { return progress_; }
    float uiProgress() const { return uiProgress_; }
    float realProgress() const { return realProgress_; }
    float increaseRate() const { return increaseRate_; }
    DispatchTime prevUpdateTime() const { return prevUpdateTime_; }
    QPointF pieCenter() const { return pieCenter_; }
    double pieRadius() const { return pieRadius_; }
    double lineWidth() const { return lineWidth_; }
    QColor ringColor() const { return ringColor_; }
    const QPainterPath& slicePath() const { return slicePath_; }
    const QPainterPath& circlePath() const { return circlePath_; }
    bool isTimerRunning() const { return progressTimer_ != nullptr; }
    // The view that holds the outline and the slice, with the style's opacity and shadow.
    QWidget* containerView() const;

    void setProgress(float progress);
    void resetProgress();
    void setPieCenter(const QPointF& center);
    void setPieRadius(double radius);
    // Ignored while the timer runs.
    void setInitialIncreaseRatePerFrame(float rate);
    void recalculateIncreaseProgressWithTimeDiff(float remaining, double seconds);
    void startProgressTimer();
    void stopProgressTimer();
    void increaseUIProgress();
    void drawSlice();
    static double toRadian(double fraction);

private:
    class Container;

    void updateAccessibleValue();

    const int style_;
    Container* container_ = nullptr;
    QColor ringColor_;
    double lineWidth_ = 2.0;
    QPainterPath slicePath_;
    QPainterPath circlePath_;
    QPointF pieCenter_;
    double pieRadius_ = 0;
    std::shared_ptr<DispatchTimer> progressTimer_;
    float uiProgress_ = 0;
    float realProgress_ = 0;
    float increaseRate_ = kInitialIncreaseRate;
    DispatchTime prevUpdateTime_{};
    float progress_ = 0;
    int spokenPercent_ = -1;
};

}  // namespace vl
