#include "drive/store/ServiceSettings.h"

#include "drive/store/RecordFile.h"

#include <QJsonObject>

namespace vl {

namespace {

// 2^64, the first whole number a quint64 cannot hold; converting one at or past it is undefined.
constexpr double kUnsignedLimit = 18446744073709551616.0;

}  // namespace

ServiceSettings ServiceSettings::read(const QString& path, Error* error) {
    ServiceSettings settings;
    bool missing = false;
    Error readError;
    const std::optional<QJsonObject> object = RecordFile::readObject(path, &readError, &missing);
    if (!object) {
        if (!missing && error) {
            *error = readError;
        }
        return settings;
    }
    const QString network = object->value(QLatin1String("network")).toString();
    if (isValidNetwork(network)) {
        settings.network = network;
    }
    const double throttle = object->value(QLatin1String("throttleBytesPerSecond")).toDouble();
    if (throttle > 0 && throttle < kUnsignedLimit) {
        settings.throttleBytesPerSecond = static_cast<quint64>(throttle);
    }
    return settings;
}

std::optional<Error> ServiceSettings::write(const QString& path) const {
    QJsonObject object;
    object.insert(QLatin1String("network"), network);
    object.insert(QLatin1String("throttleBytesPerSecond"),
                  static_cast<double>(throttleBytesPerSecond));
    return RecordFile::writeObject(path, object);
}

bool ServiceSettings::isValidNetwork(const QString& value) {
    return value == NetworkAuto || value == NetworkNone || value == NetworkWifi ||
           value == NetworkCellular;
}

}  // namespace vl
