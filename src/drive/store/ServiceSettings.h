#pragma once

#include "platform/files/Error.h"

#include <QString>

#include <optional>

namespace vl {

// <home>/service.json: {"network":"auto|none|wifi|cellular","throttleBytesPerSecond":0}.
// Missing or malformed settings read as the defaults (auto, no throttling).
class ServiceSettings {
public:
    static inline const QString NetworkAuto = QStringLiteral("auto");
    static inline const QString NetworkNone = QStringLiteral("none");
    static inline const QString NetworkWifi = QStringLiteral("wifi");
    static inline const QString NetworkCellular = QStringLiteral("cellular");

    QString network = NetworkAuto;
    quint64 throttleBytesPerSecond = 0;  // 0 = off

    static ServiceSettings read(const QString& path, Error* error = nullptr);
    std::optional<Error> write(const QString& path) const;
    static bool isValidNetwork(const QString& value);
};

}  // namespace vl
