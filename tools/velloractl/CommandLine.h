#pragma once

#include "Command.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace vl {

// The tool's commands and the dispatch of one invocation to them.
class CommandLine {
public:
    CommandLine();
    // The exit status of the invocation (arguments without the program name).
    int run(const QStringList& arguments);
    QString help() const;

private:
    std::vector<std::unique_ptr<Command>> commands_;
};

}  // namespace vl
