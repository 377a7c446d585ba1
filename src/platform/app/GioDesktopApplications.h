#pragma once

#include "platform/app/DesktopApplications.h"

namespace vl {

// The desktop's MIME associations through GIO: its desktop entries under $XDG_DATA_HOME and
// $XDG_DATA_DIRS and the mimeapps.list files of $XDG_CONFIG_HOME and the data folders. GIO reads
// those paths once per process, on its first lookup. Applications start on a global queue, since
// an application activated over D-Bus keeps the caller waiting for its answer.
class GioDesktopApplications : public DesktopApplications {
public:
    std::optional<ApplicationRecord> defaultApplicationForType(
        const QString& contentType) const override;
    QList<ApplicationRecord> applicationsForType(const QString& contentType) const override;
    void openURLs(const ApplicationRecord& application, const QList<Url>& urls,
                  OpenCompletion completion) override;
};

}  // namespace vl
