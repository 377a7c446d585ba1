#include "StatusCommand.h"

#include "Arguments.h"
#include "TagDictionary.h"
#include "ToolContext.h"
#include "drive/network/LinkStateReader.h"
#include "drive/network/NetworkStateSource.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace vl {

namespace {

QString describeFlags(ReachabilityMonitor::Flags flags) {
    if (!(flags & ReachabilityMonitor::Reachable)) {
        return QStringLiteral("not connected");
    }
    return (flags & ReachabilityMonitor::IsWWAN) ? QStringLiteral("cellular")
                                                 : QStringLiteral("Wi-Fi or wired");
}

// The names of the items in a folder, a cloud-only item by its own name rather than its
// placeholder's.
QSet<QString> itemNames(const QString& folder) {
    QSet<QString> names;
    for (const QString& name : QDir(folder).entryList(QDir::AllEntries | QDir::Hidden |
                                                      QDir::System | QDir::NoDotAndDotDot)) {
        names.insert(DriveHome::logicalNameOfPlaceholder(name).value_or(name));
    }
    return names;
}

// One line per item of the drive and of the cloud copy, by drive-relative path: where its
// content is. A folder's items follow it.
void listItems(ToolContext& context, const QString& relative) {
    const DriveHome& home = context.home();
    const QString drive = relative.isEmpty() ? home.driveDir() : home.drivePathFor(relative);
    const QString cloud = relative.isEmpty() ? home.cloudDir() : home.cloudPathFor(relative);
    QStringList names = (itemNames(drive) + itemNames(cloud)).values();
    std::sort(names.begin(), names.end());
    for (const QString& name : names) {
        const QString path = relative.isEmpty() ? name : relative + QLatin1Char('/') + name;
        const QFileInfo local(drive + QLatin1Char('/') + name);
        const bool placeholder =
            QFileInfo::exists(DriveHome::placeholderPathFor(drive + QLatin1Char('/') + name));
        const bool inCloud = QFileInfo::exists(cloud + QLatin1Char('/') + name) ||
                             QFileInfo(cloud + QLatin1Char('/') + name).isSymLink();
        const bool here = local.exists() || local.isSymLink();
        QString where;
        if (here) {
            where = inCloud ? QStringLiteral("here and in the cloud")
                            : QStringLiteral("here only, not in the cloud");
        } else if (placeholder) {
            where = inCloud ? QStringLiteral("cloud-only")
                            : QStringLiteral("a placeholder with no cloud copy");
        } else {
            where = QStringLiteral("in the cloud only, no placeholder");
        }
        const bool folder = here ? local.isDir() && !local.isSymLink()
                                 : QFileInfo(cloud + QLatin1Char('/') + name).isDir();
        if (context.store().isPinned(context.itemURL(path))) {
            where += QStringLiteral(", pinned");
        }
        context.print(QStringLiteral("  %1%2: %3")
                          .arg(path, folder ? QStringLiteral("/") : QString(), where));
        if (folder && (here || !placeholder)) {
            listItems(context, path);
        }
    }
}

}  // namespace

int StatusCommand::run(ToolContext& context, Arguments& arguments) {
    const bool items = arguments.takeFlag(QStringLiteral("items"));
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
        if (!record.isDefault) {
            // What deleting an app library leaves: its folders, empty here and in the cloud.
            context.print(QStringLiteral("    contents: %1 items here, %2 in the cloud")
                              .arg(itemNames(context.home().drivePathFor(record.folder)).size())
                              .arg(itemNames(context.home().cloudPathFor(record.folder)).size()));
        }
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

    // Pinned items are kept on the device: space reclaiming passes them over, and the running
    // service downloads what arrives for them.
    const QStringList pinned = store.pinnedItems();
    context.print(pinned.isEmpty() ? QStringLiteral("Pinned: none")
                                   : QStringLiteral("Pinned: %1").arg(pinned.size()));
    for (const QString& path : pinned) {
        const Url url = context.itemURL(path);
        context.print(QStringLiteral("  %1: %2")
                          .arg(path, store.cloudOnlyItems(url).isEmpty()
                                         ? QStringLiteral("on this device")
                                         : QStringLiteral("not all on this device yet")));
    }

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
    if (items) {
        context.print(QStringLiteral("Items:"));
        listItems(context, QString());
    }
    return 0;
}

}  // namespace vl
