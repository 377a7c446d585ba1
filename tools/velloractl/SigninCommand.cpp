#include "SigninCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

QString SigninCommand::summary() const {
    return QStringLiteral(
               "Sign in to ACCOUNT (default: the last account, else %1). Signing in "
               "to another account gives a new identity.")
        .arg(DefaultAccount);
}

int SigninCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 1, &status)) {
        return status;
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    Error readError;
    const std::optional<AccountRecord> current = context.store().readAccount(&readError);
    const QStringList positional = arguments.positional();
    QString name = positional.value(0, current ? current->account : DefaultAccount);
    if (name.trimmed().isEmpty()) {
        return context.usageError(QStringLiteral("the account name is empty"));
    }
    if (current && current->account == name) {
        context.print(QStringLiteral("Already signed in as ") + name);
        return 0;
    }
    AccountRecord account;
    account.account = name;
    account.identity = AccountRecord::makeIdentity();
    account.freeBytes = current ? current->freeBytes : std::optional<quint64>(DefaultFreeBytes);
    if (std::optional<Error> error = context.store().writeAccount(account)) {
        return context.fail(QStringLiteral("can't sign in"), *error);
    }
    context.print(QStringLiteral("Signed in as ") + name);
    return 0;
}

}  // namespace vl
