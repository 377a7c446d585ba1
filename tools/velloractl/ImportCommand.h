#pragma once

#include "Command.h"

namespace vl {

// import PATH DEST [--cloud-only]: copies a file or folder into the drive and the cloud copy, or
// into the cloud copy with only a placeholder in the drive.
class ImportCommand : public Command {
public:
    QString name() const override { return QStringLiteral("import"); }
    QString synopsis() const override { return QStringLiteral("import PATH DEST [--cloud-only]"); }
    QString summary() const override {
        return QStringLiteral(
            "Import a file or folder to the drive path DEST (into DEST when it is a folder or "
            "ends with \"/\"); with --cloud-only the drive gets only a placeholder.");
    }
    int run(ToolContext& context, Arguments& arguments) override;
};

}  // namespace vl
