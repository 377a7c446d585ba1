#include "toolkit/DocumentListItemDelegate.h"

#include "toolkit/DocumentListModel.h"

#include <QAbstractItemView>
#include <QListView>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace vl {

namespace {
constexpr int kMarkSize = 22;
constexpr int kBadgeSize = 16;
const QColor kTint(0x00, 0x7a, 0xff);
const QColor kPinned(0x34, 0xa8, 0x53);
}  // namespace

void DocumentListItemDelegate::paintOfflineState(QPainter* painter,
                                                 const QStyleOptionViewItem& option,
                                                 const QModelIndex& index, bool grid,
                                                 bool selecting) {
    const QVariant progress = index.data(DocumentListModel::ProgressRole);
    const bool pinned = index.data(DocumentListModel::PinnedRole).toBool();
    if (!progress.isValid() && !pinned) {
        return;
    }
    // List rows carry the marks at their right end, left of the selection mark while selecting;
    // grid cells at the bottom right of the icon, the ring in the middle of it.
    const QRect& r = option.rect;
    const int right = r.right() - 12 - (selecting ? kMarkSize + 10 : 0);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (pinned) {
        const QRect badge = grid ? QRect(r.center().x() + 14,
                                         r.top() + 4 + option.decorationSize.height() - kBadgeSize,
                                         kBadgeSize, kBadgeSize)
                                 : QRect(right - kBadgeSize, r.center().y() - kBadgeSize / 2,
                                         kBadgeSize, kBadgeSize);
        // A green disc with a downward arrow onto a line: the content stays on the device.
        painter->setPen(QPen(Qt::white, 1.5));
        painter->setBrush(kPinned);
        painter->drawEllipse(badge);
        const QPointF c = QRectF(badge).center();
        const double u = badge.width() / 16.0;
        painter->setPen(QPen(Qt::white, 1.6 * u, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawLine(QPointF(c.x(), c.y() - 4 * u), QPointF(c.x(), c.y() + 2 * u));
        painter->drawLine(QPointF(c.x() - 3 * u, c.y() - 1 * u), QPointF(c.x(), c.y() + 2 * u));
        painter->drawLine(QPointF(c.x() + 3 * u, c.y() - 1 * u), QPointF(c.x(), c.y() + 2 * u));
        painter->drawLine(QPointF(c.x() - 3.5 * u, c.y() + 4.5 * u),
                          QPointF(c.x() + 3.5 * u, c.y() + 4.5 * u));
    }
    if (progress.isValid()) {
        const int size = kMarkSize;
        const QRect ring =
            grid ? QRect(r.center().x() - size / 2,
                         r.top() + 4 + option.decorationSize.height() / 2 - size / 2, size, size)
                 : QRect(right - (pinned ? kBadgeSize + 8 : 0) - size, r.center().y() - size / 2,
                         size, size);
        const double fraction = std::clamp(progress.toDouble(), 0.0, 1.0);
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(255, 255, 255, 220));
        painter->drawEllipse(ring);
        painter->setPen(QPen(QColor(0xd0, 0xd0, 0xd0), 2.5));
        painter->setBrush(Qt::NoBrush);
        const QRect track = ring.adjusted(3, 3, -3, -3);
        painter->drawEllipse(track);
        painter->setPen(QPen(kTint, 2.5, Qt::SolidLine, Qt::FlatCap));
        painter->drawArc(track, 90 * 16, -int(fraction * 360 * 16));
    }
    painter->restore();
}

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
    const bool grid = view && view->viewMode() == QListView::IconMode;
    paintOfflineState(painter, option, index, grid, selecting);
    if (!selecting) {
        return;
    }

    // Grid cells carry the mark on the icon's corner, list rows at their right end.
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
