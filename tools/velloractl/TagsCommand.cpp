#include "TagsCommand.h"

#include "Arguments.h"
#include "TagDictionary.h"
#include "ToolContext.h"

#include <limits>

namespace vl {

QString TagsCommand::synopsis() const {
    return QStringLiteral(
        "tags set NAME=COLOUR... [--version N]\n"
        "tags clear\n"
        "tags add DRIVE-PATH TAG...\n"
        "tags remove DRIVE-PATH TAG...");
}

QString TagsCommand::summary() const {
    return QStringLiteral(
        "Write the tag dictionary (colours: none, grey, green, purple, blue, yellow, red, orange "
        "or an index), remove it, or add and remove tags of an item.");
}

int TagsCommand::run(ToolContext& context, Arguments& arguments) {
    bool missing = false;
    const std::optional<QString> version =
        arguments.takeOption(QStringLiteral("version"), &missing);
    if (missing) {
        return context.usageError(QStringLiteral("--version needs a number"));
    }
    int status = 0;
    if (!context.expectNothingMore(arguments, std::numeric_limits<qsizetype>::max(), &status)) {
        return status;
    }
    QStringList positional = arguments.positional();
    const QString action = positional.isEmpty() ? QString() : positional.takeFirst();
    if (version && action != QLatin1String("set")) {
        return context.usageError(QStringLiteral("--version goes with tags set"));
    }
    if (action == QLatin1String("set")) {
        if (positional.isEmpty()) {
            return context.usageError(QStringLiteral("tags set needs NAME=COLOUR"));
        }
        // --version lets demos and tests store a dictionary of another format version.
        std::optional<uint> number;
        if (version) {
            bool ok = false;
            number = version->toUInt(&ok);
            if (!ok) {
                return context.usageError(QStringLiteral("--version needs a number"));
            }
        }
        return set(context, positional, number);
    }
    if (action == QLatin1String("clear")) {
        if (!positional.isEmpty()) {
            return context.usageError(QStringLiteral("tags clear takes no arguments"));
        }
        return clear(context);
    }
    if (action == QLatin1String("add") || action == QLatin1String("remove")) {
        return tagItem(context, positional, action == QLatin1String("add"));
    }
    return context.usageError(
        action.isEmpty() ? QStringLiteral("tags needs set, clear, add or remove")
                         : QStringLiteral("unknown tags command \"") + action + QLatin1Char('"'));
}

int TagsCommand::set(ToolContext& context, const QStringList& assignments,
                     std::optional<uint> version) {
    QList<TagDictionary::Tag> tags;
    for (const QString& assignment : assignments) {
        const qsizetype equals = assignment.lastIndexOf(QLatin1Char('='));
        const QString name = equals < 0 ? assignment : assignment.left(equals);
        const std::optional<quint32> colour =
            equals < 0 ? std::optional<quint32>(0)
                       : TagDictionary::colourIndex(assignment.mid(equals + 1));
        if (name.isEmpty()) {
            return context.usageError(QStringLiteral("a tag needs a name: \"") + assignment +
                                      QLatin1Char('"'));
        }
        if (!colour) {
            return context.usageError(QStringLiteral("unknown colour in \"") + assignment +
                                      QLatin1Char('"'));
        }
        tags.append({name, *colour});
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    Error readError;
    QVariantMap values = context.store().readKeyValueStore(&readError);
    if (readError.code()) {
        return context.fail(QStringLiteral("can't read the key-value store"), readError);
    }
    QVariantMap dictionary = TagDictionary::toValue(tags);
    if (version) {
        dictionary.insert(TagDictionary::VersionKey, *version);
    }
    values.insert(TagDictionary::StoreKey, dictionary);
    if (std::optional<Error> error = context.store().writeKeyValueStore(values)) {
        return context.fail(QStringLiteral("can't write the tag dictionary"), *error);
    }
    context.print(QStringLiteral("Tag dictionary: %1 tags").arg(tags.size()));
    return 0;
}

int TagsCommand::clear(ToolContext& context) {
    Error readError;
    QVariantMap values = context.store().readKeyValueStore(&readError);
    if (readError.code()) {
        return context.fail(QStringLiteral("can't read the key-value store"), readError);
    }
    if (values.remove(TagDictionary::StoreKey) == 0) {
        context.print(QStringLiteral("No tag dictionary"));
        return 0;
    }
    if (std::optional<Error> error = context.store().writeKeyValueStore(values)) {
        return context.fail(QStringLiteral("can't remove the tag dictionary"), *error);
    }
    context.print(QStringLiteral("Tag dictionary removed"));
    return 0;
}

int TagsCommand::tagItem(ToolContext& context, const QStringList& arguments, bool add) {
    if (arguments.size() < 2) {
        return context.usageError(add ? QStringLiteral("tags add needs DRIVE-PATH and TAG")
                                      : QStringLiteral("tags remove needs DRIVE-PATH and TAG"));
    }
    QString problem;
    const std::optional<QString> path = context.driveRelativePath(arguments[0], &problem);
    if (!path) {
        return context.usageError(problem);
    }
    if (path->isEmpty() || !context.itemExists(*path)) {
        return context.fail(QStringLiteral("no such item in the drive: ") + arguments[0]);
    }
    const Url url = context.itemURL(*path);
    Error readError;
    QStringList tags = context.store().tags(url, &readError).value_or(QStringList());
    for (const QString& tag : arguments.mid(1)) {
        if (tag.contains(QLatin1Char(','))) {
            return context.usageError(QStringLiteral("a tag can't contain \",\": ") + tag);
        }
        if (add && !tags.contains(tag)) {
            tags.append(tag);
        } else if (!add) {
            tags.removeAll(tag);
        }
    }
    if (std::optional<Error> error = context.store().setTags(url, tags)) {
        return context.fail(QStringLiteral("can't tag ") + *path, *error);
    }
    context.print(*path + QStringLiteral(": ") +
                  (tags.isEmpty() ? QStringLiteral("no tags") : tags.join(QStringLiteral(", "))));
    return 0;
}

}  // namespace vl
