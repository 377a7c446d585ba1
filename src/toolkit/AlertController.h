#pragma once

#include "toolkit/AlertAction.h"
#include "toolkit/PopoverPresentationController.h"
#include "toolkit/TextField.h"
#include "toolkit/ViewController.h"

#include <QList>
#include <QPointer>

#include <functional>
#include <memory>

class QBoxLayout;
class QPushButton;

namespace vl {

// An alert or an action sheet. An alert is a centred card over the dimmed window: title, message,
// optional text fields, an optional content view controller below them, and its actions (two side
// by side, more stacked). An action sheet rises from the bottom on a phone, its actions in one
// card and the cancel action in a card of its own; on a tablet it is a popover pointing at the
// anchor its popoverPresentationController() names. A tap on an enabled action asks the action's
// should-dismiss hook, then dismisses the alert and runs the action's handler. Escape, and a tap
// outside an action sheet, choose the cancel-style action.
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
    void addTextFieldWithConfigurationHandler(std::function<void(TextField*)> configure = {});
    QList<TextField*> textFields();

    // A controller whose view is shown below the text fields, above the actions. The alert holds
    // it strongly and shows its view for as long as it is set.
    std::shared_ptr<ViewController> contentViewController() const { return content_; }
    void setContentViewController(const std::shared_ptr<ViewController>& controller);

    // Where an action sheet points on a tablet.
    const std::shared_ptr<PopoverPresentationController>& popoverPresentationController() const {
        return popover_;
    }

    // What a tap on the action's button does: nothing when it is disabled, not one of this
    // alert's actions, or its should-dismiss hook says no; otherwise dismiss, then the handler.
    void triggerAction(const std::shared_ptr<AlertAction>& action);
    // Escape, or a tap outside an action sheet: the cancel-style action, when there is one.
    void cancel();
    // The button drawn for an action (after the view loaded).
    QPushButton* buttonForAction(const std::shared_ptr<AlertAction>& action);

    ModalPresentationStyle modalPresentationStyle() const override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;

protected:
    void loadView() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeCard(QWidget* parent);
    TextField* makeTextField(const std::function<void(TextField*)>& configure);
    void addButton(const std::shared_ptr<AlertAction>& action);
    void placeContentView();
    QBoxLayout* layoutForAction(const std::shared_ptr<AlertAction>& action);

    QString message_;
    Style style_;
    QList<std::shared_ptr<AlertAction>> actions_;
    std::shared_ptr<AlertAction> preferredAction_;
    QList<std::function<void(TextField*)>> textFieldHandlers_;
    QList<QPointer<TextField>> textFields_;
    QList<QPointer<QPushButton>> buttons_;
    std::shared_ptr<ViewController> content_;
    std::shared_ptr<PopoverPresentationController> popover_;
    QPointer<QWidget> textFieldBox_;
    QPointer<QWidget> contentBox_;
    QPointer<QWidget> buttonBox_;
    QPointer<QWidget> cancelCard_;
    bool triggered_ = false;
};

}  // namespace vl
