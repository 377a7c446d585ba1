#include "SignoutCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

int SignoutCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 0, &status)) {
        return status;
    }
    Error readError;
    const bool signedIn = context.store().readAccount(&readError).has_value();
    if (std::optional<Error> error = context.store().removeAccount()) {
        return context.fail(QStringLiteral("can't sign out"), *error);
    }
    context.print(signedIn ? QStringLiteral("Signed out") : QStringLiteral("Not signed in"));
    return 0;
}

}  // namespace vl
