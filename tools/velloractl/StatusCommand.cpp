#include "StatusCommand.h"

#include "Arguments.h"
#include "TagDictionary.h"
#include "ToolContext.h"
#include "drive/network/LinkStateReader.h"
#include "drive/network/NetworkStateSource.h"

#include <QDirIterator>
#include <QFileInfo>

namespace vl {

namespace {

QString describeFlags(ReachabilityMonitor::Flags flags) {
    if (!(flags & ReachabilityMonitor::Reachable)) {
        return QStringLiteral("not connected");
    }
    return (flags & ReachabilityMonitor::IsWWAN) ? QStringLiteral("cellular")
                                                 : QStringLiteral("Wi-Fi or wired");
}

}  // namespace

int StatusCommand::run(ToolContext& context, Arguments& arguments) {
    int status = 0;
    if (!context.expectNothingMore(arguments, 0, &status)) {
        return status;
    }
    DriveStore& store = context.store();
    context.print(QStringLiteral("Home: ") + context.home().rootPath());
    if (!QFileInfo(context.home().driveDir()).isDir()) {
        context.print(QStringLiteral("No drive yet (velloractl seed-demo makes one)"));
    }

    Error accountError;
    const std::optional<AccountRecord> account = store.readAccount(&accountError);
    if (account) {
        context.print(
            QStringLiteral("Account: %1 (identity %2)").arg(account->account, account->identity));
        context.print(account->freeBytes
                          ? QStringLiteral("Free space: %1 bytes").arg(*account->freeBytes)
                          : QStringLiteral("Free space: unknown (the query fails)"));
    } else if (accountError.code()) {
        context.print(QStringLiteral("Account: unreadable (") +
                      ToolContext::describe(accountError) + QLatin1Char(')'));
    } else {
        context.print(QStringLiteral("Account: signed out"));
    }

    const ServiceSettings settings = store.readServiceSettings();
    if (NetworkStateSource::overrideFlags(settings.network)) {
        context.print(QStringLiteral("Network: ") + settings.network);
    } else {
        context.print(QStringLiteral("Network: auto (the machine's links: %1)")
                          .arg(describeFlags(LinkStateReader().currentFlags())));
    }
    context.print(
        settings.throttleBytesPerSecond
            ? QStringLiteral("Throttle: %1 bytes per second").arg(settings.throttleBytesPerSecond)
            : QStringLiteral("Throttle: off"));

    const QList<ContainerRecord> containers = store.containerRecords();
    context.print(QStringLiteral("Containers: %1").arg(containers.size()));
    for (const ContainerRecord& record : containers) {
        QStringList types;
        for (const CloudContainer::DocumentType& type : record.documentTypes) {
            types += type.contentTypes;
        }
        context.print(
            QStringLiteral("  %1 \"%2\"%3 folder \"%4\" levels %5 types %6")
                .arg(record.identifier, record.localizedName,
                     record.isDefault ? QStringLiteral(" (default)") : QString(), record.folder,
                     record.folderLevels.value_or(QStringLiteral("-")),
                     types.isEmpty() ? QStringLiteral("-") : types.join(QLatin1Char(','))));
    }

    qint64 local = 0;
    qint64 cloudOnly = 0;
    qint64 folders = 0;
    qint64 references = 0;
    quint64 cloudOnlyBytes = 0;
    QDirIterator it(context.home().driveDir(),
                    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (DriveHome::isPlaceholderFileName(info.fileName())) {
            ++cloudOnly;
            Error error;
            if (auto record = store.readPlaceholder(Url::fromPath(info.filePath()), &error)) {
                cloudOnlyBytes += record->size;
            }
        } else if (info.isDir()) {
            ++folders;
        } else if (info.suffix() == DriveHome::ReferenceExtension) {
            ++references;
        } else {
            ++local;
        }
    }
    context.print(QStringLiteral("Items: %1 local, %2 cloud-only (%3 bytes), %4 folders, %5 "
                                 "document references")
                      .arg(local)
                      .arg(cloudOnly)
                      .arg(cloudOnlyBytes)
                      .arg(folders)
                      .arg(references));

    Error kvError;
    const QVariantMap values = store.readKeyValueStore(&kvError);
    if (!values.contains(TagDictionary::StoreKey)) {
        context.print(kvError.code() ? QStringLiteral("Tags: the key-value store is unreadable")
                                     : QStringLiteral("Tags: none"));
    } else if (const auto tags = TagDictionary::fromValue(values.value(TagDictionary::StoreKey))) {
        QStringList names;
        for (const TagDictionary::Tag& tag : *tags) {
            names.append(tag.name + QStringLiteral(" (") + TagDictionary::colourName(tag.colour) +
                         QLatin1Char(')'));
        }
        context.print(QStringLiteral("Tags: ") + names.join(QStringLiteral(", ")));
    } else {
        context.print(QStringLiteral("Tags: a dictionary of another version"));
    }
    return 0;
}

}  // namespace vl
