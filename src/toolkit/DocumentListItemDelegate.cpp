#include "toolkit/DocumentListItemDelegate.h"

#include <QAbstractItemView>
#include <QListView>
#include <QPainter>
#include <QPainterPath>

namespace vl {

namespace {
constexpr int kMarkSize = 22;
const QColor kTint(0x00, 0x7a, 0xff);
}  // namespace

QSize DocumentListItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const {
    const auto* view = qobject_cast<const QListView*>(option.widget);
    if (view && view->viewMode() == QListView::IconMode && view->gridSize().isValid()) {
        return view->gridSize() - QSize(6, 6);
    }
    return QStyledItemDelegate::sizeHint(option, index);
}

void DocumentListItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const {
    const auto* view = qobject_cast<const QListView*>(option.widget);
    const bool selecting = view && view->selectionMode() != QAbstractItemView::NoSelection;
    const bool selected = option.state & QStyle::State_Selected;

    QStyleOptionViewItem plain(option);
    plain.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    if (selecting && selected) {
        painter->fillRect(option.rect, QColor(0xe5, 0xf0, 0xff));
    }
    QStyledItemDelegate::paint(painter, plain, index);
    if (!selecting) {
        return;
    }

    // Grid cells carry the mark on the icon's corner, list rows at their right end.
    const bool grid = view->viewMode() == QListView::IconMode;
    const QRect& r = option.rect;
    const QRect mark = grid ? QRect(r.right() - kMarkSize - 4, r.top() + 4, kMarkSize, kMarkSize)
                            : QRect(r.right() - kMarkSize - 12, r.center().y() - kMarkSize / 2,
                                    kMarkSize, kMarkSize);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (selected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(kTint);
        painter->drawEllipse(mark);
        QPainterPath tick;
        tick.moveTo(mark.left() + mark.width() * 0.28, mark.top() + mark.height() * 0.52);
        tick.lineTo(mark.left() + mark.width() * 0.44, mark.top() + mark.height() * 0.68);
        tick.lineTo(mark.left() + mark.width() * 0.74, mark.top() + mark.height() * 0.34);
        painter->setPen(QPen(Qt::white, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->setBrush(Qt::NoBrush);
        painter->drawPath(tick);
    } else {
        painter->setPen(QPen(QColor(0xb0, 0xb0, 0xb0), 1.5));
        painter->setBrush(Qt::white);
        painter->drawEllipse(mark.adjusted(1, 1, -1, -1));
    }
    painter->restore();
}

}  // namespace vl
