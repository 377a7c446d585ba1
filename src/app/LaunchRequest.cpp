#include "app/LaunchRequest.h"

#include "app/LaunchSource.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace vl {

namespace {

const QString kUrlKey = QStringLiteral("url");
const QString kSourceKey = QStringLiteral("sourceApplication");

std::optional<QString> stringOf(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional<QString>(value.toString()) : std::nullopt;
}

}  // namespace

LaunchRequest LaunchRequest::fromArguments(const QStringList& arguments) {
    return LaunchRequest(LaunchSource::urlFromArguments(arguments),
                         LaunchSource::fromArguments(arguments));
}

std::optional<LaunchRequest> LaunchRequest::fromMessage(const QByteArray& message) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(message, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return std::nullopt;
    }
    const QJsonObject object = document.object();
    std::optional<QString> source = stringOf(object, kSourceKey);
    if (source && source->isEmpty()) {
        source.reset();
    }
    return LaunchRequest(stringOf(object, kUrlKey), std::move(source));
}

QByteArray LaunchRequest::message() const {
    QJsonObject object;
    if (url_) {
        object.insert(kUrlKey, *url_);
    }
    if (sourceApplication_) {
        object.insert(kSourceKey, *sourceApplication_);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QVariantMap LaunchRequest::options() const {
    QVariantMap options;
    if (sourceApplication_) {
        options.insert(LaunchSource::OptionKey, *sourceApplication_);
    }
    return options;
}

}  // namespace vl
