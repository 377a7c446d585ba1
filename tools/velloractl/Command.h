#pragma once

#include <QString>

namespace vl {

class Arguments;
class ToolContext;

// One velloractl command. run() answers the process exit status: 0 on success, 1 when the work
// failed, 2 for a usage error (ToolContext::fail and ToolContext::usageError print the line).
class Command {
public:
    virtual ~Command() = default;
    virtual QString name() const = 0;
    // The synopsis after the tool's name, e.g. "signin [ACCOUNT]" (several lines allowed).
    virtual QString synopsis() const = 0;
    virtual QString summary() const = 0;
    virtual int run(ToolContext& context, Arguments& arguments) = 0;
};

}  // namespace vl
