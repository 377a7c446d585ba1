#pragma once

#include <QWidget>

namespace vl {

// A small pie that fills clockwise from the top as a fraction grows, inside a full outline. It
// always shows a sliver and never closes, so "just started" and "almost done" both read as work
// under way. Main thread only.
class PieProgressIndicatorView : public QWidget {
    Q_OBJECT
public:
    explicit PieProgressIndicatorView(QWidget* parent = nullptr);

    float progress() const { return progress_; }
    // Repaints only when the value changes.
    void setProgress(float progress);
    // The fraction drawn: the progress held to 0.005 .. 0.995.
    static double drawnFraction(float progress);
    int repaintRequests() const { return repaintRequests_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    float progress_ = 0;
    int repaintRequests_ = 0;
};

}  // namespace vl
