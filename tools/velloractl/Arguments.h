#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// The arguments of one command: options ("--name VALUE", "--name=VALUE", "--flag") are taken out
// by name, and what is left is positional. "--" ends the options.
class Arguments {
public:
    explicit Arguments(QStringList arguments);

    // The value of a valued option; absent when not given. Sets `missingValue` when the option is
    // last with nothing after it.
    std::optional<QString> takeOption(const QString& name, bool* missingValue = nullptr);
    bool takeFlag(const QString& name);
    // The first option nobody took, if any.
    std::optional<QString> unknownOption() const;
    QStringList positional() const;

private:
    QStringList arguments_;
    QStringList afterSeparator_;
};

}  // namespace vl
