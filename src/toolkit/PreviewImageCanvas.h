#pragma once

#include <QAbstractScrollArea>
#include <QImage>
#include <QPoint>
#include <QPointF>
#include <QSize>

class QGestureEvent;

namespace vl {

// Shows one picture, fitted to the view at first, and lets the user zoom (pinch, Ctrl + wheel,
// a double tap toggles between fitted and full size) and pan (a finger with kinetic scrolling,
// the mouse, the wheel, the scroll bars). The picture given may be smaller than the picture it
// stands for (a screen-sized decode of a big photo): the scale is always in pixels of the full
// picture, so a sharper copy replaces it later without moving anything.
class PreviewImageCanvas : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit PreviewImageCanvas(QWidget* parent = nullptr);

    // `fullSize` is the size of the picture `image` stands for (empty: the image's own).
    void setImage(const QImage& image, QSize fullSize = {});
    QImage image() const { return image_; }
    QSize fullSize() const { return fullSize_; }

    // View pixels per pixel of the full picture.
    double scale() const { return scale_; }
    double fitScale() const;
    bool isFitted() const { return fitted_; }
    // Zooms keeping the picture's point under `anchor` (viewport coordinates) in place.
    void setScale(double scale, QPointF anchor);
    void setScale(double scale);
    void zoomToFit();
    // What a double tap at `position` does: fitted → full size (or twice the fitted size for a
    // small picture) around the tap, otherwise back to fitted.
    void toggleZoom(QPointF position);

signals:
    void scaleChanged(double scale);

protected:
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void paintViewport(QPaintEvent* event);
    bool gesture(QGestureEvent* event);
    void updateScrollRanges();
    // Where the picture's top-left corner is drawn in the viewport.
    QPointF origin() const;
    QSizeF displaySize() const;

    QImage image_;
    QSize fullSize_;
    double scale_ = 1.0;
    bool fitted_ = true;
    double pinchStartScale_ = 1.0;
    bool dragging_ = false;
    QPoint dragStart_;
    QPoint dragScrollStart_;
};

}  // namespace vl
