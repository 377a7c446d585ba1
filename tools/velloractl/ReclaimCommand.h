#pragma once

#include "Command.h"

namespace vl {

// reclaim [BYTES]: plays the device running short of storage.
class ReclaimCommand : public Command {
public:
    QString name() const override { return QStringLiteral("reclaim"); }
    QString synopsis() const override { return QStringLiteral("reclaim [BYTES]"); }
    QString summary() const override {
        return QStringLiteral(
            "Free up space as a device short of storage does: evict downloaded items that are "
            "not pinned, least recently used first, until BYTES are freed (all of them without "
            "BYTES).");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
