#pragma once

#include "Command.h"

namespace vl {

// signout: removes the account; a running app sees its identity go.
class SignoutCommand : public Command {
public:
    QString name() const override { return QStringLiteral("signout"); }
    QString synopsis() const override { return QStringLiteral("signout"); }
    QString summary() const override {
        return QStringLiteral("Sign out: the drive becomes unavailable to the app.");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
