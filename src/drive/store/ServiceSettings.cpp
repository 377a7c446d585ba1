#include "drive/store/ServiceSettings.h"

#include "drive/store/RecordFile.h"

#include <QJsonObject>

namespace vl {

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
    if (throttle > 0) {
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
