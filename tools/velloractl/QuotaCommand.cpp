#include "QuotaCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

int QuotaCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 1, &status)) {
        return status;
    }
    const QString value = arguments.positional().value(0);
    std::optional<quint64> bytes;
    if (value != QLatin1String("none")) {
        bool ok = false;
        bytes = value.toULongLong(&ok);
        if (!ok) {
            return context.usageError(value.isEmpty() ? QStringLiteral("quota needs BYTES")
                                                      : QStringLiteral("not a byte count: \"") +
                                                            value + QLatin1Char('"'));
        }
    }
    Error readError;
    std::optional<AccountRecord> account = context.store().readAccount(&readError);
    if (!account) {
        return readError.code() ? context.fail(QStringLiteral("can't read the account"), readError)
                                : context.fail(QStringLiteral("not signed in"));
    }
    account->freeBytes = bytes;
    if (std::optional<Error> error = context.store().writeAccount(*account)) {
        return context.fail(QStringLiteral("can't set the quota"), *error);
    }
    context.print(bytes ? QStringLiteral("Free space: %1 bytes").arg(*bytes)
                        : QStringLiteral("Free space: unknown (the query fails)"));
    return 0;
}

}  // namespace vl
