#include "toolkit/AlertController.h"

#include "toolkit/PresentationOverlay.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

namespace vl {

namespace {

const QColor kCardColor(248, 248, 250);
constexpr int kAlertButtonHeight = 44;
constexpr int kSheetButtonHeight = 56;

QString buttonStyle(AlertAction::Style style, bool preferred, bool sheet, bool besideAnother) {
    const char* color = style == AlertAction::Style::Destructive ? "#ff3b30" : "#007aff";
    const bool bold = preferred || (style == AlertAction::Style::Cancel);
    return QStringLiteral(
               "QPushButton { color: %1; font-weight: %2; font-size: %3px; border: none;"
               " border-top: 1px solid #d1d1d6; %4 padding: 0 12px; background: transparent; }"
               "QPushButton:pressed { background: #e4e4ea; }"
               "QPushButton:focus { background: #ececf1; }"
               "QPushButton:disabled { color: #b4b4b8; }")
        .arg(QLatin1String(color), bold ? QStringLiteral("600") : QStringLiteral("400"),
             QString::number(sheet ? 19 : 17),
             besideAnother ? QStringLiteral("border-left: 1px solid #d1d1d6;") : QString());
}

QLabel* makeLabel(const QString& text, const QString& name, int pixelSize, bool bold,
                  const char* color, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setContentsMargins(16, 0, 16, 0);
    label->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(color)));
    QFont font = label->font();
    font.setPixelSize(pixelSize);
    font.setWeight(bold ? QFont::DemiBold : QFont::Normal);
    label->setFont(font);
    label->setVisible(!text.isEmpty());
    return label;
}

}  // namespace

std::shared_ptr<AlertController> AlertController::alertControllerWithTitle(const QString& title,
                                                                           const QString& message,
                                                                           Style style) {
    return std::make_shared<AlertController>(title, message, style);
}

AlertController::AlertController(const QString& title, const QString& message, Style style)
    : message_(message),
      style_(style),
      popover_(std::make_shared<PopoverPresentationController>()) {
    ViewController::setTitle(title);
}

void AlertController::setMessage(const QString& message) {
    message_ = message;
    if (QWidget* root = isViewLoaded() ? view() : nullptr) {
        if (auto* label = root->findChild<QLabel*>(QStringLiteral("alertMessage"))) {
            label->setText(message);
            label->setVisible(!message.isEmpty());
        }
    }
}

ModalPresentationStyle AlertController::modalPresentationStyle() const {
    return style_ == Style::Alert ? ModalPresentationStyle::AlertCard
                                  : ModalPresentationStyle::ActionSheet;
}

void AlertController::addAction(const std::shared_ptr<AlertAction>& action) {
    if (!action || actions_.contains(action)) {
        return;
    }
    actions_.append(action);
    if (isViewLoaded()) {
        addButton(action);
    }
}

void AlertController::setPreferredAction(const std::shared_ptr<AlertAction>& action) {
    preferredAction_ = action;
    for (qsizetype i = 0; i < actions_.size() && i < buttons_.size(); ++i) {
        if (QPushButton* button = buttons_[i]) {
            button->setStyleSheet(buttonStyle(actions_[i]->style(), actions_[i] == action,
                                              style_ == Style::ActionSheet,
                                              button->property("besideAnother").toBool()));
        }
    }
}

void AlertController::addTextFieldWithConfigurationHandler(
    std::function<void(TextField*)> configure) {
    textFieldHandlers_.append(std::move(configure));
    if (isViewLoaded() && textFieldBox_) {
        makeTextField(textFieldHandlers_.last());
        textFieldBox_->show();
    }
}

TextField* AlertController::makeTextField(const std::function<void(TextField*)>& configure) {
    auto* field = new TextField(textFieldBox_);
    field->setObjectName(QStringLiteral("alertTextField"));
    field->setStyleSheet(QStringLiteral(
        "QLineEdit { background: white; border: 1px solid #c7c7cc; border-radius: 6px;"
        " padding: 0 6px; font-size: 15px; }"));
    textFieldBox_->layout()->addWidget(field);
    textFields_.append(field);
    if (configure) {
        configure(field);
    }
    // A field is read by its placeholder until the user types: the screen reader's name too.
    if (field->accessibleName().isEmpty()) {
        field->setAccessibleName(field->placeholderText().isEmpty() ? title()
                                                                    : field->placeholderText());
    }
    return field;
}

QList<TextField*> AlertController::textFields() {
    view();
    QList<TextField*> fields;
    for (const QPointer<TextField>& field : textFields_) {
        if (field) {
            fields.append(field);
        }
    }
    return fields;
}

void AlertController::setContentViewController(const std::shared_ptr<ViewController>& controller) {
    if (content_ == controller) {
        return;
    }
    if (content_ && content_->isViewLoaded() && content_->view()->parentWidget() == contentBox_) {
        content_->view()->hide();
        content_->view()->setParent(nullptr);
    }
    content_ = controller;
    placeContentView();
}

void AlertController::placeContentView() {
    if (!contentBox_ || !content_) {
        return;
    }
    QWidget* contentView = content_->view();
    // The content controller decides whether its view shows (a message line hides when empty);
    // a view never shown or hidden by it shows.
    const bool shown =
        !contentView->testAttribute(Qt::WA_WState_ExplicitShowHide) || !contentView->isHidden();
    contentView->setParent(contentBox_);
    contentBox_->layout()->addWidget(contentView);
    contentView->setVisible(shown);
}

QWidget* AlertController::makeCard(QWidget* parent) {
    auto* card = new QWidget(parent);
    card->setAttribute(Qt::WA_StyledBackground);
    card->setObjectName(QStringLiteral("alertCard"));
    card->setStyleSheet(QStringLiteral("#alertCard { background: %1; border-radius: 14px; }")
                            .arg(kCardColor.name()));
    return card;
}

void AlertController::loadView() {
    const bool sheet = style_ == Style::ActionSheet;
    QWidget* root = nullptr;
    QWidget* card = nullptr;
    if (sheet) {
        // A sheet is two cards: the actions, and below them, apart, the cancel action.
        root = new QWidget;
        root->setObjectName(QStringLiteral("alertSheet"));
        auto* rootLayout = new QVBoxLayout(root);
        rootLayout->setContentsMargins(0, 0, 0, 0);
        rootLayout->setSpacing(8);
        card = makeCard(root);
        rootLayout->addWidget(card);
        cancelCard_ = makeCard(root);
        cancelCard_->setObjectName(QStringLiteral("alertCancelCard"));
        cancelCard_->setStyleSheet(
            QStringLiteral("#alertCancelCard { background: white; border-radius: 14px; }"));
        auto* cancelLayout = new QVBoxLayout(cancelCard_);
        cancelLayout->setContentsMargins(0, 0, 0, 0);
        cancelLayout->setSpacing(0);
        rootLayout->addWidget(cancelCard_);
        cancelCard_->hide();
    } else {
        root = card = makeCard(nullptr);
    }
    root->setProperty("popoverArrowColor", kCardColor);
    root->installEventFilter(this);

    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(0, sheet ? 14 : 20, 0, 0);
    layout->setSpacing(sheet ? 4 : 6);
    const bool hasHeader = !title().isEmpty() || !message_.isEmpty();
    layout->addWidget(makeLabel(title(), QStringLiteral("alertTitle"), sheet ? 14 : 17, true,
                                sheet ? "#6d6d72" : "#000000", card));
    layout->addWidget(makeLabel(message_, QStringLiteral("alertMessage"), 13, false,
                                sheet ? "#6d6d72" : "#1c1c1e", card));
    if (sheet && !hasHeader) {
        layout->setContentsMargins(0, 0, 0, 0);
    }

    textFieldBox_ = new QWidget(card);
    auto* fieldLayout = new QVBoxLayout(textFieldBox_);
    fieldLayout->setContentsMargins(16, 10, 16, 2);
    fieldLayout->setSpacing(6);
    layout->addWidget(textFieldBox_);
    for (const std::function<void(TextField*)>& configure : textFieldHandlers_) {
        makeTextField(configure);
    }
    textFieldBox_->setVisible(!textFieldHandlers_.isEmpty());

    contentBox_ = new QWidget(card);
    auto* contentLayout = new QVBoxLayout(contentBox_);
    contentLayout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(contentBox_);

    buttonBox_ = new QWidget(card);
    // Two actions of an alert sit side by side; more, or any action sheet, stack up.
    const bool sideBySide = !sheet && actions_.size() == 2;
    auto* buttons =
        new QBoxLayout(sideBySide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom, buttonBox_);
    buttons->setContentsMargins(0, hasHeader || !sheet ? 12 : 0, 0, 0);
    buttons->setSpacing(0);
    layout->addWidget(buttonBox_);
    setView(root);
    for (const std::shared_ptr<AlertAction>& action : actions_) {
        addButton(action);
    }
    placeContentView();
}

QBoxLayout* AlertController::layoutForAction(const std::shared_ptr<AlertAction>& action) {
    if (style_ == Style::ActionSheet && action->style() == AlertAction::Style::Cancel &&
        cancelCard_) {
        cancelCard_->show();
        return static_cast<QBoxLayout*>(cancelCard_->layout());
    }
    return static_cast<QBoxLayout*>(buttonBox_->layout());
}

void AlertController::addButton(const std::shared_ptr<AlertAction>& action) {
    QBoxLayout* layout = layoutForAction(action);
    const bool sheet = style_ == Style::ActionSheet;
    const bool inCancelCard = layout->parentWidget() == cancelCard_.data();
    const bool besideAnother =
        layout->direction() == QBoxLayout::LeftToRight && layout->count() > 0;
    auto* button = new QPushButton(action->title(), layout->parentWidget());
    button->setObjectName(action->title());
    button->setAccessibleName(action->title());
    button->setEnabled(action->isEnabled());
    button->setCursor(Qt::PointingHandCursor);
    button->setMinimumHeight(sheet ? kSheetButtonHeight : kAlertButtonHeight);
    button->setProperty("besideAnother", besideAnother);
    QString style = buttonStyle(action->style(), action == preferredAction_, sheet, besideAnother);
    if (inCancelCard) {
        // Alone in its card: no hairline above it, and the card's rounded corners show.
        style += QStringLiteral("QPushButton { border-top: none; border-radius: 14px; }");
    }
    button->setStyleSheet(style);
    layout->addWidget(button);
    buttons_.append(button);
    std::weak_ptr<AlertAction> weakAction = action;
    connect(action.get(), &AlertAction::enabledChanged, button, &QPushButton::setEnabled);
    connect(button, &QPushButton::clicked, this, [this, weakAction] {
        if (std::shared_ptr<AlertAction> action = weakAction.lock()) {
            triggerAction(action);
        }
    });
}

QPushButton* AlertController::buttonForAction(const std::shared_ptr<AlertAction>& action) {
    view();
    const qsizetype index = actions_.indexOf(action);
    return index >= 0 && index < buttons_.size() ? buttons_[index].data() : nullptr;
}

void AlertController::viewWillAppear(bool animated) {
    ViewController::viewWillAppear(animated);
    // The overlay that shows this alert is the view's parent by now.
    if (auto* overlay = qobject_cast<PresentationOverlay*>(view()->parentWidget())) {
        if (style_ == Style::ActionSheet) {
            overlay->setPopover(popover_);
        }
        connect(overlay, &PresentationOverlay::backdropTapped, this, [this] {
            if (style_ == Style::ActionSheet) {
                cancel();
            }
        });
    }
}

void AlertController::viewDidAppear(bool animated) {
    ViewController::viewDidAppear(animated);
    if (!textFields_.isEmpty() && textFields_.first()) {
        textFields_.first()->setFocus(Qt::OtherFocusReason);
    }
}

bool AlertController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view() && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape) {
            cancel();
            return true;
        }
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && preferredAction_) {
            triggerAction(preferredAction_);
            return true;
        }
    }
    return ViewController::eventFilter(watched, event);
}

void AlertController::cancel() {
    for (const std::shared_ptr<AlertAction>& action : actions_) {
        if (action->style() == AlertAction::Style::Cancel) {
            triggerAction(action);
            return;
        }
    }
}

void AlertController::triggerAction(const std::shared_ptr<AlertAction>& action) {
    if (!action || !action->isEnabled() || !actions_.contains(action) || triggered_) {
        return;
    }
    if (!action->shouldDismiss()) {
        return;
    }
    // One tap ends the alert: a second tap while it goes away does nothing.
    triggered_ = true;
    std::shared_ptr<AlertController> self = sharedAs<AlertController>();
    auto runHandler = [self, action] {
        if (action->handler()) {
            action->handler()(action);
        }
    };
    if (presentingViewController()) {
        dismissViewControllerAnimated(true, runHandler);
    } else {
        runHandler();
    }
}

}  // namespace vl
