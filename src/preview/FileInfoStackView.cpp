#include "preview/FileInfoStackView.h"

#include "fileops/FileUtils.h"
#include "model/VLItem.h"
#include "platform/text/Strings.h"
#include "preview/FileInfoCell.h"
#include "services/FileTags.h"

#include <QBuffer>
#include <QFontMetrics>
#include <QLabel>
#include <QVBoxLayout>

namespace vl {

namespace {

QString text(const char* key) {
    return Strings::localized(key);
}

}  // namespace

FileInfoStackView::FileInfoStackView(QWidget* parent)
    : QWidget(parent), layout_(new QVBoxLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(kRowSpacing);
    layout_->setAlignment(Qt::AlignTop);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QList<FileInfoCell*> FileInfoStackView::cells() const {
    QList<FileInfoCell*> result;
    for (int i = 0; i < layout_->count(); ++i) {
        if (auto* cell = qobject_cast<FileInfoCell*>(layout_->itemAt(i)->widget())) {
            result.append(cell);
        }
    }
    return result;
}

FileInfoCell* FileInfoStackView::addCellValueMaxLines(const QString& name, const QString& value,
                                                      int maxLines) {
    auto* cell = new FileInfoCell(name, value, maxLines);
    layout_->addWidget(cell);
    equalizeNameWidths();
    return cell;
}

void FileInfoStackView::equalizeNameWidths() {
    int widest = 0;
    const QList<FileInfoCell*> rows = cells();
    for (FileInfoCell* cell : rows) {
        widest = std::max(widest, cell->nameLabel()->sizeHint().width());
    }
    for (FileInfoCell* cell : rows) {
        cell->nameLabel()->setFixedWidth(widest);
    }
}

int FileInfoStackView::nameWidth() const {
    const QList<FileInfoCell*> rows = cells();
    return rows.isEmpty() ? 0 : rows.first()->nameLabel()->width();
}

void FileInfoStackView::setItem(const std::shared_ptr<VLItem>& item) {
    item_ = item;
    if (!item) {
        return;
    }
    for (FileInfoCell* cell : cells()) {
        layout_->removeWidget(cell);
        delete cell;
    }
    creationDateCell_ = nullptr;
    modifiedDateCell_ = nullptr;

    const QString kind = item->localizedTypeDescription();
    const std::optional<QString> where = FileUtils::displayableLocationForURL(item->url());
    const QString size = item->friendlyFileSize();
    const auto created = item->friendlyCreationDate(VLItem::DateStyleLong);
    const auto modified = item->friendlyContentModificationDate(VLItem::DateStyleLong);
    if (!kind.isEmpty()) {
        addCellValueMaxLines(text("Kind"), kind, 1);
    }
    if (!size.isEmpty()) {
        addCellValueMaxLines(text("Size"), size, 1);
    }
    if (where && !where->isEmpty()) {
        addCellValueMaxLines(text("Where"), *where, 3);
    }
    if (created) {
        creationDateCell_ = addCellValueMaxLines(text("Created"), *created, 1);
    }
    if (modified) {
        modifiedDateCell_ = addCellValueMaxLines(text("Modified"), *modified, 1);
    }
    if (const std::optional<QString> tags =
            buildTagsWithImagesStringFont(*item, FileInfoCell::font())) {
        FileInfoCell* cell = addCellValueMaxLines(text("Tags"), QString(), 1);
        cell->valueLabel()->setTextFormat(Qt::RichText);
        cell->valueLabel()->setText(*tags);
        // Still one line, but the dots make it taller than a line of text: the text decides.
        cell->valueLabel()->setMaximumHeight(QWIDGETSIZE_MAX);
    }
    updateGeometry();
    if (width() > 0) {
        fitDates(width() - nameWidth() - FileInfoCell::kSpacing);
    }
}

std::optional<QString> FileInfoStackView::buildTagsWithImagesStringFont(const VLItem& item,
                                                                        const QFont& font) {
    const QStringList tags = item.tags().value_or(QStringList());
    if (tags.isEmpty()) {
        return std::nullopt;
    }
    const QFontMetricsF metrics(font);
    const qreal capHeight = metrics.capHeight();
    const qreal lineHeight = metrics.height();
    QString html;
    for (qsizetype i = 0; i < tags.size(); ++i) {
        const QImage blip = FileTags::blipWithTagImageSizeBlipHeightOffset(
            tags.at(i), QSizeF(capHeight + 2, lineHeight), capHeight,
            QPointF(0, metrics.ascent() - capHeight + 1));
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        blip.save(&buffer, "PNG");
        html += QStringLiteral("<img src=\"data:image/png;base64,%1\" width=\"%2\" height=\"%3\">")
                    .arg(QString::fromLatin1(png.toBase64()))
                    .arg(blip.width())
                    .arg(blip.height());
        html += tags.at(i).toHtmlEscaped();
        if (i + 1 < tags.size()) {
            html += QLatin1Char(' ');
        }
    }
    return html;
}

QSize FileInfoStackView::sizeHint() const {
    QSize hint = QWidget::sizeHint();
    // Ask for room for the long dates, so that a column that can widen brings them back.
    if (item_ && (creationDateCell_ || modifiedDateCell_)) {
        const QFontMetrics metrics(FileInfoCell::font());
        int longest = 0;
        for (const auto& date : {item_->friendlyCreationDate(VLItem::DateStyleLong),
                                 item_->friendlyContentModificationDate(VLItem::DateStyleLong)}) {
            longest = std::max(longest, date ? metrics.horizontalAdvance(*date) + 1 : 0);
        }
        hint.setWidth(std::max(hint.width(), nameWidth() + FileInfoCell::kSpacing + longest));
    }
    return hint;
}

void FileInfoStackView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitDates(width() - nameWidth() - FileInfoCell::kSpacing);
}

void FileInfoStackView::fitDates(int available) {
    if (!creationDateCell_ && !modifiedDateCell_) {
        return;
    }
    if (available <= 0) {
        return;
    }
    const QFontMetrics metrics(FileInfoCell::font());
    std::optional<QString> created;
    std::optional<QString> modified;
    for (int style : {VLItem::DateStyleLong, VLItem::DateStyleMedium, VLItem::DateStyleShort}) {
        created = item_ ? item_->friendlyCreationDate(style) : std::nullopt;
        modified = item_ ? item_->friendlyContentModificationDate(style) : std::nullopt;
        const int createdWidth = created ? metrics.horizontalAdvance(*created) : 0;
        const int modifiedWidth = modified ? metrics.horizontalAdvance(*modified) : 0;
        if (createdWidth <= available && modifiedWidth <= available) {
            break;
        }
    }
    // Only a real change: a pass that sets the same text would ask for another pass.
    for (auto [cell, value] : {std::pair{creationDateCell_.data(), created},
                               std::pair{modifiedDateCell_.data(), modified}}) {
        const QString shown = value.value_or(QString());
        if (cell && cell->valueLabel()->text() != shown) {
            cell->valueLabel()->setText(shown);
        }
    }
}

}  // namespace vl
