#pragma once

#include "platform/app/ApplicationRecord.h"
#include "toolkit/ViewController.h"

#include <QList>

#include <functional>

namespace vl {

// The "Open With" row of the share sheet: one tile (icon over name) per application, scrolling
// sideways with the finger when they do not fit.
class OpenWithViewController : public ViewController {
    Q_OBJECT
public:
    using Chosen = std::function<void(const ApplicationRecord& application)>;

    OpenWithViewController(QList<ApplicationRecord> applications, Chosen chosen);

    const QList<ApplicationRecord>& applications() const { return applications_; }

protected:
    void loadView() override;

private:
    QList<ApplicationRecord> applications_;
    Chosen chosen_;
};

}  // namespace vl
