#pragma once

#include "Command.h"

namespace vl {

// container add ID --name NAME [--levels none|one|any] [--types T,...] [--folder FOLDER]:
// adds an app library, shown in the drive's root list as the folder FOLDER (default: NAME).
class ContainerCommand : public Command {
public:
    QString name() const override { return QStringLiteral("container"); }
    QString synopsis() const override {
        return QStringLiteral(
            "container add ID --name NAME [--levels none|one|any] [--types T,...] "
            "[--package EXT,...] [--folder FOLDER]");
    }
    QString summary() const override;
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
