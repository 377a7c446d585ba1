#include "app/LaunchSource.h"

namespace vl {

bool LaunchSource::isTrusted(const std::optional<QString>& identifier) {
    return identifier && (*identifier == HomeShell || *identifier == Drillbot);
}

std::optional<QString> LaunchSource::fromArguments(const QStringList& arguments) {
    for (const QString& argument : arguments) {
        if (!argument.startsWith(QLatin1Char('-'))) {
            break;
        }
        if (argument.startsWith(ArgumentPrefix)) {
            const QString identifier = argument.mid(ArgumentPrefix.size());
            return identifier.isEmpty() ? std::nullopt : std::optional<QString>(identifier);
        }
    }
    return std::nullopt;
}

std::optional<QString> LaunchSource::urlFromArguments(const QStringList& arguments) {
    for (const QString& argument : arguments) {
        if (!argument.startsWith(QLatin1Char('-'))) {
            return argument;
        }
    }
    return std::nullopt;
}

}  // namespace vl
