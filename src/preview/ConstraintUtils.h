#pragma once

class QBoxLayout;
class QWidget;

namespace vl {

// Layouts that place one view inside another, made but not installed: the caller sets them on
// the parent when it wants them to apply. Class-level operations only; main thread only.
class ConstraintUtils {
public:
    ConstraintUtils() = delete;

    // Pins `subview` to the top and bottom of `view`, centred and as wide as `view`.
    static QBoxLayout* stretchSubviewConstraintsWithinView(QWidget* subview, QWidget* view);
    // Two children one above the other, `middleGap` apart, each centred and no wider than
    // `parent`, together filling its height.
    static QBoxLayout* verticallyStackedConstraintsInParentTopChildBottomChildMiddleGap(
        QWidget* parent, QWidget* topChild, QWidget* bottomChild, int middleGap);
};

}  // namespace vl
