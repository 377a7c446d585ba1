#include "EvictCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

int EvictCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 1, &status)) {
        return status;
    }
    const QStringList positional = arguments.positional();
    if (positional.isEmpty()) {
        return context.usageError(QStringLiteral("evict needs DRIVE-PATH"));
    }
    QString problem;
    const std::optional<QString> path = context.driveRelativePath(positional[0], &problem);
    if (!path) {
        return context.usageError(problem);
    }
    if (path->isEmpty() || !context.itemExists(*path)) {
        return context.fail(QStringLiteral("no such item in the drive: ") + positional[0]);
    }
    const Url url = context.itemURL(*path);
    if (context.store().isCloudOnly(url)) {
        context.print(*path + QStringLiteral(" is already cloud-only"));
        return 0;
    }
    if (std::optional<Error> error = context.store().evict(url)) {
        return context.fail(QStringLiteral("can't evict ") + *path, *error);
    }
    context.print(QStringLiteral("Evicted ") + *path);
    return 0;
}

}  // namespace vl
