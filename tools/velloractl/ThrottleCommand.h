#pragma once

#include "Command.h"

namespace vl {

// throttle BYTES-PER-SECOND: the download bandwidth of the service; 0 turns throttling off.
class ThrottleCommand : public Command {
public:
    QString name() const override { return QStringLiteral("throttle"); }
    QString synopsis() const override { return QStringLiteral("throttle BYTES-PER-SECOND"); }
    QString summary() const override {
        return QStringLiteral("Limit the download speed (0: no limit).");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
