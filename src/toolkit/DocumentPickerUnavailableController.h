#pragma once

#include "toolkit/ViewController.h"

namespace vl {

// The placeholder shown instead of the browser while the drive is unavailable (no account signed
// in, or the drive switched off): an icon, a title and a line telling the user what to do. Made
// by name through ViewControllerRegistry.
class DocumentPickerUnavailableController : public ViewController {
    Q_OBJECT
public:
    static inline const QString ClassName = QStringLiteral("DocumentPickerUnavailableController");

    DocumentPickerUnavailableController();

protected:
    void loadView() override;
};

}  // namespace vl
