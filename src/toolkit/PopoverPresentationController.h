#pragma once

#include <QFlags>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <memory>
#include <optional>

namespace vl {

class BarButtonItem;

// Where a controller presented as a popover (an action sheet on a tablet) points: a rectangle of
// a source view, or a bar button, and the sides its arrow may take. The presented controller owns
// it; the presentation reads it when the controller is shown.
class PopoverPresentationController {
public:
    // The side of the popover the arrow sits on: Up points up at an anchor above the popover.
    enum class ArrowDirection { Up = 1, Down = 2, Left = 4, Right = 8 };
    Q_DECLARE_FLAGS(ArrowDirections, ArrowDirection)
    static constexpr ArrowDirections anyDirection() {
        return ArrowDirections(ArrowDirection::Up) | ArrowDirection::Down | ArrowDirection::Left |
               ArrowDirection::Right;
    }

    QWidget* sourceView() const { return sourceView_; }
    void setSourceView(QWidget* view) { sourceView_ = view; }
    // In the source view's coordinates; a null rectangle means the view's bounds.
    QRect sourceRect() const { return sourceRect_; }
    void setSourceRect(const QRect& rect) { sourceRect_ = rect; }
    std::shared_ptr<BarButtonItem> barButtonItem() const { return barButtonItem_.lock(); }
    void setBarButtonItem(const std::shared_ptr<BarButtonItem>& item) { barButtonItem_ = item; }
    ArrowDirections permittedArrowDirections() const { return permittedArrowDirections_; }
    void setPermittedArrowDirections(ArrowDirections directions) {
        permittedArrowDirections_ = directions;
    }

    // The anchor in `overlay`'s coordinates: the source rectangle, or the widget a bar of
    // `overlay`'s window draws for the bar button; nothing when neither is on screen.
    std::optional<QRect> anchorRectIn(const QWidget* overlay) const;

private:
    QPointer<QWidget> sourceView_;
    QRect sourceRect_;
    std::weak_ptr<BarButtonItem> barButtonItem_;
    ArrowDirections permittedArrowDirections_ = anyDirection();
};

Q_DECLARE_OPERATORS_FOR_FLAGS(PopoverPresentationController::ArrowDirections)

}  // namespace vl
