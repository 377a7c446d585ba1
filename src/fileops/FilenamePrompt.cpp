#include "fileops/FilenamePrompt.h"

#include "fileops/FileUtils.h"
#include "fileops/SimpleTextViewController.h"
#include "logging/VLLogging.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/TextField.h"

#include <QFontMetricsF>
#include <QLabel>

#include <cmath>

namespace vl {

std::shared_ptr<FilenamePrompt>
FilenamePrompt::newWithTitleMessagePlaceholderFilenameDoneButtonTextCompletion(
    const QString& title, const QString& message, const QString& placeholder,
    const QString& filename, const QString& doneButtonText, Callback completion) {
    return make<FilenamePrompt>(title, message, placeholder, filename, doneButtonText,
                                std::move(completion));
}

FilenamePrompt::~FilenamePrompt() = default;

void FilenamePrompt::initWithTitleMessagePlaceholderFilenameDoneButtonTextCompletion(
    const QString& title, const QString& message, const QString& placeholder,
    const QString& filename, const QString& doneButtonText, Callback completion) {
    origFilename_ = filename;
    validateNewFilenameCallback_ = std::move(completion);
    alert_ =
        AlertController::alertControllerWithTitle(title, message, AlertController::Style::Alert);
    const std::weak_ptr<FilenamePrompt> weakSelf = weak_from_this();
    alert_->addTextFieldWithConfigurationHandler(
        [weakSelf, filename, placeholder](TextField* field) {
            if (!filename.isNull()) {
                field->setText(filename);
            }
            if (!placeholder.isNull()) {
                field->setPlaceholderText(placeholder);
            }
            field->setClearButtonShownWhileEditing(true);
            field->setReturnKeyType(TextField::ReturnKeyType::Done);
            field->setEnablesReturnKeyAutomatically(true);
            field->setAutocapitalizationType(TextField::AutocapitalizationType::Words);
            field->setAutocorrectionType(TextField::AutocorrectionType::No);
            field->setDelegate(weakSelf);
            QObject::connect(field, &TextField::editingChanged, field, [weakSelf, field] {
                if (std::shared_ptr<FilenamePrompt> self = weakSelf.lock()) {
                    self->folderPromptTextFieldChanged(field);
                }
            });
            field->ensurePolished();
            field->setFixedHeight(int(std::ceil(1.2 * QFontMetricsF(field->font()).lineSpacing())));
        });
    addCancelAction({});
    addDefaultAction(doneButtonText);
    errMsgViewController_ = std::make_shared<SimpleTextViewController>();
    alert_->setContentViewController(errMsgViewController_);
    updateErrorMessage(QStringLiteral(""));
}

void FilenamePrompt::addCancelAction(std::function<void()> handler) {
    alert_->addAction(AlertAction::actionWithTitle(
        Strings::localized("Cancel"), AlertAction::Style::Default,
        [handler = std::move(handler)](const std::shared_ptr<AlertAction>&) {
            if (handler) {
                handler();
            }
        }));
}

void FilenamePrompt::addDefaultAction(const QString& doneButtonText) {
    const QString title = doneButtonText.isEmpty() ? Strings::localized("Done") : doneButtonText;
    const std::weak_ptr<FilenamePrompt> weakSelf = weak_from_this();
    defaultAction_ =
        AlertAction::actionWithTitle(title, AlertAction::Style::Default, {}, [weakSelf] {
            const std::shared_ptr<FilenamePrompt> self = weakSelf.lock();
            return self && self->handleDoneAction();
        });
    if (origFilename_.isEmpty()) {
        defaultAction_->setEnabled(false);
    }
    alert_->addAction(defaultAction_);
    alert_->setPreferredAction(defaultAction_);
}

void FilenamePrompt::folderPromptTextFieldChanged(TextField* field) {
    if (!defaultAction_ || !field) {
        return;
    }
    const QString name = FileUtils::trimmedFilename(field->text());
    const bool valid = FileUtils::isValidFilename(name);
    if (valid) {
        updateErrorMessage(QString());
    } else if (!name.isEmpty()) {
        updateErrorMessage(name.startsWith(QLatin1Char('.'))
                               ? Strings::localized("Choose a different name.")
                               : Strings::localized("Character not allowed in filename"));
    } else {
        updateErrorMessage(QStringLiteral(""));
    }
    defaultAction_->setEnabled(valid);
}

bool FilenamePrompt::handleDoneAction() {
    const QList<TextField*> fields = alert_->textFields();
    if (fields.isEmpty()) {
        return false;
    }
    const QString name = FileUtils::trimmedFilename(fields.first()->text());
    if (!FileUtils::isValidFilename(name)) {
        return false;
    }
    bool done = false;
    const QString message =
        validateNewFilenameCallback_ ? validateNewFilenameCallback_(name, &done) : QString();
    if (!done) {
        updateErrorMessage(message);
    }
    return done;
}

bool FilenamePrompt::textFieldShouldReturn(TextField* field) {
    VLLOG(7, "textFieldShouldReturn");
    const bool done = handleDoneAction();
    if (done) {
        field->endEditing();
        alert_->dismissViewControllerAnimated(true);
    }
    return done;
}

void FilenamePrompt::updateErrorMessage(const QString& message) {
    errMsgViewController_->messageLabel()->setText(message);
    errMsgViewController_->view()->setVisible(!message.isEmpty());
}

}  // namespace vl
