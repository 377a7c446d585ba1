#include "fileops/SimpleTextViewController.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>

namespace vl {

QFont SimpleTextViewController::messageLabelFont() {
    QFont font;
    font.setPixelSize(13);
    return font;
}

QLabel* SimpleTextViewController::messageLabel() {
    view();
    return messageLabel_;
}

void SimpleTextViewController::loadView() {
    auto* root = new QWidget;
    root->setObjectName(QStringLiteral("messageLine"));
    auto* layout = new QHBoxLayout(root);
    layout->setContentsMargins(labelHorizontalInsets, 0, labelHorizontalInsets, 0);
    messageLabel_ = new QLabel(root);
    messageLabel_->setObjectName(QStringLiteral("messageLabel"));
    messageLabel_->setWordWrap(true);
    messageLabel_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    messageLabel_->setFont(messageLabelFont());
    messageLabel_->setStyleSheet(QStringLiteral("color: #ff3b30;"));
    // Five lines at most: a longer message is cut rather than pushing the buttons off screen.
    messageLabel_->setMaximumHeight(QFontMetrics(messageLabelFont()).lineSpacing() * maximumLines);
    messageLabel_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    layout->addWidget(messageLabel_);
    root->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setView(root);
}

}  // namespace vl
