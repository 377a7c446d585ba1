#pragma once

#include "Command.h"

namespace vl {

// status: the account, containers (an app library with its item counts), item counts, network,
// quota, throttling and tags of the home.
class StatusCommand : public Command {
public:
    QString name() const override { return QStringLiteral("status"); }
    QString synopsis() const override { return QStringLiteral("status [--items]"); }
    QString summary() const override {
        return QStringLiteral(
            "Show the account, containers, local and cloud-only items, network, quota, "
            "throttling and tags; with --items, every item of the drive and of the cloud copy and "
            "where its content is.");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
