#pragma once

#include "platform/app/ApplicationRecord.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace vl {

// The applications installed for the user and which of them opens which content type, as the
// desktop's MIME associations say (desktop entries and mimeapps.list). Content types are MIME
// names. Lookups are synchronous and main-thread only; opening returns at once and starts the
// application elsewhere.
class DesktopApplications {
public:
    using OpenCompletion = std::function<void(std::optional<Error> error)>;

    virtual ~DesktopApplications() = default;

    // The installed implementation; the one over GIO is installed on first use.
    static DesktopApplications& shared();
    static void setShared(std::shared_ptr<DesktopApplications> applications);

    // The user's default application for the type, whatever it needs (a terminal, no arguments);
    // nothing when no application is registered for it.
    virtual std::optional<ApplicationRecord> defaultApplicationForType(
        const QString& contentType) const = 0;
    // Every application registered for the type or one of its parent types, the user's choices
    // first.
    virtual QList<ApplicationRecord> applicationsForType(const QString& contentType) const = 0;
    // Starts the application with the documents. The completion runs on the main queue: with
    // nothing once the application was started, with the reason when it could not be.
    virtual void openURLs(const ApplicationRecord& application, const QList<Url>& urls,
                          OpenCompletion completion) = 0;
};

}  // namespace vl
