#pragma once

#include "Command.h"

namespace vl {

// network none|wifi|cellular|auto: the reachability override that a running app follows.
class NetworkCommand : public Command {
public:
    QString name() const override { return QStringLiteral("network"); }
    QString synopsis() const override { return QStringLiteral("network none|wifi|cellular|auto"); }
    QString summary() const override {
        return QStringLiteral(
            "Play not connected, Wi-Fi or cellular; auto follows the machine's network.");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
