#include "Arguments.h"

namespace vl {

Arguments::Arguments(QStringList arguments) {
    const qsizetype separator = arguments.indexOf(QStringLiteral("--"));
    if (separator >= 0) {
        afterSeparator_ = arguments.mid(separator + 1);
        arguments = arguments.mid(0, separator);
    }
    arguments_ = std::move(arguments);
}

std::optional<QString> Arguments::takeOption(const QString& name, bool* missingValue) {
    const QString flag = QStringLiteral("--") + name;
    const QString prefix = flag + QLatin1Char('=');
    for (qsizetype i = 0; i < arguments_.size(); ++i) {
        if (arguments_[i].startsWith(prefix)) {
            const QString value = arguments_[i].mid(prefix.size());
            arguments_.removeAt(i);
            return value;
        }
        if (arguments_[i] == flag) {
            if (i + 1 >= arguments_.size()) {
                if (missingValue) {
                    *missingValue = true;
                }
                arguments_.removeAt(i);
                return std::nullopt;
            }
            const QString value = arguments_[i + 1];
            arguments_.remove(i, 2);
            return value;
        }
    }
    return std::nullopt;
}

bool Arguments::takeFlag(const QString& name) {
    return arguments_.removeAll(QStringLiteral("--") + name) > 0;
}

std::optional<QString> Arguments::unknownOption() const {
    for (const QString& argument : arguments_) {
        if (argument.startsWith(QLatin1String("--")) && argument.size() > 2) {
            return argument;
        }
    }
    return std::nullopt;
}

QStringList Arguments::positional() const {
    QStringList result;
    for (const QString& argument : arguments_) {
        if (!(argument.startsWith(QLatin1String("--")) && argument.size() > 2)) {
            result.append(argument);
        }
    }
    return result + afterSeparator_;
}

}  // namespace vl
