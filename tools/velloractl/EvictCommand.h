#pragma once

#include "Command.h"

namespace vl {

// evict DRIVE-PATH: removes the local copy, leaving a cloud-only item.
class EvictCommand : public Command {
public:
    QString name() const override { return QStringLiteral("evict"); }
    QString synopsis() const override { return QStringLiteral("evict DRIVE-PATH"); }
    QString summary() const override {
        return QStringLiteral("Remove the local copy of an item; it stays in the cloud.");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
