// Item model and move throughput against plain references in the same run, on the same tree:
//  - a VLItem for every item of a folder of N items (default 100,000) against a readdir + stat(2)
//    loop over the same folder (target: at most 3 times the stat loop);
//  - FileUtils::moveTo of M files (default 10,000) into another folder against mv(1) moving the
//    same number of files between two other folders (target: at most 2 times mv).
// Each side runs five times, alternating with the other, and its best time counts.
//
//   bench_items [--items N] [--moves M] [--dir PARENT]

#include "drive/service/DriveService.h"
#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "model/VLItem.h"
#include "platform/log/SystemLogService.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

using namespace vl;

namespace {

constexpr int Rounds = 5;

bool makeFiles(const QString& folder, int count, const char* prefix) {
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        const QByteArray path =
            QFile::encodeName(folder) + '/' + prefix + QByteArray::number(i) + ".txt";
        const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0 || ::write(fd, path.constData(), path.size()) < 0) {
            return false;
        }
        ::close(fd);
    }
    return true;
}

QStringList listNames(const QString& folder) {
    QStringList names;
    DIR* dir = ::opendir(QFile::encodeName(folder).constData());
    while (dirent* entry = dir ? ::readdir(dir) : nullptr) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names.append(QFile::decodeName(entry->d_name));
        }
    }
    if (dir) {
        ::closedir(dir);
    }
    return names;
}

// The reference: list the folder and stat every item.
qint64 statLoop(const QString& folder, int* seen) {
    QElapsedTimer timer;
    timer.start();
    const QByteArray base = QFile::encodeName(folder) + '/';
    DIR* dir = ::opendir(base.constData());
    int count = 0;
    while (dirent* entry = dir ? ::readdir(dir) : nullptr) {
        if (entry->d_name[0] == '.') {
            continue;
        }
        struct stat st {};
        if (::stat((base + entry->d_name).constData(), &st) == 0) {
            ++count;
        }
    }
    if (dir) {
        ::closedir(dir);
    }
    *seen = count;
    return timer.nsecsElapsed();
}

qint64 itemLoop(const QString& folder, int* made) {
    QElapsedTimer timer;
    timer.start();
    int count = 0;
    for (const QString& name : listNames(folder)) {
        if (VLItem::initWithURL(Url::fromPath(folder + QLatin1Char('/') + name))) {
            ++count;
        }
    }
    *made = count;
    return timer.nsecsElapsed();
}

// mv(1) with as many files per call as fit comfortably on a command line.
qint64 mvFiles(const QString& from, const QString& to, const QStringList& names) {
    QElapsedTimer timer;
    timer.start();
    for (qsizetype start = 0; start < names.size(); start += 2000) {
        QStringList args{QStringLiteral("-t"), to, QStringLiteral("--")};
        for (const QString& name : names.mid(start, 2000)) {
            args.append(from + QLatin1Char('/') + name);
        }
        if (QProcess::execute(QStringLiteral("mv"), args) != 0) {
            std::fprintf(stderr, "mv failed\n");
            return -1;
        }
    }
    return timer.nsecsElapsed();
}

qint64 moveFiles(const QString& from, const QString& to, const QStringList& names, int* moved) {
    QElapsedTimer timer;
    timer.start();
    int count = 0;
    const Url source = Url::fromPath(from, true);
    const Url target = Url::fromPath(to, true);
    for (const QString& name : names) {
        if (!FileUtils::moveTo(source.appendingPathComponent(name),
                               target.appendingPathComponent(name))) {
            ++count;
        }
    }
    *moved = count;
    return timer.nsecsElapsed();
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    // Each figure shows as soon as it is measured; tearing down a large tree takes a while.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    int items = 100000;
    int moves = 10000;
    QString parent = QDir::tempPath();
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--items")) {
            items = args[i + 1].toInt();
        } else if (args[i] == QLatin1String("--moves")) {
            moves = args[i + 1].toInt();
        } else if (args[i] == QLatin1String("--dir")) {
            parent = args[i + 1];
        }
    }
    QTemporaryDir scratch(parent + QStringLiteral("/bench-items-XXXXXX"));
    if (!scratch.isValid()) {
        std::fprintf(stderr, "cannot make a scratch folder under %s\n", qPrintable(parent));
        return 1;
    }
    // The app's own log level (6) and file, so that the moves log as they do in the app.
    SystemLogService::setLogFilePath(scratch.filePath(QStringLiteral("system.log")));
    const QString home = scratch.filePath(QStringLiteral("home"));
    {
        DriveStore store{DriveHome(home)};
        AccountRecord account;
        account.account = QStringLiteral("bench@example.com");
        account.identity = AccountRecord::makeIdentity();
        if (store.prepare() || store.writeAccount(account)) {
            std::fprintf(stderr, "cannot prepare the drive home\n");
            return 1;
        }
    }
    std::shared_ptr<DriveService> service = DriveService::install(home);
    const QString drive = home + QStringLiteral("/drive");

    const QString big = drive + QStringLiteral("/Big");
    if (!makeFiles(big, items, "item ")) {
        std::fprintf(stderr, "cannot make %d files\n", items);
        return 1;
    }
    // Alternating rounds, best of each side: the fairest reading on a machine that is busy.
    int seen = 0;
    int made = 0;
    statLoop(big, &seen);  // warm the caches for both sides
    qint64 statNs = std::numeric_limits<qint64>::max();
    qint64 itemNs = std::numeric_limits<qint64>::max();
    for (int round = 0; round < Rounds; ++round) {
        statNs = std::min(statNs, statLoop(big, &seen));
        itemNs = std::min(itemNs, itemLoop(big, &made));
    }
    std::printf(
        "items: %d VLItems in %.3f s (%.2f us each); stat loop over %d in %.3f s "
        "(%.2f us each); ratio %.2f (target <= 3)\n",
        made, itemNs / 1e9, itemNs / 1e3 / qMax(made, 1), seen, statNs / 1e9,
        statNs / 1e3 / qMax(seen, 1), double(itemNs) / double(qMax<qint64>(statNs, 1)));

    // Each round moves the files to the other folder of its pair and the next one back.
    const QString mvA = drive + QStringLiteral("/MvA");
    const QString mvB = drive + QStringLiteral("/MvB");
    const QString moveA = drive + QStringLiteral("/MoveA");
    const QString moveB = drive + QStringLiteral("/MoveB");
    if (!makeFiles(mvA, moves, "m ") || !makeFiles(moveA, moves, "m ") || !QDir().mkpath(mvB) ||
        !QDir().mkpath(moveB)) {
        std::fprintf(stderr, "cannot make the files to move\n");
        return 1;
    }
    const QStringList names = listNames(moveA);
    qint64 mvNs = std::numeric_limits<qint64>::max();
    qint64 moveNs = std::numeric_limits<qint64>::max();
    int moved = 0;
    for (int round = 0; round < Rounds; ++round) {
        const bool there = round % 2 == 0;
        mvNs = std::min(mvNs, mvFiles(there ? mvA : mvB, there ? mvB : mvA, names));
        moveNs = std::min(moveNs,
                          moveFiles(there ? moveA : moveB, there ? moveB : moveA, names, &moved));
        if (mvNs < 0 || moved != names.size()) {
            std::fprintf(stderr, "a move failed\n");
            return 1;
        }
    }
    std::printf(
        "moves: %d FileUtils::moveTo in %.3f s (%.2f us each); mv of %d in %.3f s "
        "(%.2f us each); ratio %.2f (target <= 2)\n",
        moved, moveNs / 1e9, moveNs / 1e3 / qMax(moved, 1), int(names.size()), mvNs / 1e9,
        mvNs / 1e3 / qMax<qsizetype>(names.size(), 1),
        double(moveNs) / double(qMax<qint64>(mvNs, 1)));
    // The moves' log lines go out before the scratch folder holding the log file goes.
    VLSLSClient::SLSClient()->flush();
    return 0;
}
