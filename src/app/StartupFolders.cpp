#include "app/StartupFolders.h"

#include "drive/store/DriveHome.h"
#include "platform/app/Preferences.h"
#include "platform/log/SystemLogService.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

namespace vl {

namespace {

QString describe(const QString& what, const QString& folder, const QString& fault,
                 const QString& remedy) {
    return QStringLiteral("the %1 %2 %3; %4").arg(what, folder, fault, remedy);
}

QString moveRemedy(const char* variable) {
    return QStringLiteral("make it writable, or set %1 to a folder you can write to")
        .arg(QLatin1String(variable));
}

// The closest folder of `path` (itself included) that exists.
QString nearestExisting(QString path) {
    while (!QFileInfo::exists(path) && QFileInfo(path).path() != path) {
        path = QFileInfo(path).path();
    }
    return path;
}

// Why a file cannot be made in `folder` (the system's own words), or absent when one can.
// Permission bits alone do not tell: root ignores them and a read-only mount ignores them too.
std::optional<QString> writeRefusal(const QString& folder) {
    QTemporaryFile probe(folder + QStringLiteral("/.vellora-write-check-XXXXXX"));
    if (probe.open()) {
        return std::nullopt;
    }
    return probe.errorString();
}

}  // namespace

std::optional<QString> StartupFolders::problem() {
    const QString logFolder = QFileInfo(SystemLogService::logFilePath()).path();
    if (auto problem =
            writableFolderProblem(logFolder, QStringLiteral("log folder"), "XDG_STATE_HOME")) {
        return problem;
    }
    const QString preferencesFolder = QFileInfo(Preferences::standard().filePath()).path();
    if (auto problem = writableFolderProblem(
            preferencesFolder, QStringLiteral("preferences folder"), "XDG_CONFIG_HOME")) {
        return problem;
    }
    return driveHomeProblem(DriveHome::defaultPath());
}

std::optional<QString> StartupFolders::writableFolderProblem(const QString& folder,
                                                             const QString& what,
                                                             const char* variable) {
    const QFileInfo info(folder);
    if (info.exists() && !info.isDir()) {
        return describe(what, folder, QStringLiteral("is not a folder"), moveRemedy(variable));
    }
    if (!info.exists()) {
        const QString parent = nearestExisting(folder);
        if (const std::optional<QString> refusal = writeRefusal(parent)) {
            return describe(what, folder,
                            QStringLiteral("cannot be made in %1 (%2)").arg(parent, *refusal),
                            moveRemedy(variable));
        }
        if (!QDir().mkpath(folder)) {
            return describe(what, folder, QStringLiteral("cannot be made"), moveRemedy(variable));
        }
    }
    if (const std::optional<QString> refusal = writeRefusal(folder)) {
        return describe(what, folder, QStringLiteral("is not writable (%1)").arg(*refusal),
                        moveRemedy(variable));
    }
    return std::nullopt;
}

std::optional<QString> StartupFolders::driveHomeProblem(const QString& home) {
    const QString what = QStringLiteral("drive home");
    const QString remedy = QStringLiteral(
        "give yourself read and write access to it, or set VELLORA_HOME to "
        "another folder");
    const QFileInfo info(home);
    if (!info.exists()) {
        const QString parent = nearestExisting(home);
        if (const std::optional<QString> refusal = writeRefusal(parent)) {
            return describe(what, home,
                            QStringLiteral("cannot be made in %1 (%2)").arg(parent, *refusal),
                            QStringLiteral("set VELLORA_HOME or XDG_DATA_HOME to a folder you can "
                                           "write to"));
        }
        return std::nullopt;
    }
    if (!info.isDir()) {
        return describe(what, home, QStringLiteral("is not a folder"), remedy);
    }
    if (!info.isReadable() || !info.isExecutable()) {
        return describe(what, home, QStringLiteral("cannot be read"), remedy);
    }
    if (const std::optional<QString> refusal = writeRefusal(home)) {
        return describe(what, home, QStringLiteral("is not writable (%1)").arg(*refusal), remedy);
    }
    return std::nullopt;
}

}  // namespace vl
