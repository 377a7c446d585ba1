#include "toolkit/AlertController.h"

#include <QBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vl {

namespace {

QString buttonStyle(AlertAction::Style style, bool preferred) {
    const char* color = style == AlertAction::Style::Destructive ? "#ff3b30" : "#007aff";
    const bool bold = preferred || style == AlertAction::Style::Cancel;
    return QStringLiteral(
               "QPushButton { color: %1; font-weight: %2; border: none; border-top: 1px solid "
               "#d8d8d8; padding: 10px; background: transparent; }"
               "QPushButton:disabled { color: #b0b0b0; }")
        .arg(QLatin1String(color), bold ? QStringLiteral("bold") : QStringLiteral("normal"));
}

}  // namespace

std::shared_ptr<AlertController> AlertController::alertControllerWithTitle(const QString& title,
                                                                           const QString& message,
                                                                           Style style) {
    return std::make_shared<AlertController>(title, message, style);
}

AlertController::AlertController(const QString& title, const QString& message, Style style)
    : message_(message), style_(style) {
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
        if (buttons_[i]) {
            buttons_[i]->setStyleSheet(buttonStyle(actions_[i]->style(), actions_[i] == action));
            buttons_[i]->setDefault(actions_[i] == action);
        }
    }
}

void AlertController::addTextFieldWithConfigurationHandler(
    std::function<void(QLineEdit*)> configure) {
    textFieldHandlers_.append(std::move(configure));
    if (isViewLoaded() && textFieldBox_) {
        auto* field = new QLineEdit(textFieldBox_);
        textFieldBox_->layout()->addWidget(field);
        textFields_.append(field);
        if (textFieldHandlers_.last()) {
            textFieldHandlers_.last()(field);
        }
        textFieldBox_->show();
    }
}

QList<QLineEdit*> AlertController::textFields() {
    view();
    QList<QLineEdit*> fields;
    for (const QPointer<QLineEdit>& field : textFields_) {
        if (field) {
            fields.append(field);
        }
    }
    return fields;
}

void AlertController::loadView() {
    auto* card = new QWidget;
    card->setObjectName(QStringLiteral("alertCard"));
    card->setAttribute(Qt::WA_StyledBackground);
    card->setStyleSheet(QStringLiteral("#alertCard { background: #f7f7f7; border-radius: 12px; }"));
    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(0, 16, 0, 0);
    layout->setSpacing(6);

    auto* titleLabel = new QLabel(title(), card);
    titleLabel->setObjectName(QStringLiteral("alertTitle"));
    titleLabel->setAlignment(Qt::AlignCenter);
    titleLabel->setWordWrap(true);
    QFont bold = titleLabel->font();
    bold.setBold(true);
    titleLabel->setFont(bold);
    titleLabel->setContentsMargins(16, 0, 16, 0);
    titleLabel->setVisible(!title().isEmpty());
    layout->addWidget(titleLabel);

    auto* messageLabel = new QLabel(message_, card);
    messageLabel->setObjectName(QStringLiteral("alertMessage"));
    messageLabel->setAlignment(Qt::AlignCenter);
    messageLabel->setWordWrap(true);
    messageLabel->setContentsMargins(16, 0, 16, 0);
    messageLabel->setVisible(!message_.isEmpty());
    layout->addWidget(messageLabel);

    textFieldBox_ = new QWidget(card);
    auto* fieldLayout = new QVBoxLayout(textFieldBox_);
    fieldLayout->setContentsMargins(16, 4, 16, 4);
    layout->addWidget(textFieldBox_);
    for (const std::function<void(QLineEdit*)>& configure : textFieldHandlers_) {
        auto* field = new QLineEdit(textFieldBox_);
        fieldLayout->addWidget(field);
        textFields_.append(field);
        if (configure) {
            configure(field);
        }
    }
    textFieldBox_->setVisible(!textFieldHandlers_.isEmpty());

    buttonBox_ = new QWidget(card);
    // Two actions of an alert sit side by side; more, or any action sheet, stack up.
    const bool sideBySide = style_ == Style::Alert && actions_.size() == 2;
    auto* buttons =
        new QBoxLayout(sideBySide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom, buttonBox_);
    buttons->setContentsMargins(0, 8, 0, 0);
    buttons->setSpacing(0);
    layout->addWidget(buttonBox_);
    setView(card);
    for (const std::shared_ptr<AlertAction>& action : actions_) {
        addButton(action);
    }
}

void AlertController::addButton(const std::shared_ptr<AlertAction>& action) {
    auto* button = new QPushButton(action->title(), buttonBox_);
    button->setObjectName(action->title());
    button->setEnabled(action->isEnabled());
    button->setStyleSheet(buttonStyle(action->style(), action == preferredAction_));
    button->setDefault(action == preferredAction_);
    buttonBox_->layout()->addWidget(button);
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

void AlertController::triggerAction(const std::shared_ptr<AlertAction>& action) {
    if (!action || !action->isEnabled() || !actions_.contains(action) || triggered_) {
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
