#include "toolkit/PreviewContentView.h"

#include "toolkit/Background.h"

#include "logging/VLLogging.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/ToolkitIcons.h"

#include <QLabel>
#include <QVBoxLayout>

namespace vl {

PreviewContentView::PreviewContentView(const Url& url, QWidget* parent)
    : QWidget(parent), url_(url), layout_(new QVBoxLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
    fillBackground(this);
}

void PreviewContentView::setContentWidget(QWidget* widget) {
    if (content_ && content_ != widget) {
        delete content_.data();
    }
    content_ = widget;
    layout_->addWidget(widget, 1);
}

void PreviewContentView::markReady() {
    if (ready_ || hasFailed()) {
        return;
    }
    ready_ = true;
    emit contentReady();
}

void PreviewContentView::showFailure(const QString& reason) {
    if (hasFailed()) {
        return;
    }
    VLLOG(4, "Can't preview %@: %@", url_, reason);
    failure_ = reason.isEmpty() ? Strings::localized("The file can’t be read.") : reason;
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("previewFailure"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(32, 32, 32, 32);
    layout->setSpacing(12);
    layout->addStretch(1);
    auto* icon = new QLabel(page);
    icon->setPixmap(
        ToolkitIcons::icon(QStringLiteral("dialog-warning"), QStringLiteral("x-office-document"))
            .pixmap(72, 72));
    icon->setAlignment(Qt::AlignCenter);
    icon->setAccessibleName(Strings::localized("Warning"));
    layout->addWidget(icon);
    auto* heading = new QLabel(
        format(Strings::localized("“%@” Can’t Be Previewed"), url_.lastPathComponent()), page);
    heading->setObjectName(QStringLiteral("previewFailureTitle"));
    heading->setAlignment(Qt::AlignCenter);
    heading->setWordWrap(true);
    QFont font = heading->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.3);
    heading->setFont(font);
    layout->addWidget(heading);
    auto* detail = new QLabel(failure_, page);
    detail->setObjectName(QStringLiteral("previewFailureMessage"));
    detail->setAlignment(Qt::AlignCenter);
    detail->setWordWrap(true);
    detail->setStyleSheet(QStringLiteral("color: #6d6d72;"));
    layout->addWidget(detail);
    layout->addStretch(2);
    // The content stays (hidden): the subclass's pointers into it remain valid.
    if (content_) {
        content_->hide();
    }
    layout_->addWidget(page, 1);
    emit contentFailed(failure_);
}

}  // namespace vl
