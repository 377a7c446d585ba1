#pragma once

#include "platform/files/Url.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace vl {

// The keyed values one view controller saves for the next start and reads back then: URLs and
// integers by key. A value read under the wrong type, or not there, reads as absent (a URL) or
// 0 (an integer), so an archive written by another version can't mislead the reader.
class StateCoder {
public:
    StateCoder() = default;
    explicit StateCoder(QJsonObject values) : values_(std::move(values)) {}

    void setUrl(const QString& key, const Url& url);
    void setInteger(const QString& key, qint64 value);

    std::optional<Url> url(const QString& key) const;
    qint64 integer(const QString& key) const;
    bool contains(const QString& key) const { return values_.contains(key); }
    bool isEmpty() const { return values_.isEmpty(); }

    const QJsonObject& values() const { return values_; }

private:
    QJsonObject values_;
};

}  // namespace vl
