#include "toolkit/DocumentTargetSelectionController.h"

#include "toolkit/DocumentTargetSelectionControllerDelegate.h"
#include "toolkit/ToolkitIcons.h"

#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScroller>

namespace vl {

namespace {

constexpr int kRowHeight = 52;

QString barButtonStyle(bool bold) {
    return QStringLiteral(
               "QPushButton { color: #007aff; border: none; background: transparent;"
               " font-size: 17px; font-weight: %1; padding: 0 8px; }"
               "QPushButton:disabled { color: #b4b4b8; }"
               "QPushButton:pressed { color: #66aaff; }")
        .arg(bold ? QStringLiteral("600") : QStringLiteral("400"));
}

QPushButton* makeBarButton(const QString& title, bool bold, QWidget* parent) {
    auto* button = new QPushButton(title, parent);
    button->setObjectName(title);
    button->setAccessibleName(title);
    button->setCursor(Qt::PointingHandCursor);
    button->setMinimumHeight(44);
    button->setStyleSheet(barButtonStyle(bold));
    return button;
}

}  // namespace

DocumentTargetSelectionController::DocumentTargetSelectionController(QList<Url> itemsToMove)
    : itemsToMove_(std::move(itemsToMove)) {
    if (CloudDocuments::isInstalled()) {
        root_ = CloudDocuments::shared().defaultContainerURL().value_or(Url());
    }
    current_ = root_;
    shown_ = subfoldersOfFolder(current_, itemsToMove_);
}

bool DocumentTargetSelectionController::openFolder(const Url& folder) {
    if (folder.isEmpty() || !(root_.isAncestorOf(folder))) {
        return false;
    }
    for (const Url& item : itemsToMove_) {
        if (item.isAncestorOf(folder)) {
            return false;
        }
    }
    current_ = folder;
    reload();
    return true;
}

bool DocumentTargetSelectionController::goUp() {
    if (current_ == root_ || current_.isEmpty()) {
        return false;
    }
    current_ = Url::fromPath(current_.deletingLastPathComponent().path(), true);
    reload();
    return true;
}

bool DocumentTargetSelectionController::chooseCurrentFolder() {
    if (!canMoveItemsIntoFolder(itemsToMove_, current_)) {
        VLLOG(4, "Refusing to move %@ into %@", itemsToMove_, current_);
        return false;
    }
    if (std::shared_ptr<DocumentTargetSelectionControllerDelegate> owner = delegate_.lock()) {
        owner->documentTargetSelectionControllerDidSelectItemAtURL(
            sharedAs<DocumentTargetSelectionController>(), current_);
    }
    return true;
}

void DocumentTargetSelectionController::cancel() {
    dismissViewControllerAnimated(true);
}

void DocumentTargetSelectionController::reload() {
    shown_ = subfoldersOfFolder(current_, itemsToMove_);
    if (!isViewLoaded() || !list_) {
        return;
    }
    const bool atRoot = current_ == root_;
    QString title;
    if (atRoot && CloudDocuments::isInstalled()) {
        title = CloudDocuments::shared().defaultContainerLocalizedName();
    }
    if (title.isEmpty() && CloudDocuments::isInstalled()) {
        for (const CloudContainer& container : CloudDocuments::shared().containers()) {
            if (container.documentsURL() == current_) {
                title = container.localizedName();
            }
        }
    }
    if (title.isEmpty()) {
        title = current_.lastPathComponent();
    }
    titleLabel_->setText(title);
    titleLabel_->setAccessibleName(title);
    backButton_->setVisible(!atRoot);
    moveButton_->setEnabled(canMoveItemsIntoFolder(itemsToMove_, current_));

    list_->clear();
    for (const Folder& folder : shown_) {
        auto* row = new QListWidgetItem(
            ToolkitIcons::icon(
                folder.isAppLibrary ? QStringLiteral("folder-remote") : QStringLiteral("folder"),
                QStringLiteral("folder")),
            folder.name, list_);
        row->setSizeHint(QSize(0, kRowHeight));
        row->setData(Qt::AccessibleTextRole, folder.name);
        if (!folder.canOpen) {
            // An item being moved shows where it is, but can't be walked into.
            row->setFlags(row->flags() & ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable));
        }
    }
    emptyLabel_->setVisible(shown_.isEmpty());
    list_->setVisible(!shown_.isEmpty());
}

void DocumentTargetSelectionController::rowActivated(int row) {
    if (row < 0 || row >= shown_.size() || !shown_[row].canOpen) {
        return;
    }
    // Later: the list is rebuilt, and the tap being handled belongs to the row it would delete.
    // A tap reported both as a click and as an activation opens the folder once.
    const Url folder = shown_[row].url;
    const Url from = current_;
    QMetaObject::invokeMethod(
        this,
        [this, folder, from] {
            if (current_ == from) {
                openFolder(folder);
            }
        },
        Qt::QueuedConnection);
}

void DocumentTargetSelectionController::loadView() {
    auto* root = new QWidget;
    root->setObjectName(QStringLiteral("moveTargetChooser"));
    root->setAttribute(Qt::WA_StyledBackground);
    root->setStyleSheet(QStringLiteral("#moveTargetChooser { background: #f2f2f7; }"));
    auto* layout = new QVBoxLayout(root);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    auto* bar = new QWidget(root);
    bar->setObjectName(QStringLiteral("moveTargetBar"));
    bar->setAttribute(Qt::WA_StyledBackground);
    bar->setStyleSheet(QStringLiteral(
        "#moveTargetBar { background: #f9f9f9; border-bottom: 1px solid #d1d1d6; }"));
    auto* barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(6, 4, 6, 4);
    auto* cancelButton = makeBarButton(Strings::localized("Cancel"), false, bar);
    backButton_ = makeBarButton(QStringLiteral("\u2039 ") + Strings::localized("Back"), false, bar);
    backButton_->setAccessibleName(Strings::localized("Back"));
    titleLabel_ = new QLabel(bar);
    titleLabel_->setAlignment(Qt::AlignCenter);
    titleLabel_->setStyleSheet(QStringLiteral("font-size: 17px; font-weight: 600;"));
    moveButton_ = makeBarButton(Strings::localized("Move"), true, bar);
    barLayout->addWidget(cancelButton);
    barLayout->addWidget(backButton_);
    barLayout->addWidget(titleLabel_, 1);
    barLayout->addWidget(moveButton_);
    layout->addWidget(bar);

    const int count = int(itemsToMove_.size());
    promptLabel_ = new QLabel(
        format(Strings::localizedPlural(QStringLiteral(".DICT.CHOOSE_FOLDER_FOR_ITEMS.%d"), count),
               count),
        root);
    promptLabel_->setWordWrap(true);
    promptLabel_->setContentsMargins(16, 12, 16, 6);
    promptLabel_->setStyleSheet(QStringLiteral("color: #6d6d72; font-size: 13px;"));
    layout->addWidget(promptLabel_);

    list_ = new QListWidget(root);
    list_->setObjectName(QStringLiteral("moveTargetFolders"));
    list_->setAccessibleName(Strings::localized("Folders"));
    list_->setIconSize(QSize(28, 28));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setStyleSheet(QStringLiteral(
        "QListWidget { background: white; font-size: 17px; }"
        "QListWidget::item { border-bottom: 1px solid #e5e5ea; padding-left: 10px; color: black; }"
        "QListWidget::item:disabled { color: #b4b4b8; }"
        "QListWidget::item:selected { background: #d1d1d6; color: black; }"));
    QScroller::grabGesture(list_->viewport(), QScroller::TouchGesture);
    layout->addWidget(list_, 1);
    emptyLabel_ = new QLabel(Strings::localized("No Folders"), root);
    emptyLabel_->setAlignment(Qt::AlignCenter);
    emptyLabel_->setStyleSheet(QStringLiteral("color: #8e8e93; font-size: 17px;"));
    layout->addWidget(emptyLabel_, 1);
    setView(root);

    connect(cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
    connect(backButton_, &QPushButton::clicked, this, [this] { goUp(); });
    connect(moveButton_, &QPushButton::clicked, this, [this] { chooseCurrentFolder(); });
    // A tap opens the folder (clicked, not activated: a touch is one tap, not a double click).
    connect(list_, &QListWidget::clicked, this,
            [this](const QModelIndex& index) { rowActivated(index.row()); });
    connect(list_, &QListWidget::activated, this,
            [this](const QModelIndex& index) { rowActivated(index.row()); });
    reload();
}

}  // namespace vl
