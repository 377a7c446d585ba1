#pragma once

#include "toolkit/AlertAction.h"
#include "toolkit/ViewController.h"

#include <QList>
#include <QPointer>

#include <functional>
#include <memory>

class QLineEdit;
class QPushButton;

namespace vl {

// An alert: title, message, optional text fields and a row (or column) of action buttons, shown
// as a centred card over the dimmed window when presented. A tap on an enabled action dismisses
// the alert and then runs the action's handler.
class AlertController : public ViewController {
    Q_OBJECT
public:
    enum class Style { ActionSheet = 0, Alert = 1 };

    static std::shared_ptr<AlertController> alertControllerWithTitle(const QString& title,
                                                                     const QString& message,
                                                                     Style style);
    AlertController(const QString& title, const QString& message, Style style);

    QString message() const { return message_; }
    void setMessage(const QString& message);
    Style preferredStyle() const { return style_; }

    void addAction(const std::shared_ptr<AlertAction>& action);
    const QList<std::shared_ptr<AlertAction>>& actions() const { return actions_; }
    // The action that Return triggers (and that is drawn bold).
    std::shared_ptr<AlertAction> preferredAction() const { return preferredAction_; }
    void setPreferredAction(const std::shared_ptr<AlertAction>& action);

    // Adds a text field; the handler configures it before the alert is shown.
    void addTextFieldWithConfigurationHandler(std::function<void(QLineEdit*)> configure = {});
    QList<QLineEdit*> textFields();

    // What a tap on the action's button does: nothing when it is disabled or not one of this
    // alert's actions; otherwise dismiss, then the handler.
    void triggerAction(const std::shared_ptr<AlertAction>& action);
    // The button drawn for an action (after the view loaded).
    QPushButton* buttonForAction(const std::shared_ptr<AlertAction>& action);

    ModalPresentationStyle modalPresentationStyle() const override;

protected:
    void loadView() override;

private:
    void addButton(const std::shared_ptr<AlertAction>& action);

    QString message_;
    Style style_;
    QList<std::shared_ptr<AlertAction>> actions_;
    std::shared_ptr<AlertAction> preferredAction_;
    QList<std::function<void(QLineEdit*)>> textFieldHandlers_;
    QList<QPointer<QLineEdit>> textFields_;
    QList<QPointer<QPushButton>> buttons_;
    QPointer<QWidget> textFieldBox_;
    QPointer<QWidget> buttonBox_;
    bool triggered_ = false;
};

}  // namespace vl
