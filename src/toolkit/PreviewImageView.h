#pragma once

#include "toolkit/PreviewContentView.h"

#include <QImage>
#include <QPointer>
#include <QSize>

class QLabel;
class QMovie;

namespace vl {

class PreviewImageCanvas;

// A picture: read with QImageReader on a global queue (turned upright by its EXIF orientation),
// first at the size of the screen so that it shows at once, then in full when the user zooms in
// past that; an animated GIF or WebP plays. Zoom and pan are the canvas's.
class PreviewImageView : public PreviewContentView {
    Q_OBJECT
public:
    // `screenPixels` bounds the first decode: the size of the screen in device pixels.
    PreviewImageView(const Url& url, QSize screenPixels, QWidget* parent = nullptr);
    ~PreviewImageView() override;

    PreviewImageCanvas* canvas() const { return canvas_; }
    // The upright size of the whole picture; empty until known.
    QSize imageSize() const;
    bool isAnimated() const { return movie_ != nullptr; }
    // True once the picture in the canvas is the full-resolution one.
    bool hasFullResolution() const { return fullResolution_; }

    void zoomToFit() override;

    struct Decoded {
        QImage image;
        QSize fullSize;  // upright
        bool animated = false;
        QString error;
    };
    // Reads the picture at `path`, upright, no larger than `bound` (no bound when empty). Safe on
    // any thread.
    static Decoded decode(const QString& path, QSize bound);

private:
    void load(QSize bound, bool full);
    void present(const Decoded& decoded, bool full);
    void startAnimation();
    void describe();

    PreviewImageCanvas* canvas_ = nullptr;
    QMovie* movie_ = nullptr;
    bool fullResolution_ = false;
    bool fullRequested_ = false;
};

}  // namespace vl
