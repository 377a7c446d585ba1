#include "RemoteCommand.h"

#include "Arguments.h"
#include "ToolContext.h"

#include "drive/integrity/CrashPoint.h"
#include "drive/integrity/HomeLock.h"
#include "drive/integrity/ItemTree.h"
#include "drive/integrity/StagingArea.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>

namespace vl {

namespace {

// The new version of `path` made whole in the staging area: `content` alone, or the current
// content followed by `content`. Nothing at `path` changes; a full disk fails here.
std::optional<QString> stageNewVersion(const QString& homeRoot, const QString& path,
                                       const QByteArray& content, bool append, Error* error) {
    std::optional<QString> staged = StagingArea::newPath(homeRoot, error);
    if (!staged) {
        return std::nullopt;
    }
    const QByteArray native = QFile::encodeName(*staged);
    if (append) {
        if (std::optional<Error> copyError = ItemTree::copy(QFile::encodeName(path), native)) {
            *error = *copyError;
            return std::nullopt;
        }
    }
    QFile file(*staged);
    const QIODevice::OpenMode mode =
        QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::NewOnly);
    if (!file.open(mode) || file.write(content) != content.size() || !file.flush()) {
        *error = Error::posixError(file.error() == QFileDevice::ResourceError ? ENOSPC : EIO, path);
        file.close();
        ItemTree::remove(native);
        return std::nullopt;
    }
    file.close();
    CrashPoint::reach();
    return staged;
}

std::optional<Error> install(const QString& staged, const QString& path) {
    if (::rename(QFile::encodeName(staged).constData(), QFile::encodeName(path).constData()) != 0) {
        const Error error = Error::posixError(errno, path);
        ItemTree::remove(QFile::encodeName(staged));
        return error;
    }
    CrashPoint::reach();
    return std::nullopt;
}

}  // namespace

QString RemoteCommand::synopsis() const {
    return QStringLiteral(
        "remote rename DRIVE-PATH NEW-NAME\n"
        "remote move DRIVE-PATH DRIVE-FOLDER\n"
        "remote modify DRIVE-PATH [--text TEXT | --from FILE]\n"
        "remote delete DRIVE-PATH");
}

QString RemoteCommand::summary() const {
    return QStringLiteral(
        "Play another device: rename, move, change or delete an item in the cloud and, as the "
        "sync service would, in the local drive. modify appends a line unless given new content.");
}

int RemoteCommand::run(ToolContext& context, Arguments& arguments) {
    bool missing = false;
    const std::optional<QString> text = arguments.takeOption(QStringLiteral("text"), &missing);
    const std::optional<QString> from = arguments.takeOption(QStringLiteral("from"), &missing);
    if (missing) {
        return context.usageError(QStringLiteral("an option is missing its value"));
    }
    const QStringList positional = arguments.positional();
    const QString action = positional.value(0);
    const qsizetype expected =
        (action == QLatin1String("rename") || action == QLatin1String("move")) ? 3 : 2;
    int status = 0;
    if (!context.expectNothingMore(arguments, expected, &status)) {
        return status;
    }
    if (action.isEmpty()) {
        return context.usageError(QStringLiteral("remote needs rename, move, modify or delete"));
    }
    if (action != QLatin1String("rename") && action != QLatin1String("move") &&
        action != QLatin1String("modify") && action != QLatin1String("delete")) {
        return context.usageError(QStringLiteral("unknown remote command \"") + action +
                                  QLatin1Char('"'));
    }
    if (positional.size() < expected) {
        return context.usageError(QStringLiteral("remote ") + action +
                                  QStringLiteral(" needs more arguments"));
    }
    QString problem;
    const std::optional<QString> path = context.driveRelativePath(positional[1], &problem);
    if (!path) {
        return context.usageError(problem);
    }
    if (path->isEmpty() || !context.itemExists(*path)) {
        return context.fail(QStringLiteral("no such item in the drive: ") + positional[1]);
    }
    if (action == QLatin1String("rename")) {
        return rename(context, *path, positional[2]);
    }
    if (action == QLatin1String("move")) {
        const std::optional<QString> folder = context.driveRelativePath(positional[2], &problem);
        if (!folder) {
            return context.usageError(problem);
        }
        return move(context, *path, *folder);
    }
    if (action == QLatin1String("delete")) {
        return remove(context, *path);
    }
    if (text && from) {
        return context.usageError(QStringLiteral("give --text or --from, not both"));
    }
    if (from) {
        QFile file(*from);
        if (!file.open(QIODevice::ReadOnly)) {
            return context.fail(QStringLiteral("can't read ") + *from + QStringLiteral(": ") +
                                file.errorString());
        }
        return modify(context, *path, file.readAll(), false);
    }
    if (text) {
        return modify(context, *path, text->toUtf8(), false);
    }
    const QByteArray line = "\nChanged on another device at " +
                            QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toUtf8() +
                            ".\n";
    return modify(context, *path, line, true);
}

int RemoteCommand::rename(ToolContext& context, const QString& path, const QString& newName) {
    if (newName.isEmpty() || newName.contains(QLatin1Char('/')) ||
        newName.startsWith(QLatin1Char('.'))) {
        return context.usageError(QStringLiteral("invalid new name \"") + newName +
                                  QLatin1Char('"'));
    }
    const QString parent = QFileInfo(path).path();
    const QString target =
        parent == QLatin1String(".") ? newName : parent + QLatin1Char('/') + newName;
    if (context.itemExists(target)) {
        return context.fail(QStringLiteral("the drive already has ") + target);
    }
    const Url source = context.itemURL(path);
    if (std::optional<Error> error =
            context.store().movePromisedItem(source, context.store().driveURL(target))) {
        return context.fail(QStringLiteral("can't rename ") + path, *error);
    }
    context.print(QStringLiteral("Renamed %1 to %2").arg(path, newName));
    return 0;
}

int RemoteCommand::move(ToolContext& context, const QString& path, const QString& folder) {
    if (!folder.isEmpty() && !context.isFolder(folder)) {
        return context.fail(QStringLiteral("no such folder in the drive: ") + folder);
    }
    const QString name = QFileInfo(path).fileName();
    const QString target = folder.isEmpty() ? name : folder + QLatin1Char('/') + name;
    if (target == path) {
        return context.fail(path + QStringLiteral(" is already in that folder"));
    }
    if (context.itemExists(target)) {
        return context.fail(QStringLiteral("the drive already has ") + target);
    }
    if (std::optional<Error> error = context.store().movePromisedItem(
            context.itemURL(path), context.store().driveURL(target))) {
        return context.fail(QStringLiteral("can't move ") + path, *error);
    }
    context.print(QStringLiteral("Moved %1 to %2").arg(path, target));
    return 0;
}

int RemoteCommand::modify(ToolContext& context, const QString& path, const QByteArray& content,
                          bool append) {
    if (context.isFolder(path)) {
        return context.fail(QStringLiteral("can't modify a folder: ") + path);
    }
    // Nothing else of the service changes this item meanwhile (an eviction, a download's
    // install, another remote change).
    const QString root = context.home().rootPath();
    HomeLock lock(root);
    const QString cloudPath = context.home().cloudPathFor(path);
    if (!QFileInfo::exists(cloudPath)) {
        return context.fail(QStringLiteral("the cloud has no copy of ") + path);
    }
    const Url url = context.store().driveURL(path);
    const bool cloudOnly = context.store().isCloudOnly(url);
    const QString localPath = context.home().drivePathFor(path);
    // Each new version is made whole beside the old and renamed over it, the local copy first: a
    // crash between the two leaves the local copy newer than the cloud's, which the next eviction
    // sends, never the other way round.
    Error error;
    std::optional<QString> stagedLocal;
    if (!cloudOnly) {
        stagedLocal = stageNewVersion(root, localPath, content, append, &error);
        if (!stagedLocal) {
            return context.fail(QStringLiteral("can't change the local copy of ") + path, error);
        }
    }
    const std::optional<QString> stagedCloud =
        stageNewVersion(root, cloudPath, content, append, &error);
    if (!stagedCloud) {
        if (stagedLocal) {
            ItemTree::remove(QFile::encodeName(*stagedLocal));
        }
        return context.fail(QStringLiteral("can't change the cloud copy of ") + path, error);
    }
    if (stagedLocal) {
        if (std::optional<Error> installError = install(*stagedLocal, localPath)) {
            ItemTree::remove(QFile::encodeName(*stagedCloud));
            return context.fail(QStringLiteral("can't change the local copy of ") + path,
                                *installError);
        }
    }
    if (std::optional<Error> installError = install(*stagedCloud, cloudPath)) {
        return context.fail(QStringLiteral("can't change the cloud copy of ") + path,
                            *installError);
    }
    if (cloudOnly) {
        // Only the placeholder's description changes until the item is downloaded again.
        const Url placeholderURL = DriveStore::placeholderURLFor(url);
        Error readError;
        std::optional<PlaceholderFile> record =
            context.store().readPlaceholder(placeholderURL, &readError);
        if (!record) {
            return context.fail(QStringLiteral("can't read the placeholder of ") + path, readError);
        }
        record->size = quint64(QFileInfo(cloudPath).size());
        record->modificationDate = QDateTime::currentDateTimeUtc();
        if (std::optional<Error> writeError =
                context.store().writePlaceholder(placeholderURL, *record)) {
            return context.fail(QStringLiteral("can't update the placeholder of ") + path,
                                *writeError);
        }
    }
    context.print(QStringLiteral("Changed ") + path);
    return 0;
}

int RemoteCommand::remove(ToolContext& context, const QString& path) {
    if (std::optional<Error> error = context.store().removeItem(context.itemURL(path))) {
        return context.fail(QStringLiteral("can't delete ") + path, *error);
    }
    context.print(QStringLiteral("Deleted ") + path);
    return 0;
}

}  // namespace vl
