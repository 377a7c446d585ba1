#pragma once

#include <QStyledItemDelegate>

namespace vl {

// Draws a folder list's rows (or grid cells) as the style does, without the style's selection
// fill; a small ring while the item downloads and a mark on items kept offline; and, while the
// list selects (its selection mode is not NoSelection), a round check mark per row: filled and
// ticked for a selected item, an empty ring otherwise.
class DocumentListItemDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    // Grid cells take the whole cell, so names wrap to a second line instead of being cut
    // to the width of the first item's.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    static void paintOfflineState(QPainter* painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index, bool grid, bool selecting);
};

}  // namespace vl
