#pragma once

#include "Command.h"

#include <QStringList>

#include <optional>

namespace vl {

// tags set NAME=COLOUR... | tags clear | tags add DRIVE-PATH TAG... | tags remove DRIVE-PATH
// TAG...: the tag dictionary of the key-value store, and the tags of one item.
class TagsCommand : public Command {
public:
    QString name() const override { return QStringLiteral("tags"); }
    QString synopsis() const override;
    QString summary() const override;
    int run(ToolContext& context, Arguments& arguments) override;

private:
    int set(ToolContext& context, const QStringList& specs, std::optional<uint> version);
    int clear(ToolContext& context);
    int tagItem(ToolContext& context, const QStringList& arguments, bool add);
};

}  // namespace vl
