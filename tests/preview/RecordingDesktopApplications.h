#pragma once

#include "platform/app/DesktopApplications.h"

#include <QMap>

namespace vl::test {

// The desktop's applications as a test sets them: one default application per content type, and
// every launch remembered instead of started.
class RecordingDesktopApplications : public DesktopApplications {
public:
    struct Launch {
        QString application;
        QList<Url> urls;
    };

    void setDefault(const QString& contentType, const QString& identifier, const QString& name,
                    bool opensInPlace) {
        ApplicationRecord record;
        record.itemName = identifier + QStringLiteral(".desktop");
        record.bundleIdentifier = identifier;
        record.localizedName = name;
        record.localizedShortName = name;
        record.installed = true;
        record.supportsOpenInPlace = opensInPlace;
        defaults_[contentType] = record;
    }
    const QList<Launch>& launches() const { return launches_; }

    std::optional<ApplicationRecord> defaultApplicationForType(
        const QString& contentType) const override {
        if (!defaults_.contains(contentType)) {
            return std::nullopt;
        }
        return defaults_.value(contentType);
    }
    QList<ApplicationRecord> applicationsForType(const QString& contentType) const override {
        if (!defaults_.contains(contentType)) {
            return {};
        }
        return {defaults_.value(contentType)};
    }
    void openURLs(const ApplicationRecord& application, const QList<Url>& urls,
                  OpenCompletion completion) override {
        launches_.append({application.bundleIdentifier, urls});
        if (completion) {
            completion(std::nullopt);
        }
    }

private:
    QMap<QString, ApplicationRecord> defaults_;
    QList<Launch> launches_;
};

}  // namespace vl::test
