#include "preview/FileInfoCell.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>

namespace vl {

FileInfoCell::FileInfoCell() : FileInfoCell(QString(), QString(), 1) {}

FileInfoCell::FileInfoCell(const QString& name, const QString& value, int maxLines)
    : nameLabel_(new QLabel(name)),
      valueLabel_(new QLabel(value)),
      maxLines_(std::max(1, maxLines)) {
    nameLabel_->setFont(font());
    QPalette grey = nameLabel_->palette();
    grey.setColor(QPalette::WindowText, QColor(128, 128, 128));
    nameLabel_->setPalette(grey);
    nameLabel_->setAlignment(
        (QApplication::layoutDirection() == Qt::RightToLeft ? Qt::AlignLeft : Qt::AlignRight) |
        Qt::AlignTop);
    nameLabel_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    valueLabel_->setFont(font());
    QPalette black = valueLabel_->palette();
    black.setColor(QPalette::WindowText, Qt::black);
    valueLabel_->setPalette(black);
    valueLabel_->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    valueLabel_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // The value yields width before the name does, and never more lines than it is given.
    valueLabel_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    valueLabel_->setMinimumWidth(1);
    valueLabel_->setWordWrap(maxLines_ > 1);
    valueLabel_->setMaximumHeight(QFontMetrics(font()).lineSpacing() * maxLines_);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kSpacing);
    layout->addWidget(nameLabel_, 0, Qt::AlignTop);
    layout->addWidget(valueLabel_, 1, Qt::AlignTop);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QFont FileInfoCell::font() {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() > 0 ? font.pointSizeF() * 15.0 / 13.0 : 11);
    return font;
}

}  // namespace vl
