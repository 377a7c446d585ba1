#include "ContainerCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

namespace vl {

QString ContainerCommand::summary() const {
    return QStringLiteral(
        "Add an app library with its supported folder levels (absent when not given) and the "
        "content types its app declares (MIME names or abstract types such as public.image); "
        "with --package EXT[,EXT], those types are documents stored as folders named *.EXT.");
}

int ContainerCommand::run(ToolContext& context, Arguments& arguments) {
    bool missing = false;
    const std::optional<QString> name = arguments.takeOption(QStringLiteral("name"), &missing);
    const std::optional<QString> levels = arguments.takeOption(QStringLiteral("levels"), &missing);
    const std::optional<QString> types = arguments.takeOption(QStringLiteral("types"), &missing);
    const std::optional<QString> folder = arguments.takeOption(QStringLiteral("folder"), &missing);
    const std::optional<QString> package =
        arguments.takeOption(QStringLiteral("package"), &missing);
    if (missing) {
        return context.usageError(QStringLiteral("an option is missing its value"));
    }
    int status = 0;
    if (!context.expectNothingMore(arguments, 2, &status)) {
        return status;
    }
    const QStringList positional = arguments.positional();
    if (positional.value(0) != QLatin1String("add")) {
        return context.usageError(positional.isEmpty()
                                      ? QStringLiteral("container needs \"add\"")
                                      : QStringLiteral("unknown container command \"") +
                                            positional.value(0) + QLatin1Char('"'));
    }
    const QString identifier = positional.value(1);
    if (identifier.isEmpty() || identifier.contains(QLatin1Char('/')) ||
        identifier.startsWith(QLatin1Char('.'))) {
        return context.usageError(QStringLiteral("container add needs a valid ID"));
    }
    if (!name || name->trimmed().isEmpty()) {
        return context.usageError(QStringLiteral("container add needs --name NAME"));
    }
    if (levels && *levels != CloudContainer::FolderLevelsNone &&
        *levels != CloudContainer::FolderLevelsOne && *levels != CloudContainer::FolderLevelsAny) {
        return context.usageError(QStringLiteral("--levels must be none, one or any, not \"") +
                                  *levels + QLatin1Char('"'));
    }
    if (package && !types) {
        return context.usageError(QStringLiteral("--package needs --types, the package's types"));
    }
    const QString folderName = folder.value_or(*name);
    if (folderName.isEmpty() || folderName.contains(QLatin1Char('/')) ||
        folderName.startsWith(QLatin1Char('.'))) {
        return context.usageError(QStringLiteral("invalid folder name \"") + folderName +
                                  QLatin1Char('"'));
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    Error lookupError;
    if (context.store().containerRecord(identifier, &lookupError)) {
        return context.fail(QStringLiteral("a container ") + identifier +
                            QStringLiteral(" exists"));
    }

    ContainerRecord record;
    record.identifier = identifier;
    record.localizedName = *name;
    record.folder = folderName;
    record.folderLevels = levels;
    if (types) {
        QStringList contentTypes;
        for (const QString& type : types->split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            contentTypes.append(type.trimmed());
        }
        if (!contentTypes.isEmpty()) {
            CloudContainer::DocumentType type{
                *name + QStringLiteral(" Document"), contentTypes, false, {}};
            if (package) {
                // The declared type is a document stored as a folder with these extensions.
                type.isPackage = true;
                for (const QString& extension :
                     package->split(QLatin1Char(','), Qt::SkipEmptyParts)) {
                    type.extensions.append(extension.trimmed().toLower());
                }
            }
            record.documentTypes.append(type);
        }
    }
    if (std::optional<Error> error = context.store().addContainer(record)) {
        return context.fail(QStringLiteral("can't add container ") + identifier, *error);
    }
    context.print(QStringLiteral("Added container %1 \"%2\" in folder %3")
                      .arg(identifier, *name, folderName));
    return 0;
}

}  // namespace vl
