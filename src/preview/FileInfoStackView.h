#pragma once

#include "preview/FileInfoCell.h"

#include <QFont>
#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>

class QVBoxLayout;

namespace vl {

class VLItem;

// An item's facts as a column of name / value rows: kind, size, where, created, modified, tags.
// The names share the widest name's width; the two dates take, at each layout, the most detailed
// style that fits the width the column has. Main thread only.
class FileInfoStackView : public QWidget {
    Q_OBJECT
public:
    explicit FileInfoStackView(QWidget* parent = nullptr);

    static constexpr int kRowSpacing = 10;

    FileInfoCell* addCellValueMaxLines(const QString& name, const QString& value, int maxLines);
    const std::shared_ptr<VLItem>& item() const { return item_; }
    // Rebuilds the rows for `item`; with no item the rows stay as they are.
    void setItem(const std::shared_ptr<VLItem>& item);
    // The tags as rich text: each a dot in its colour, then its name; none without tags.
    static std::optional<QString> buildTagsWithImagesStringFont(const VLItem& item,
                                                                const QFont& font);

    QList<FileInfoCell*> cells() const;
    FileInfoCell* creationDateCell() const { return creationDateCell_; }
    FileInfoCell* modifiedDateCell() const { return modifiedDateCell_; }

    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void equalizeNameWidths();
    int nameWidth() const;
    // Picks the date style that fits `available` points and shows the dates in it.
    void fitDates(int available);

    QVBoxLayout* layout_;
    std::shared_ptr<VLItem> item_;
    QPointer<FileInfoCell> creationDateCell_;
    QPointer<FileInfoCell> modifiedDateCell_;
};

}  // namespace vl
