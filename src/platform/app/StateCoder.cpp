#include "platform/app/StateCoder.h"

#include <QJsonValue>

namespace vl {

namespace {

const QString kUrlField = QStringLiteral("url");
const QString kIntegerField = QStringLiteral("integer");

}  // namespace

// Each value is tagged with its type, so that a URL is never read from a number or the reverse.
// Integers are kept as decimal text: a JSON number holds only 53 bits exactly.
void StateCoder::setUrl(const QString& key, const Url& url) {
    values_.insert(key, QJsonObject{{kUrlField, url.path()}});
}

void StateCoder::setInteger(const QString& key, qint64 value) {
    values_.insert(key, QJsonObject{{kIntegerField, QString::number(value)}});
}

std::optional<Url> StateCoder::url(const QString& key) const {
    const QJsonValue path = values_.value(key).toObject().value(kUrlField);
    if (!path.isString() || !path.toString().startsWith(QLatin1Char('/'))) {
        return std::nullopt;
    }
    return Url::fromPath(path.toString());
}

qint64 StateCoder::integer(const QString& key) const {
    bool ok = false;
    const qint64 value =
        values_.value(key).toObject().value(kIntegerField).toString().toLongLong(&ok);
    return ok ? value : 0;
}

}  // namespace vl
