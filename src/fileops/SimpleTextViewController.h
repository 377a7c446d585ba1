#pragma once

#include "toolkit/ViewController.h"

#include <QFont>
#include <QPointer>

class QLabel;

namespace vl {

// The red message line under a filename prompt's field: one label, inset from both sides, as tall
// as the view, which hugs it. The prompt shows the view only while there is a message.
class SimpleTextViewController : public ViewController {
    Q_OBJECT
public:
    static constexpr int labelHorizontalInsets = 16;
    static constexpr int maximumLines = 5;

    QLabel* messageLabel();
    // The footnote text style.
    static QFont messageLabelFont();

protected:
    void loadView() override;

private:
    QPointer<QLabel> messageLabel_;
};

}  // namespace vl
