#pragma once

#include "toolkit/TextFieldDelegate.h"

#include <QString>

#include <functional>
#include <memory>

namespace vl {

class AlertAction;
class AlertController;
class SimpleTextViewController;
class TextField;

// The dialog in which a person names an item: a title, a message, one field, Cancel and a done
// button, and a red line under the field saying why a name is refused. The name is checked as it
// is typed; done hands the trimmed, valid name to the callback, which does the work and either
// lets the dialog close or keeps it open with a message. The caller presents `alert()` and keeps
// the prompt alive while it is up: the alert refers to the prompt only weakly. Main thread only.
class FilenamePrompt : public TextFieldDelegate,
                       public std::enable_shared_from_this<FilenamePrompt> {
public:
    // Gets the new name and a done flag that starts at no; sets it to yes to close the dialog,
    // and otherwise returns the message to show (a null string for none).
    using Callback = std::function<QString(const QString& name, bool* done)>;

    // Each text may be null; a null or empty done title means the text of "Done".
    static std::shared_ptr<FilenamePrompt>
    newWithTitleMessagePlaceholderFilenameDoneButtonTextCompletion(
        const QString& title, const QString& message, const QString& placeholder,
        const QString& filename, const QString& doneButtonText, Callback completion);

    ~FilenamePrompt() override;

    const std::shared_ptr<AlertController>& alert() const { return alert_; }
    const std::shared_ptr<SimpleTextViewController>& errMsgViewController() const {
        return errMsgViewController_;
    }
    const std::shared_ptr<AlertAction>& defaultAction() const { return defaultAction_; }
    const QString& origFilename() const { return origFilename_; }
    const Callback& validateNewFilenameCallback() const { return validateNewFilenameCallback_; }

    void addDefaultAction(const QString& doneButtonText);
    void addCancelAction(std::function<void()> handler);
    // Whether the dialog may close: the name is valid and the callback said done.
    bool handleDoneAction();
    // A null or empty message hides the line.
    void updateErrorMessage(const QString& message);
    void folderPromptTextFieldChanged(TextField* field);
    bool textFieldShouldReturn(TextField* field) override;

protected:
    FilenamePrompt() = default;
    void initWithTitleMessagePlaceholderFilenameDoneButtonTextCompletion(
        const QString& title, const QString& message, const QString& placeholder,
        const QString& filename, const QString& doneButtonText, Callback completion);

    template <typename Prompt>
    static std::shared_ptr<Prompt> make(const QString& title, const QString& message,
                                        const QString& placeholder, const QString& filename,
                                        const QString& doneButtonText, Callback completion) {
        std::shared_ptr<Prompt> prompt(new Prompt);
        prompt->initWithTitleMessagePlaceholderFilenameDoneButtonTextCompletion(
            title, message, placeholder, filename, doneButtonText, std::move(completion));
        return prompt;
    }

private:
    std::shared_ptr<AlertController> alert_;
    std::shared_ptr<SimpleTextViewController> errMsgViewController_;
    std::shared_ptr<AlertAction> defaultAction_;
    QString origFilename_;
    Callback validateNewFilenameCallback_;
};

}  // namespace vl
