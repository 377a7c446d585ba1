#pragma once

#include "Command.h"

namespace vl {

// signin [ACCOUNT]: signs in (a new identity token unless already signed in to that account).
class SigninCommand : public Command {
public:
    static inline const QString DefaultAccount = QStringLiteral("demo@vellora.example");
    static constexpr quint64 DefaultFreeBytes = 5'000'000'000;

    QString name() const override { return QStringLiteral("signin"); }
    QString synopsis() const override { return QStringLiteral("signin [ACCOUNT]"); }
    QString summary() const override;
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
