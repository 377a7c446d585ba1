#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/AlertController.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/PresentationOverlay.h"
#include "toolkit/TextFieldDelegate.h"
#include "toolkit/Toolbar.h"
#include "toolkit/Window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
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

void pressKey(QWidget* widget, int key, const QString& text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &press);
}

void typeText(QWidget* widget, const QString& text) {
    for (QChar c : text) {
        pressKey(widget, 0, QString(c));
    }
}

void clickAt(QWidget* widget, QPoint point) {
    QMouseEvent press(QEvent::MouseButtonPress, point, widget->mapToGlobal(point), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
}

// The sheet slides away before its handler runs.
bool waitUntil(const std::function<bool()>& done) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 5000) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return done();
}

class ReturnCounter : public TextFieldDelegate {
public:
    bool textFieldShouldReturn(TextField* field) override {
        returned << field->text();
        return true;
    }
    QStringList returned;
};

TEST_F(AlertControllerTest, TextFieldsTakeTheirTraitsAndReturnGoesToTheDelegateOnlyWithText) {
    auto alert = AlertController::alertControllerWithTitle(QStringLiteral("New Folder"), QString(),
                                                           AlertController::Style::Alert);
    auto delegate = std::make_shared<ReturnCounter>();
    alert->addTextFieldWithConfigurationHandler([&](TextField* field) {
        field->setPlaceholderText(QStringLiteral("Folder Name"));
        field->setClearButtonShownWhileEditing(true);
        field->setReturnKeyType(TextField::ReturnKeyType::Done);
        field->setEnablesReturnKeyAutomatically(true);
        field->setAutocapitalizationType(TextField::AutocapitalizationType::Words);
        field->setAutocorrectionType(TextField::AutocorrectionType::No);
        field->setDelegate(delegate);
    });
    parent->presentViewController(alert, false);
    TextField* field = alert->textFields().value(0);
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->accessibleName(), QStringLiteral("Folder Name"));
    EXPECT_TRUE(field->clearButtonShownWhileEditing());
    EXPECT_EQ(field->inputMethodQuery(Qt::ImEnterKeyType).toInt(), int(Qt::EnterKeyDone));
    EXPECT_TRUE(field->inputMethodHints().testFlag(Qt::ImhNoPredictiveText));
    EXPECT_FALSE(field->inputMethodHints().testFlag(Qt::ImhNoAutoUppercase));

    int edits = 0;
    QObject::connect(field, &TextField::editingChanged, [&] { ++edits; });
    pressKey(field, Qt::Key_Return);
    EXPECT_TRUE(delegate->returned.isEmpty()) << "the return key waits for text";
    typeText(field, QStringLiteral("Trips"));
    EXPECT_TRUE(field->isClearButtonEnabled()) << "the clear button comes with the text";
    field->setText(QStringLiteral("Trips 2024"));
    EXPECT_EQ(edits, 5) << "typed characters are edits, setText is not";
    pressKey(field, Qt::Key_Return);
    EXPECT_EQ(delegate->returned, QStringList{QStringLiteral("Trips 2024")});
}

TEST_F(AlertControllerTest, ShouldDismissHookKeepsTheAlertUpAndContentSitsBelowTheField) {
    Window window(QRect(0, 0, 390, 700));
    window.setRootViewController(parent);
    window.show();
    auto alert = AlertController::alertControllerWithTitle(QStringLiteral("Rename Item"), QString(),
                                                           AlertController::Style::Alert);
    alert->addTextFieldWithConfigurationHandler();
    auto content = std::make_shared<ViewController>();
    alert->setContentViewController(content);
    bool allow = false;
    int asked = 0, handled = 0;
    auto done = AlertAction::actionWithTitle(
        QStringLiteral("Done"), AlertAction::Style::Default,
        [&](const std::shared_ptr<AlertAction>&) { ++handled; },
        [&] {
            ++asked;
            return allow;
        });
    alert->addAction(done);
    parent->presentViewController(alert, false);

    QWidget* field = alert->textFields().first();
    QWidget* contentView = content->view();
    QWidget* button = alert->buttonForAction(done);
    ASSERT_TRUE(contentView->isVisible());
    const int fieldBottom = field->mapTo(&window, QPoint(0, field->height())).y();
    const int contentTop = contentView->mapTo(&window, QPoint(0, 0)).y();
    EXPECT_LE(fieldBottom, contentTop);
    EXPECT_LE(contentTop + contentView->height(), button->mapTo(&window, QPoint(0, 0)).y());

    alert->buttonForAction(done)->click();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(handled, 0);
    EXPECT_EQ(parent->presentedViewController(), alert);
    allow = true;
    alert->buttonForAction(done)->click();
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(parent->presentedViewController(), nullptr);
}

TEST_F(AlertControllerTest, ActionSheetRisesFromTheBottomOnAPhoneAndCancelsOnEscapeOrOutside) {
    Window window(QRect(0, 0, 390, 700));
    window.setRootViewController(parent);
    window.show();
    QStringList chosen;
    auto record = [&](const std::shared_ptr<AlertAction>& a) { chosen << a->title(); };
    auto makeSheet = [&] {
        auto sheet = AlertController::alertControllerWithTitle(
            QString(), QStringLiteral("Gone for good."), AlertController::Style::ActionSheet);
        sheet->addAction(AlertAction::actionWithTitle(QStringLiteral("Cancel"),
                                                      AlertAction::Style::Cancel, record));
        sheet->addAction(AlertAction::actionWithTitle(QStringLiteral("Delete from Vellora"),
                                                      AlertAction::Style::Destructive, record));
        return sheet;
    };
    auto sheet = makeSheet();
    parent->presentViewController(sheet, false);
    const QRect frame = sheet->view()->geometry();
    EXPECT_NEAR(frame.bottom(), window.height(), 12);
    QPushButton* cancel = sheet->buttonForAction(sheet->actions()[0]);
    QPushButton* destroy = sheet->buttonForAction(sheet->actions()[1]);
    EXPECT_GT(cancel->mapTo(&window, QPoint(0, 0)).y(), destroy->mapTo(&window, QPoint(0, 0)).y())
        << "the cancel action sits apart, below the others";
    EXPECT_NE(cancel->parentWidget(), destroy->parentWidget());

    auto* overlay = qobject_cast<PresentationOverlay*>(sheet->view()->parentWidget());
    ASSERT_NE(overlay, nullptr);
    clickAt(overlay, QPoint(10, 10));
    EXPECT_TRUE(waitUntil([&] { return !chosen.isEmpty(); }));
    EXPECT_EQ(chosen, QStringList{QStringLiteral("Cancel")});
    EXPECT_EQ(parent->presentedViewController(), nullptr);

    sheet = makeSheet();
    parent->presentViewController(sheet, false);
    pressKey(sheet->view(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return chosen.size() == 2; }));
    EXPECT_EQ(chosen, (QStringList{QStringLiteral("Cancel"), QStringLiteral("Cancel")}));
}

TEST_F(AlertControllerTest, OnATabletAnActionSheetPointsAtItsAnchorFromAPermittedSide) {
    Window window(QRect(0, 0, 1024, 768));
    window.setRootViewController(parent);
    window.show();
    auto* row = new QWidget(parent->view());
    row->setGeometry(40, 300, 300, 60);
    row->show();
    auto sheet = AlertController::alertControllerWithTitle(
        QString(), QStringLiteral("Gone for good."), AlertController::Style::ActionSheet);
    sheet->addAction(AlertAction::actionWithTitle(QStringLiteral("Delete from Vellora"),
                                                  AlertAction::Style::Destructive));
    using Arrow = PopoverPresentationController::ArrowDirection;
    sheet->popoverPresentationController()->setSourceView(row);
    sheet->popoverPresentationController()->setSourceRect(QRect(0, 30, 300, 0));
    sheet->popoverPresentationController()->setPermittedArrowDirections(Arrow::Left | Arrow::Right);
    parent->presentViewController(sheet, false);
    auto* overlay = qobject_cast<PresentationOverlay*>(sheet->view()->parentWidget());
    ASSERT_NE(overlay, nullptr);
    EXPECT_TRUE(overlay->isPopover());
    EXPECT_EQ(overlay->arrowDirection(), Arrow::Left);
    const QRect frame = sheet->view()->geometry();
    EXPECT_GT(frame.left(), 340);
    EXPECT_LE(frame.top(), 330);
    EXPECT_GE(frame.bottom(), 330);
    parent->dismissViewControllerAnimated(false);

    // Anchored to a bar button: it points at the button the toolbar draws for it.
    auto trash = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Trash);
    auto* toolbar = new Toolbar(parent->view());
    toolbar->setItems({trash});
    toolbar->setGeometry(0, 718, 1024, 50);
    toolbar->show();
    sheet = AlertController::alertControllerWithTitle(QString(), QStringLiteral("Gone for good."),
                                                      AlertController::Style::ActionSheet);
    sheet->addAction(AlertAction::actionWithTitle(QStringLiteral("Delete from Vellora"),
                                                  AlertAction::Style::Destructive));
    sheet->popoverPresentationController()->setBarButtonItem(trash);
    parent->presentViewController(sheet, false);
    overlay = qobject_cast<PresentationOverlay*>(sheet->view()->parentWidget());
    EXPECT_EQ(overlay->arrowDirection(), Arrow::Down);
    EXPECT_LT(sheet->view()->geometry().bottom(), 718);
}

}  // namespace
