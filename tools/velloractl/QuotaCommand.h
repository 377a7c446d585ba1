#pragma once

#include "Command.h"

namespace vl {

// quota BYTES|none: the free space the account reports; "none" makes the quota operation fail.
class QuotaCommand : public Command {
public:
    QString name() const override { return QStringLiteral("quota"); }
    QString synopsis() const override { return QStringLiteral("quota BYTES|none"); }
    QString summary() const override {
        return QStringLiteral(
            "Set the free space of the account, or make the free-space query fail (none).");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
