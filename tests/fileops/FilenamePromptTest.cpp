#include "fileops/NewFolderPrompt.h"
#include "fileops/RenamePrompt.h"
#include "fileops/SimpleTextViewController.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/TextField.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>

namespace vl {
namespace {

class FilenamePromptTest : public ::testing::Test {
protected:
    void SetUp() override { Strings::install(); }

    // The prompt presented as a caller presents it; every name the callback got is kept.
    template <typename Prompt>
    void present(std::shared_ptr<Prompt> made) {
        prompt = std::move(made);
        parent->presentViewController(prompt->alert(), false);
        field = prompt->alert()->textFields().value(0);
        ASSERT_NE(field, nullptr);
    }
    FilenamePrompt::Callback recording(QString message = {}) {
        return [this, message](const QString& name, bool* done) {
            received << name;
            *done = message.isNull();
            return message;
        };
    }

    void retype(const QString& text) {
        field->selectAll();
        QKeyEvent erase(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
        QApplication::sendEvent(field, &erase);
        for (QChar c : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
            QApplication::sendEvent(field, &press);
        }
    }
    void pressReturn() {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(field, &press);
    }
    void pressDone() { prompt->alert()->buttonForAction(prompt->defaultAction())->click(); }
    bool doneEnabled() const { return prompt->defaultAction()->isEnabled(); }
    // The red line's text, or nothing while it is hidden.
    QString messageLine() const {
        QWidget* line = prompt->errMsgViewController()->view();
        return line->isVisibleTo(prompt->alert()->view())
                   ? prompt->errMsgViewController()->messageLabel()->text()
                   : QString();
    }
    bool isUp() const { return parent->presentedViewController() == prompt->alert(); }

    VirtualDispatcher::Installation dispatch;
    std::shared_ptr<ViewController> parent = std::make_shared<ViewController>();
    std::shared_ptr<FilenamePrompt> prompt;
    TextField* field = nullptr;
    QStringList received;
};

TEST_F(FilenamePromptTest, NewFolderPromptStartsEmptyAndDisabledAndTypingChecksTheName) {
    present(NewFolderPrompt::newWithTitleDoneButtonTextCompletion(
        QStringLiteral("New Folder"), QStringLiteral("Create"), recording()));
    EXPECT_EQ(prompt->alert()->message(), Strings::localized("Enter a name for this folder."));
    EXPECT_EQ(field->text(), QString());
    EXPECT_EQ(field->placeholderText(), Strings::localized("Folder Name"));
    EXPECT_EQ(prompt->defaultAction()->title(), QStringLiteral("Create"));
    EXPECT_EQ(prompt->alert()->actions().first()->title(), Strings::localized("Cancel"));
    EXPECT_EQ(prompt->alert()->actions().first()->style(), AlertAction::Style::Default);
    EXPECT_FALSE(doneEnabled());
    EXPECT_EQ(messageLine(), QString());

    retype(QStringLiteral("T"));
    EXPECT_TRUE(doneEnabled());
    retype(QStringLiteral(".x"));
    EXPECT_FALSE(doneEnabled());
    EXPECT_EQ(messageLine(), Strings::localized("Choose a different name."));
    for (const QString& bad : {QStringLiteral("a/b"), QStringLiteral("a:b")}) {
        retype(bad);
        EXPECT_FALSE(doneEnabled());
        EXPECT_EQ(messageLine(), Strings::localized("Character not allowed in filename"));
    }
    field->insert(QStringLiteral("\u0007"));
    EXPECT_EQ(messageLine(), Strings::localized("Character not allowed in filename"));
    retype(QStringLiteral("   "));
    EXPECT_FALSE(doneEnabled());
    EXPECT_EQ(messageLine(), QString()) << "blanks only: an empty, hidden line";
    retype(QStringLiteral("Trips"));
    EXPECT_TRUE(doneEnabled());
    EXPECT_EQ(messageLine(), QString());
}

TEST_F(FilenamePromptTest, RenamePromptStartsFilledInAndDoneHandsOverTheTrimmedName) {
    present(RenamePrompt::newWithFilenameCompletion(QStringLiteral("Report"), recording()));
    EXPECT_EQ(prompt->alert()->title(), Strings::localized("Rename Item"));
    EXPECT_EQ(field->text(), QStringLiteral("Report"));
    EXPECT_EQ(prompt->defaultAction()->title(), Strings::localized("Done"));
    EXPECT_TRUE(doneEnabled()) << "enabled before any typing";

    retype(QStringLiteral("  Summary  "));
    pressDone();
    EXPECT_EQ(received, QStringList{QStringLiteral("Summary")});
    EXPECT_FALSE(isUp());
}

TEST_F(FilenamePromptTest, ARefusalKeepsThePromptOpenWithItsMessageUntilTheNextValidEdit) {
    present(NewFolderPrompt::newWithTitleDoneButtonTextCompletion(
        QStringLiteral("New Folder"), QString(), recording(QStringLiteral("Already there."))));
    EXPECT_EQ(prompt->defaultAction()->title(), Strings::localized("Done"));
    retype(QStringLiteral("Trips"));
    pressDone();
    EXPECT_EQ(received, QStringList{QStringLiteral("Trips")});
    EXPECT_TRUE(isUp());
    EXPECT_EQ(messageLine(), QStringLiteral("Already there."));

    pressReturn();
    EXPECT_EQ(received.size(), 2) << "Return is done too";
    EXPECT_TRUE(isUp());
    retype(QStringLiteral("Trips 2"));
    EXPECT_EQ(messageLine(), QString());
}

TEST_F(FilenamePromptTest, ReturnWithAnInvalidNameChangesNothingAndAValidOneCloses) {
    present(NewFolderPrompt::newWithTitleDoneButtonTextCompletion(QStringLiteral("New Folder"),
                                                                  QString(), recording()));
    retype(QStringLiteral(".hidden"));
    pressReturn();
    prompt->alert()->triggerAction(prompt->defaultAction());
    EXPECT_TRUE(received.isEmpty());
    EXPECT_TRUE(isUp());
    EXPECT_EQ(messageLine(), Strings::localized("Choose a different name."));

    retype(QStringLiteral("Visible"));
    pressReturn();
    EXPECT_EQ(received, QStringList{QStringLiteral("Visible")});
    EXPECT_FALSE(isUp());
}

}  // namespace
}  // namespace vl
