#include "ReclaimCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

int ReclaimCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 1, &status)) {
        return status;
    }
    const QStringList positional = arguments.positional();
    quint64 bytes = 0;
    if (!positional.isEmpty()) {
        bool ok = false;
        bytes = positional[0].toULongLong(&ok);
        if (!ok || bytes == 0) {
            return context.usageError(QStringLiteral("BYTES must be a positive whole number"));
        }
    }
    QList<Url> evicted;
    const quint64 freed = context.store().reclaimSpace(bytes, &evicted);
    for (const Url& url : evicted) {
        context.print(QStringLiteral("Evicted ") +
                      context.store().relativePath(url).value_or(url.path()));
    }
    context.print(QStringLiteral("Freed %1 bytes").arg(freed));
    return 0;
}

}  // namespace vl
