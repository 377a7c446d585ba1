#include "toolkit/DocumentPickerUnavailableController.h"

#include "toolkit/Background.h"

#include "platform/text/Strings.h"
#include "toolkit/ToolkitIcons.h"

#include <QLabel>
#include <QPalette>
#include <QVBoxLayout>

namespace vl {

DocumentPickerUnavailableController::DocumentPickerUnavailableController() {
    setTitle(Strings::localized("Vellora Drive"));
}

void DocumentPickerUnavailableController::loadView() {
    auto* view = new QWidget;
    view->setObjectName(QStringLiteral("documentPickerUnavailable"));
    fillBackground(view);

    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(32, 32, 32, 32);
    layout->setSpacing(12);
    layout->addStretch(1);

    auto* icon = new QLabel(view);
    icon->setPixmap(ToolkitIcons::icon(QStringLiteral("network-offline")).pixmap(96, 96));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);

    auto* heading = new QLabel(Strings::localized("Vellora Drive Is Unavailable"), view);
    heading->setObjectName(QStringLiteral("unavailableTitle"));
    heading->setAlignment(Qt::AlignCenter);
    heading->setWordWrap(true);
    QFont font = heading->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.4);
    heading->setFont(font);
    layout->addWidget(heading);

    auto* detail = new QLabel(
        Strings::localized("Sign in to your Nimbra account and turn on Vellora Drive to see "
                           "your documents here."),
        view);
    detail->setObjectName(QStringLiteral("unavailableMessage"));
    detail->setAlignment(Qt::AlignCenter);
    detail->setWordWrap(true);
    detail->setStyleSheet(QStringLiteral("color: #6d6d72;"));
    layout->addWidget(detail);
    layout->addStretch(2);
    setView(view);
}

}  // namespace vl
