#pragma once

#include <QWidget>

namespace vl {

// A separator one device pixel high, in the bars' hairline colour. Main thread only.
class HairlineView : public QWidget {
    Q_OBJECT
public:
    explicit HairlineView(QWidget* parent = nullptr);

    // The line's height in points: one pixel of the screen the view is on (the primary screen
    // while it is in no window).
    qreal hairline() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    void updateHeight();
};

}  // namespace vl
