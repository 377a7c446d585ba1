#include "toolkit/TextField.h"

#include "toolkit/TextFieldDelegate.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QKeyEvent>

namespace vl {

TextField::TextField(QWidget* parent) : QLineEdit(parent) {
    connect(this, &QLineEdit::textEdited, this, &TextField::editingChanged);
    connect(this, &QLineEdit::textChanged, this, &TextField::updateClearButton);
    updateHints();
}

void TextField::setClearButtonShownWhileEditing(bool shown) {
    clearButtonWanted_ = shown;
    if (!shown) {
        setClearButtonEnabled(false);
    }
    updateClearButton();
}

void TextField::updateClearButton() {
    if (clearButtonWanted_ && !isClearButtonEnabled() && (hasFocus() || !text().isEmpty())) {
        setClearButtonEnabled(true);
    }
}

void TextField::focusInEvent(QFocusEvent* event) {
    updateClearButton();
    QLineEdit::focusInEvent(event);
}

void TextField::setReturnKeyType(ReturnKeyType type) {
    returnKeyType_ = type;
    if (hasFocus()) {
        QGuiApplication::inputMethod()->update(Qt::ImEnterKeyType);
    }
}

void TextField::setAutocapitalizationType(AutocapitalizationType type) {
    autocapitalization_ = type;
    updateHints();
}

void TextField::setAutocorrectionType(AutocorrectionType type) {
    autocorrection_ = type;
    updateHints();
}

void TextField::updateHints() {
    Qt::InputMethodHints hints = inputMethodHints();
    hints.setFlag(Qt::ImhNoAutoUppercase, autocapitalization_ == AutocapitalizationType::None);
    hints.setFlag(Qt::ImhUppercaseOnly,
                  autocapitalization_ == AutocapitalizationType::AllCharacters);
    hints.setFlag(Qt::ImhNoPredictiveText, autocorrection_ == AutocorrectionType::No);
    setInputMethodHints(hints);
}

bool TextField::isReturnKeyEnabled() const {
    return !enablesReturnKeyAutomatically_ || !text().isEmpty();
}

bool TextField::pressReturnKey() {
    if (!isReturnKeyEnabled()) {
        return false;
    }
    if (std::shared_ptr<TextFieldDelegate> owner = delegate_.lock()) {
        return owner->textFieldShouldReturn(this);
    }
    emit returnPressed();
    return true;
}

void TextField::endEditing() {
    clearFocus();
}

QVariant TextField::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (query == Qt::ImEnterKeyType) {
        switch (returnKeyType_) {
            case ReturnKeyType::Default:
                return Qt::EnterKeyDefault;
            case ReturnKeyType::Go:
                return Qt::EnterKeyGo;
            case ReturnKeyType::Next:
                return Qt::EnterKeyNext;
            case ReturnKeyType::Search:
                return Qt::EnterKeySearch;
            case ReturnKeyType::Send:
                return Qt::EnterKeySend;
            case ReturnKeyType::Done:
                return Qt::EnterKeyDone;
        }
    }
    return QLineEdit::inputMethodQuery(query);
}

void TextField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // The field answers Return itself, so that it never reaches a default button behind it.
        pressReturnKey();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

}  // namespace vl
