#include "preview/ConstraintUtils.h"

#include <QVBoxLayout>
#include <QWidget>

namespace vl {

QBoxLayout* ConstraintUtils::stretchSubviewConstraintsWithinView(QWidget* subview, QWidget*) {
    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(subview);
    return layout;
}

QBoxLayout* ConstraintUtils::verticallyStackedConstraintsInParentTopChildBottomChildMiddleGap(
    QWidget*, QWidget* topChild, QWidget* bottomChild, int middleGap) {
    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(topChild, 0, Qt::AlignHCenter);
    layout->addSpacing(middleGap);
    layout->addWidget(bottomChild, 1, Qt::AlignHCenter);
    return layout;
}

}  // namespace vl
