#pragma once

#include <QLineEdit>

#include <memory>

namespace vl {

class TextFieldDelegate;

// A one-line text field with the traits touch keyboards read: the return key's kind and whether
// it is enabled only while there is text, capitalisation and autocorrection (given to the input
// method as hints), a clear button, and a delegate that decides what Return does.
// `editingChanged` reports edits by the user (typing, pasting, the clear button), not setText.
class TextField : public QLineEdit {
    Q_OBJECT
public:
    enum class ReturnKeyType { Default, Go, Next, Search, Send, Done };
    enum class AutocapitalizationType { None, Words, Sentences, AllCharacters };
    enum class AutocorrectionType { Default, No, Yes };

    explicit TextField(QWidget* parent = nullptr);

    ReturnKeyType returnKeyType() const { return returnKeyType_; }
    void setReturnKeyType(ReturnKeyType type);
    // Return does nothing while the field is empty.
    bool enablesReturnKeyAutomatically() const { return enablesReturnKeyAutomatically_; }
    void setEnablesReturnKeyAutomatically(bool enabled) {
        enablesReturnKeyAutomatically_ = enabled;
    }
    bool isReturnKeyEnabled() const;
    AutocapitalizationType autocapitalizationType() const { return autocapitalization_; }
    void setAutocapitalizationType(AutocapitalizationType type);
    AutocorrectionType autocorrectionType() const { return autocorrection_; }
    void setAutocorrectionType(AutocorrectionType type);
    // The clear button, shown while the field has text. Its icon is only loaded once the field
    // is focused or has text: the style reads it with the image reader, which loads every image
    // format plugin, and a search field at the top of the first screen would pay that at start.
    void setClearButtonShownWhileEditing(bool shown);
    bool clearButtonShownWhileEditing() const { return clearButtonWanted_; }

    std::shared_ptr<TextFieldDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<TextFieldDelegate>& delegate) { delegate_ = delegate; }

    // What the return key does: nothing while it is disabled; otherwise the delegate's answer,
    // or returnPressed() when there is no delegate.
    bool pressReturnKey();
    // Gives up the keyboard focus.
    void endEditing();

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

signals:
    void editingChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    void updateHints();
    void updateClearButton();

    ReturnKeyType returnKeyType_ = ReturnKeyType::Default;
    bool enablesReturnKeyAutomatically_ = false;
    AutocapitalizationType autocapitalization_ = AutocapitalizationType::Sentences;
    AutocorrectionType autocorrection_ = AutocorrectionType::Default;
    std::weak_ptr<TextFieldDelegate> delegate_;
    bool clearButtonWanted_ = false;
};

}  // namespace vl
