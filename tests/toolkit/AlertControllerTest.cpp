#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/AlertController.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace vl;

namespace {

class AlertControllerTest : public ::testing::Test {
protected:
    VirtualDispatcher::Installation dispatch;
    std::shared_ptr<ViewController> parent = std::make_shared<ViewController>();
};

TEST_F(AlertControllerTest, TappingAnActionDismissesThenRunsItsHandler) {
    auto alert = AlertController::alertControllerWithTitle(
        QString(), QStringLiteral("Nimbra is not enabled"), AlertController::Style::Alert);
    bool parentStillPresentingInHandler = true;
    int handled = 0;
    auto ok = AlertAction::actionWithTitle(QStringLiteral("OK"), AlertAction::Style::Default,
                                           [&](const std::shared_ptr<AlertAction>& action) {
                                               ++handled;
                                               EXPECT_EQ(action->title(), QStringLiteral("OK"));
                                               parentStillPresentingInHandler =
                                                   parent->presentedViewController() != nullptr;
                                           });
    alert->addAction(ok);
    parent->presentViewController(alert, false);
    ASSERT_EQ(parent->presentedViewController(), alert);

    auto* message = alert->view()->findChild<QLabel*>(QStringLiteral("alertMessage"));
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->text(), QStringLiteral("Nimbra is not enabled"));
    EXPECT_FALSE(alert->view()
                     ->findChild<QLabel*>(QStringLiteral("alertTitle"))
                     ->isVisibleTo(alert->view()));

    alert->buttonForAction(ok)->click();
    EXPECT_EQ(handled, 1);
    EXPECT_FALSE(parentStillPresentingInHandler);
    EXPECT_EQ(parent->presentedViewController(), nullptr);
    alert->triggerAction(ok);
    EXPECT_EQ(handled, 1) << "an alert answers one tap";
}

TEST_F(AlertControllerTest, DisabledActionsGreyTheirButtonAndIgnoreTaps) {
    auto alert = AlertController::alertControllerWithTitle(QStringLiteral("Rename Item"), QString(),
                                                           AlertController::Style::Alert);
    QStringList handled;
    auto record = [&](const std::shared_ptr<AlertAction>& a) { handled << a->title(); };
    auto cancel =
        AlertAction::actionWithTitle(QStringLiteral("Cancel"), AlertAction::Style::Cancel, record);
    auto rename =
        AlertAction::actionWithTitle(QStringLiteral("Rename"), AlertAction::Style::Default, record);
    alert->addAction(cancel);
    alert->addAction(rename);
    alert->addTextFieldWithConfigurationHandler(
        [](QLineEdit* field) { field->setText(QStringLiteral("Letter")); });
    rename->setEnabled(false);
    parent->presentViewController(alert, false);

    ASSERT_EQ(alert->textFields().size(), 1);
    EXPECT_EQ(alert->textFields().first()->text(), QStringLiteral("Letter"));
    EXPECT_EQ(alert->actions(), (QList<std::shared_ptr<AlertAction>>{cancel, rename}));
    QPushButton* renameButton = alert->buttonForAction(rename);
    EXPECT_FALSE(renameButton->isEnabled());
    alert->triggerAction(rename);
    EXPECT_TRUE(handled.isEmpty());
    EXPECT_EQ(parent->presentedViewController(), alert);

    rename->setEnabled(true);
    EXPECT_TRUE(renameButton->isEnabled());
    renameButton->click();
    EXPECT_EQ(handled, QStringList{QStringLiteral("Rename")});
}

}  // namespace
