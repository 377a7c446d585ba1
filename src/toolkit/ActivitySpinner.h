#pragma once

#include <QTimer>
#include <QWidget>

namespace vl {

// A small spinning activity indicator, drawn as a ring of fading spokes; hidden while stopped.
class ActivitySpinner : public QWidget {
    Q_OBJECT
public:
    explicit ActivitySpinner(QWidget* parent = nullptr);

    bool isAnimating() const { return timer_.isActive(); }
    void startAnimating();
    void stopAnimating();

    QSize sizeHint() const override { return {18, 18}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer timer_;
    int step_ = 0;
};

}  // namespace vl
