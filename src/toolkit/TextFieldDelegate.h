#pragma once

namespace vl {

class TextField;

// What a text field asks of its owner. Held weakly by the field.
class TextFieldDelegate {
public:
    virtual ~TextFieldDelegate() = default;
    // Return (or the on-screen keyboard's return key) was pressed; the answer says whether the
    // field did what Return means for it.
    virtual bool textFieldShouldReturn(TextField* field) = 0;
};

}  // namespace vl
