#include "toolkit/OpenWithViewController.h"

#include "platform/text/Strings.h"
#include "toolkit/ToolkitIcons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QScroller>
#include <QToolButton>
#include <QVBoxLayout>

namespace vl {

namespace {

constexpr int kTileWidth = 84;
constexpr int kIconSize = 52;

QIcon applicationIcon(const QString& name) {
    // GIO names a file icon by its path and a theme icon by its name.
    if (name.startsWith(QLatin1Char('/'))) {
        QIcon icon(name);
        if (!icon.isNull()) {
            return icon;
        }
    }
    return ToolkitIcons::icon(name, QStringLiteral("application-x-executable"));
}

}  // namespace

OpenWithViewController::OpenWithViewController(QList<ApplicationRecord> applications, Chosen chosen)
    : applications_(std::move(applications)), chosen_(std::move(chosen)) {}

void OpenWithViewController::loadView() {
    auto* view = new QWidget;
    view->setObjectName(QStringLiteral("openWith"));
    auto* column = new QVBoxLayout(view);
    column->setContentsMargins(0, 8, 0, 4);
    column->setSpacing(6);

    auto* caption = new QLabel(Strings::localized("Open With"), view);
    caption->setObjectName(QStringLiteral("openWithCaption"));
    caption->setStyleSheet(QStringLiteral("color: #8a8a8e; font-size: 13px; padding-left: 16px;"));
    column->addWidget(caption);

    auto* scroll = new QScrollArea(view);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidgetResizable(true);
    scroll->setStyleSheet(
        QStringLiteral("QScrollArea, QScrollArea > QWidget > QWidget"
                       " { background: transparent; }"));
    QScroller::grabGesture(scroll->viewport(), QScroller::LeftMouseButtonGesture);

    auto* strip = new QWidget;
    auto* row = new QHBoxLayout(strip);
    row->setContentsMargins(12, 0, 12, 0);
    row->setSpacing(4);
    for (const ApplicationRecord& app : applications_) {
        auto* tile = new QToolButton(strip);
        tile->setObjectName(QStringLiteral("openWithApplication"));
        tile->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        tile->setIcon(applicationIcon(app.iconName));
        tile->setIconSize(QSize(kIconSize, kIconSize));
        tile->setText(
            tile->fontMetrics().elidedText(app.localizedName, Qt::ElideRight, kTileWidth - 8));
        tile->setToolTip(app.localizedName);
        tile->setAccessibleName(app.localizedName);
        tile->setAccessibleDescription(Strings::localized("Open With"));
        tile->setFixedSize(kTileWidth, kIconSize + 40);
        tile->setAutoRaise(true);
        tile->setCursor(Qt::PointingHandCursor);
        tile->setStyleSheet(QStringLiteral(
            "QToolButton { border: none; border-radius: 12px; font-size: 12px; color: #1c1c1e;"
            " padding-top: 6px; }"
            "QToolButton:pressed { background: #e5e5ea; }"));
        connect(tile, &QToolButton::clicked, this, [this, app] {
            if (chosen_) {
                chosen_(app);
            }
        });
        row->addWidget(tile);
    }
    row->addStretch(1);
    scroll->setWidget(strip);
    scroll->setFixedHeight(kIconSize + 44);
    column->addWidget(scroll);
    setView(view);
}

}  // namespace vl
