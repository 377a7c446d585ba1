#include "drive/store/AccountRecord.h"

#include "drive/store/RecordFile.h"

#include <QJsonObject>
#include <QRandomGenerator>

namespace vl {

namespace {

// 2^64, the first whole number a quint64 cannot hold; converting one at or past it is undefined.
constexpr double kUnsignedLimit = 18446744073709551616.0;

}  // namespace

std::optional<AccountRecord> AccountRecord::read(const QString& path, Error* error) {
    bool missing = false;
    Error readError;
    const std::optional<QJsonObject> object = RecordFile::readObject(path, &readError, &missing);
    if (!object) {
        if (!missing && error) {
            *error = readError;
        }
        return std::nullopt;
    }
    const QJsonValue identity = object->value(QLatin1String("identity"));
    const QByteArray hex = identity.toString().toLatin1();
    if (!identity.isString() || hex.isEmpty() || hex.size() % 2 != 0 ||
        QByteArray::fromHex(hex).toHex() != hex.toLower()) {
        if (error) {
            *error = RecordFile::corruptFileError(path, QStringLiteral("no valid identity"));
        }
        return std::nullopt;
    }
    AccountRecord record;
    record.account = object->value(QLatin1String("account")).toString();
    record.identity = QString::fromLatin1(hex.toLower());
    const QJsonValue freeBytes = object->value(QLatin1String("freeBytes"));
    if (freeBytes.isDouble() && freeBytes.toDouble() >= 0 &&
        freeBytes.toDouble() < kUnsignedLimit) {
        record.freeBytes = static_cast<quint64>(freeBytes.toDouble());
    }
    return record;
}

std::optional<Error> AccountRecord::write(const QString& path) const {
    QJsonObject object;
    object.insert(QLatin1String("account"), account);
    object.insert(QLatin1String("identity"), identity);
    if (freeBytes) {
        object.insert(QLatin1String("freeBytes"), static_cast<double>(*freeBytes));
    }
    return RecordFile::writeObject(path, object);
}

QString AccountRecord::makeIdentity() {
    QByteArray bytes(16, Qt::Uninitialized);
    QRandomGenerator::system()->generate(bytes.begin(), bytes.end());
    return QString::fromLatin1(bytes.toHex());
}

}  // namespace vl
