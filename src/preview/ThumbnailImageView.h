#pragma once

#include <QImage>
#include <QWidget>

#include <memory>

namespace vl {

class PieProgressIndicatorView;
class VLItem;

// An item's picture on the preview screens: its thumbnail, else the largest icon of its type,
// centred and scaled down to fit (never up past its own size), with a small pie in the picture's
// lower trailing corner that can show a download's progress. Main thread only.
class ThumbnailImageView : public QWidget {
    Q_OBJECT
public:
    explicit ThumbnailImageView(QWidget* parent = nullptr);

    static constexpr int kPieSize = 22;
    // The size the icon of a type is drawn from.
    static constexpr int kIconSize = 512;

    const std::shared_ptr<VLItem>& item() const { return item_; }
    // Shows the item's picture; no item changes nothing on screen.
    void setItem(const std::shared_ptr<VLItem>& item);
    void showGenericImage();
    // Showing starts the pie at 0.
    void showProgress(bool show);
    // Only while the pie is shown.
    void updateProgress(double progress);

    const QImage& image() const { return image_; }
    PieProgressIndicatorView* progressView() const { return progressView_; }
    // Where the picture is drawn in the view.
    QRect imageRect() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setImage(const QImage& image);
    void placeProgressView();

    std::shared_ptr<VLItem> item_;
    QImage image_;
    PieProgressIndicatorView* progressView_;
};

}  // namespace vl
