#include "ThrottleCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

int ThrottleCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 1, &status)) {
        return status;
    }
    const QString value = arguments.positional().value(0);
    bool ok = false;
    const quint64 bytes = value.toULongLong(&ok);
    if (!ok) {
        return context.usageError(
            value.isEmpty() ? QStringLiteral("throttle needs BYTES-PER-SECOND")
                            : QStringLiteral("not a byte count: \"") + value + QLatin1Char('"'));
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    ServiceSettings settings = context.store().readServiceSettings();
    settings.throttleBytesPerSecond = bytes;
    if (std::optional<Error> error = context.store().writeServiceSettings(settings)) {
        return context.fail(QStringLiteral("can't set throttling"), *error);
    }
    context.print(bytes ? QStringLiteral("Downloads limited to %1 bytes per second").arg(bytes)
                        : QStringLiteral("Download throttling off"));
    return 0;
}

}  // namespace vl
