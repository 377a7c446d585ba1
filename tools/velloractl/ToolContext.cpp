#include "ToolContext.h"

#include "Arguments.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <cstring>

namespace vl {

namespace {

FILE* errorStream = stderr;

}  // namespace

void ToolContext::setErrorStream(FILE* stream) {
    errorStream = stream;
}

ToolContext::ToolContext(const QString& homePath)
    : store_(std::make_unique<DriveStore>(DriveHome(homePath))) {
    // What a crash of any process left behind is repaired before anything is read or changed.
    if (QFileInfo(home().driveDir()).isDir()) {
        store_->recover();
    }
}

bool ToolContext::prepare() {
    if (std::optional<Error> error = store_->prepare()) {
        fail(QStringLiteral("can't prepare the drive home ") + home().rootPath(), *error);
        return false;
    }
    return true;
}

void ToolContext::print(const QString& line) const {
    std::fputs(line.toLocal8Bit().constData(), stdout);
    std::fputc('\n', stdout);
}

int ToolContext::fail(const QString& message) const {
    std::fflush(stdout);
    std::fprintf(errorStream, "velloractl: %s\n", message.toLocal8Bit().constData());
    std::fflush(errorStream);
    return Failure;
}

int ToolContext::fail(const QString& what, const Error& error) const {
    return fail(what + QStringLiteral(": ") + describe(error));
}

int ToolContext::usageError(const QString& message) const {
    fail(message + QStringLiteral(" (see velloractl --help)"));
    return UsageFailure;
}

bool ToolContext::expectNothingMore(const Arguments& arguments, qsizetype positionalCount,
                                    int* status) const {
    if (const auto option = arguments.unknownOption()) {
        *status = usageError(QStringLiteral("unknown option ") + *option);
        return false;
    }
    const QStringList positional = arguments.positional();
    if (positional.size() > positionalCount) {
        *status = usageError(QStringLiteral("unexpected argument \"") +
                             positional.at(positionalCount) + QLatin1Char('"'));
        return false;
    }
    return true;
}

QString ToolContext::describe(const Error& error) {
    QString text;
    const QString reason = error.userInfo().value(Error::LocalizedFailureReasonKey).toString();
    if (error.domain() == Error::POSIXErrorDomain) {
        text = QString::fromLocal8Bit(std::strerror(error.code()));
    } else if (error.domain() == Error::FileErrorDomain) {
        switch (error.code()) {
            case Error::FileNoSuchFile:
            case Error::FileReadNoSuchFile:
                text = QStringLiteral("no such file or folder");
                break;
            case Error::FileWriteInvalidFileName:
                text = QStringLiteral("invalid file name");
                break;
            case Error::FileWriteFileExists:
                text = QStringLiteral("an item with that name already exists");
                break;
            case Error::UserCancelled:
                text = QStringLiteral("cancelled");
                break;
            case Error::FeatureUnsupported:
                text = QStringLiteral("not supported");
                break;
            case Error::CloudServerUnavailable:
                text = QStringLiteral("the cloud copy is not available");
                break;
            case DriveStore::FileReadCorruptFile:
                text = QStringLiteral("the file is corrupt");
                break;
            default:
                text = error.localizedDescription();
        }
    } else {
        text = error.localizedDescription();
    }
    if (!reason.isEmpty() && reason != text) {
        text += QStringLiteral(" (") + reason + QLatin1Char(')');
    }
    const QString path = error.userInfo().value(Error::FilePathKey).toString();
    if (!path.isEmpty()) {
        text += QStringLiteral(": ") + path;
    }
    return text;
}

std::optional<QString> ToolContext::driveRelativePath(const QString& argument,
                                                      QString* problem) const {
    if (argument.isEmpty()) {
        *problem = QStringLiteral("empty drive path");
        return std::nullopt;
    }
    QString path = argument;
    if (QDir::isAbsolutePath(path)) {
        if (const auto relative = home().driveRelativePath(QDir::cleanPath(path))) {
            return *relative;
        }
        // "/Documents/x" names a drive path from the drive's root.
        path = path.mid(1);
    }
    path = QDir::cleanPath(path);
    if (path == QLatin1String(".")) {
        path.clear();
    }
    if (path.startsWith(QLatin1String("..")) || path.startsWith(QLatin1Char('/'))) {
        *problem = QStringLiteral("not a path inside the drive: ") + argument;
        return std::nullopt;
    }
    return path;
}

bool ToolContext::itemExists(const QString& relativePath) const {
    const QString path = home().drivePathFor(relativePath);
    return QFileInfo::exists(path) || QFileInfo(path).isSymLink() ||
           QFileInfo::exists(DriveHome::placeholderPathFor(path));
}

bool ToolContext::isFolder(const QString& relativePath) const {
    return QFileInfo(home().drivePathFor(relativePath)).isDir();
}

Url ToolContext::itemURL(const QString& relativePath) const {
    return store_->driveURL(relativePath, isFolder(relativePath));
}

std::optional<Error> ToolContext::makeFolder(const QString& relativePath) const {
    for (const QString& path :
         {home().drivePathFor(relativePath), home().cloudPathFor(relativePath)}) {
        if (!QDir().mkpath(path)) {
            return Error::posixError(EACCES, path);
        }
    }
    return std::nullopt;
}

}  // namespace vl
