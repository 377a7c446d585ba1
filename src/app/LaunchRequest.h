#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace vl {

// What one start of the app asks for: the URL on its command line (none for a plain start) and
// the sender that started it (LaunchSource). A later start hands it to the running instance as
// a small JSON message.
class LaunchRequest {
public:
    LaunchRequest() = default;
    LaunchRequest(std::optional<QString> url, std::optional<QString> sourceApplication)
        : url_(std::move(url)), sourceApplication_(std::move(sourceApplication)) {}

    // From a command line without the program's name.
    static LaunchRequest fromArguments(const QStringList& arguments);
    // Absent when `message` is not a request.
    static std::optional<LaunchRequest> fromMessage(const QByteArray& message);
    QByteArray message() const;

    const std::optional<QString>& url() const { return url_; }
    const std::optional<QString>& sourceApplication() const { return sourceApplication_; }
    // The options of the launch URL: the sender under LaunchSource::OptionKey, when named.
    QVariantMap options() const;

    bool operator==(const LaunchRequest&) const = default;

private:
    std::optional<QString> url_;
    std::optional<QString> sourceApplication_;
};

}  // namespace vl
