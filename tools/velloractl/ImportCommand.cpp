#include "ImportCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

#include <QFileInfo>

namespace vl {

int ImportCommand::run(ToolContext& context, Arguments& arguments) {
    const bool cloudOnly = arguments.takeFlag(QStringLiteral("cloud-only"));
    int status = 0;
    if (!context.expectNothingMore(arguments, 2, &status)) {
        return status;
    }
    const QStringList positional = arguments.positional();
    if (positional.size() < 2) {
        return context.usageError(QStringLiteral("import needs PATH and DEST"));
    }
    const QFileInfo source(positional[0]);
    if (!source.exists()) {
        return context.fail(QStringLiteral("no such file or folder: ") + positional[0]);
    }
    QString problem;
    std::optional<QString> destination = context.driveRelativePath(positional[1], &problem);
    if (!destination) {
        return context.usageError(problem);
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    if (destination->isEmpty() || positional[1].endsWith(QLatin1Char('/')) ||
        context.isFolder(*destination)) {
        *destination = destination->isEmpty() ? source.fileName()
                                              : *destination + QLatin1Char('/') + source.fileName();
    }
    if (context.itemExists(*destination)) {
        return context.fail(QStringLiteral("the drive already has ") + *destination);
    }
    const QString parent = QFileInfo(*destination).path();
    if (parent != QLatin1String(".")) {
        if (std::optional<Error> error = context.makeFolder(parent)) {
            return context.fail(QStringLiteral("can't make folder ") + parent, *error);
        }
    }
    if (std::optional<Error> error =
            context.store().importItem(source.absoluteFilePath(), *destination, cloudOnly)) {
        return context.fail(QStringLiteral("can't import ") + positional[0], *error);
    }
    context.print(QStringLiteral("Imported %1 as %2%3")
                      .arg(positional[0], *destination,
                           cloudOnly ? QStringLiteral(" (cloud-only)") : QString()));
    return 0;
}

}  // namespace vl
