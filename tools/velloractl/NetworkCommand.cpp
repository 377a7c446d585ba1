#include "NetworkCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

int NetworkCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 1, &status)) {
        return status;
    }
    const QString value = arguments.positional().value(0);
    if (!ServiceSettings::isValidNetwork(value)) {
        return context.usageError(value.isEmpty()
                                      ? QStringLiteral("network needs none, wifi, cellular or auto")
                                      : QStringLiteral("unknown network state \"") + value +
                                            QLatin1Char('"'));
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    ServiceSettings settings = context.store().readServiceSettings();
    settings.network = value;
    if (std::optional<Error> error = context.store().writeServiceSettings(settings)) {
        return context.fail(QStringLiteral("can't set the network state"), *error);
    }
    context.print(QStringLiteral("Network: ") + value);
    return 0;
}

}  // namespace vl
