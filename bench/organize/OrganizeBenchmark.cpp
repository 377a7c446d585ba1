// Organizing the drive against plain references in the same run, on files with cloud copies:
//  - moving N selected files (default 1,000) into a folder through the browser's
//    moveItemsToDirectory:toDirectory:, against mv(1) of the same number of files and of their
//    cloud copies (target: at most 2 times);
//  - deleting them through the delete flow (the warning answered with its destructive action),
//    against rm(1) of the same number of files and of their cloud copies (target: at most 2
//    times).
// Both check that the cloud copy is in step afterwards. Each side runs three times, alternating
// with the other, and its best time counts.
//
//   bench_organize [--files N] [--dir PARENT]

#include "browser/NavController.h"
#include "drive/service/DriveService.h"
#include "drive/store/DriveStore.h"
#include "logging/VLSLSClient.h"
#include "platform/log/SystemLogService.h"
#include "toolkit/AlertController.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>

using namespace vl;

namespace {

constexpr int Rounds = 3;

bool makeFiles(const QString& folder, int count) {
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        const QByteArray path =
            QFile::encodeName(folder) + "/file " + QByteArray::number(i) + ".txt";
        const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0 || ::write(fd, path.constData(), path.size()) < 0) {
            return false;
        }
        ::close(fd);
    }
    return true;
}

QStringList namesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::NoDotAndDotDot);
}

int countIn(const QString& folder) {
    return int(namesIn(folder).size());
}

// One run of a command over every file of the folders, as many files per call as a command line
// comfortably takes.
qint64 runOver(const QString& command, const QStringList& leading, const QStringList& folders) {
    QElapsedTimer timer;
    timer.start();
    for (const QString& folder : folders) {
        const QStringList names = namesIn(folder);
        for (qsizetype start = 0; start < names.size(); start += 2000) {
            QStringList args = leading;
            args.append(QStringLiteral("--"));
            for (const QString& name : names.mid(start, 2000)) {
                args.append(folder + QLatin1Char('/') + name);
            }
            if (QProcess::execute(command, args) != 0) {
                std::fprintf(stderr, "%s failed\n", qPrintable(command));
                return -1;
            }
        }
    }
    return timer.nsecsElapsed();
}

QList<Url> urlsIn(const QString& folder) {
    QList<Url> urls;
    for (const QString& name : namesIn(folder)) {
        urls.append(Url::fromPath(folder + QLatin1Char('/') + name));
    }
    return urls;
}

// A folder of files in the drive with their cloud copies, as synced files are.
bool importFolder(DriveStore& store, const QString& scratch, const QString& relative, int count) {
    const QString source = scratch + QStringLiteral("/source-") +
                           QString(relative).replace(QLatin1Char('/'), QLatin1Char('-'));
    QDir(source).removeRecursively();
    return makeFiles(source, count) && !store.importItem(source, relative, false);
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    int files = 1000;
    QString parent = QDir::tempPath();
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--files")) {
            files = args[i + 1].toInt();
        } else if (args[i] == QLatin1String("--dir")) {
            parent = args[i + 1];
        }
    }
    QTemporaryDir scratch(parent + QStringLiteral("/bench-organize-XXXXXX"));
    if (!scratch.isValid()) {
        std::fprintf(stderr, "cannot make a scratch folder under %s\n", qPrintable(parent));
        return 1;
    }
    // The app's own log level (6) and file, so that the flows log as they do in the app.
    SystemLogService::setLogFilePath(scratch.filePath(QStringLiteral("system.log")));
    const QString home = scratch.filePath(QStringLiteral("home"));
    DriveStore store{DriveHome(home)};
    AccountRecord account;
    account.account = QStringLiteral("bench@example.com");
    account.identity = AccountRecord::makeIdentity();
    if (store.prepare() || store.writeAccount(account)) {
        std::fprintf(stderr, "cannot prepare the drive home\n");
        return 1;
    }
    std::shared_ptr<DriveService> service = DriveService::install(home);
    auto nav = std::make_shared<NavController>();
    nav->loadViewIfNeeded();

    const QString drive = store.home().driveDir();
    const QString cloud = store.home().cloudDir();
    const QString a = QStringLiteral("A");
    const QString b = QStringLiteral("B");
    const QString refA = scratch.filePath(QStringLiteral("ref/A"));
    const QString refB = scratch.filePath(QStringLiteral("ref/B"));
    const QString refCloudA = scratch.filePath(QStringLiteral("ref/cloud-A"));
    const QString refCloudB = scratch.filePath(QStringLiteral("ref/cloud-B"));
    if (!importFolder(store, scratch.path(), a, files) ||
        !QDir().mkpath(drive + QLatin1Char('/') + b) ||
        !QDir().mkpath(cloud + QLatin1Char('/') + b) || !makeFiles(refA, files) ||
        !makeFiles(refCloudA, files) || !QDir().mkpath(refB) || !QDir().mkpath(refCloudB)) {
        std::fprintf(stderr, "cannot make the files\n");
        return 1;
    }

    // --- Moves ---
    qint64 mvNs = std::numeric_limits<qint64>::max();
    qint64 mvLocalNs = std::numeric_limits<qint64>::max();
    qint64 moveNs = std::numeric_limits<qint64>::max();
    for (int round = 0; round < Rounds; ++round) {
        const bool there = round % 2 == 0;
        const QString from = there ? a : b;
        const QString to = there ? b : a;
        const qint64 mvLocal =
            runOver(QStringLiteral("mv"), {QStringLiteral("-t"), there ? refB : refA},
                    {there ? refA : refB});
        const qint64 mvCloud =
            runOver(QStringLiteral("mv"), {QStringLiteral("-t"), there ? refCloudB : refCloudA},
                    {there ? refCloudA : refCloudB});
        if (mvLocal < 0 || mvCloud < 0) {
            return 1;
        }
        mvLocalNs = std::min(mvLocalNs, mvLocal);
        mvNs = std::min(mvNs, mvLocal + mvCloud);

        const QList<Url> items = urlsIn(drive + QLatin1Char('/') + from);
        QElapsedTimer timer;
        timer.start();
        const QList<Error> errors = nav->moveItemsToDirectoryToDirectory(
            items, Url::fromPath(drive + QLatin1Char('/') + to, true));
        moveNs = std::min(moveNs, timer.nsecsElapsed());
        if (!errors.isEmpty() || countIn(drive + QLatin1Char('/') + to) != files ||
            countIn(cloud + QLatin1Char('/') + to) != files ||
            countIn(cloud + QLatin1Char('/') + from) != 0) {
            std::fprintf(stderr, "the moves failed or left the cloud copy behind\n");
            return 1;
        }
    }
    std::printf(
        "move: %d files through moveItemsToDirectory in %.3f s (%.1f us each); mv of the files "
        "and their cloud copies %.3f s (files alone %.3f s); ratio %.2f (target <= 2; %.2f "
        "against the files alone)\n",
        files, moveNs / 1e9, moveNs / 1e3 / files, mvNs / 1e9, mvLocalNs / 1e9,
        double(moveNs) / double(mvNs), double(moveNs) / double(mvLocalNs));

    // --- Deletes ---
    qint64 rmNs = std::numeric_limits<qint64>::max();
    qint64 rmLocalNs = std::numeric_limits<qint64>::max();
    qint64 deleteNs = std::numeric_limits<qint64>::max();
    const QString doomed = QStringLiteral("Doomed");
    for (int round = 0; round < Rounds; ++round) {
        if (countIn(refA) != files && !makeFiles(refA, files)) {
            return 1;
        }
        if (countIn(refCloudA) != files && !makeFiles(refCloudA, files)) {
            return 1;
        }
        const qint64 rmLocal = runOver(QStringLiteral("rm"), {QStringLiteral("-f")}, {refA});
        const qint64 rmCloud = runOver(QStringLiteral("rm"), {QStringLiteral("-f")}, {refCloudA});
        if (rmLocal < 0 || rmCloud < 0) {
            return 1;
        }
        rmLocalNs = std::min(rmLocalNs, rmLocal);
        rmNs = std::min(rmNs, rmLocal + rmCloud);

        if (!importFolder(store, scratch.path(), doomed + QString::number(round), files)) {
            std::fprintf(stderr, "cannot make the files to delete\n");
            return 1;
        }
        const QString folder = drive + QLatin1Char('/') + doomed + QString::number(round);
        const QList<Url> items = urlsIn(folder);
        bool finished = false;
        QElapsedTimer timer;
        timer.start();
        nav->showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(
            items, nullptr, nullptr, [&] { finished = true; });
        const auto sheet =
            std::dynamic_pointer_cast<AlertController>(nav->presentedViewController());
        if (!sheet) {
            std::fprintf(stderr, "no delete warning\n");
            return 1;
        }
        for (const std::shared_ptr<AlertAction>& action : sheet->actions()) {
            if (action->style() == AlertAction::Style::Destructive) {
                sheet->triggerAction(action);
            }
        }
        deleteNs = std::min(deleteNs, timer.nsecsElapsed());
        if (!finished || countIn(folder) != 0 ||
            countIn(cloud + QLatin1Char('/') + doomed + QString::number(round)) != 0) {
            std::fprintf(stderr, "the deletes failed or left cloud copies\n");
            return 1;
        }
    }
    std::printf(
        "delete: %d files through the delete flow in %.3f s (%.1f us each); rm of the files and "
        "their cloud copies %.3f s (files alone %.3f s); ratio %.2f (target <= 2; %.2f against "
        "the files alone)\n",
        files, deleteNs / 1e9, deleteNs / 1e3 / files, rmNs / 1e9, rmLocalNs / 1e9,
        double(deleteNs) / double(rmNs), double(deleteNs) / double(rmLocalNs));
    nav.reset();
    VLSLSClient::SLSClient()->flush();
    return 0;
}
