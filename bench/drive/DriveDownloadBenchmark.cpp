// Downloads a 1 GiB cloud-only item through a coordinated read (throttling off) and copies the
// same cloud file with cp(1), in the same run and on the same file system; prints both
// throughputs and their ratio (target: the download reaches at least 0.9 of cp's).
//
//   bench_drive_download [--size MiB] [--dir PARENT]

#include "drive/coordination/DriveCoordinationBackend.h"
#include "drive/store/DriveStore.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/files/ContentTypeRegistry.h"
#include "platform/files/MimeContentTypeRegistry.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace vl;

namespace {

// Real bytes on disk (no holes), so that both sides read and write real data.
bool writeContent(const QString& path, qint64 size) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    QByteArray block(4 * 1024 * 1024, Qt::Uninitialized);
    quint64 state = 0x9E3779B97F4A7C15ull;
    for (qint64 written = 0; written < size;) {
        for (qsizetype i = 0; i + 8 <= block.size(); i += 8) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            std::memcpy(block.data() + i, &state, 8);
        }
        const qint64 n = std::min<qint64>(block.size(), size - written);
        if (file.write(block.constData(), n) != n) {
            return false;
        }
        written += n;
    }
    return file.flush();
}

double runCp(const QString& from, const QString& to) {
    QElapsedTimer timer;
    timer.start();
    const int status = QProcess::execute(QStringLiteral("cp"), {from, to});
    const double seconds = timer.nsecsElapsed() / 1e9;
    QFile::remove(to);
    return status == 0 ? seconds : -1;
}

double runDownload(DriveStore& store, const Url& url, const PlaceholderFile& record) {
    QElapsedTimer timer;
    timer.start();
    FileCoordinator coordinator;
    std::optional<Error> error;
    bool local = false;
    coordinator.coordinateReadingItemAtURL(
        url, FileCoordinator::ReadingOption::WithoutChanges, &error,
        [&](const Url& newURL) { local = QFile::exists(newURL.path()); });
    const double seconds = timer.nsecsElapsed() / 1e9;
    if (error || !local) {
        std::fprintf(stderr, "download failed: %s\n",
                     qPrintable(error ? error->description() : QStringLiteral("not local")));
        return -1;
    }
    // Cloud-only again for the next round: the cloud copy is untouched.
    QFile::remove(url.path());
    store.writePlaceholder(DriveStore::placeholderURLFor(url), record);
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    qint64 sizeMiB = 1024;
    QString parent = QDir::tempPath();
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--size")) {
            sizeMiB = args[i + 1].toLongLong();
        } else if (args[i] == QLatin1String("--dir")) {
            parent = args[i + 1];
        }
    }
    const qint64 size = sizeMiB * 1024 * 1024;

    QTemporaryDir home(parent + QStringLiteral("/vellora-bench-download-XXXXXX"));
    if (!home.isValid()) {
        std::fprintf(stderr, "cannot make a temporary home under %s\n", qPrintable(parent));
        return 1;
    }
    ContentTypeRegistry::setShared(std::make_shared<MimeContentTypeRegistry>());
    auto store = std::make_shared<DriveStore>(DriveHome(home.path()));
    if (store->prepare()) {
        return 1;
    }
    auto backend = DriveCoordinationBackend::install(store);

    const QString name = QStringLiteral("Big.bin");
    const QString cloudPath = store->cloudPathFor(name);
    const Url url = store->driveURL(name);
    if (!writeContent(cloudPath, size)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(cloudPath));
        return 1;
    }
    PlaceholderFile record;
    record.name = name;
    record.size = quint64(size);
    record.contentType = QStringLiteral("public.data");
    record.creationDate = record.modificationDate = QDateTime::currentDateTimeUtc();
    store->writePlaceholder(DriveStore::placeholderURLFor(url), record);

    const QString cpTarget = home.path() + QStringLiteral("/cp-copy.bin");
    runCp(cloudPath, cpTarget);  // warm-up: both sides then read from the page cache
    double bestCp = 1e9;
    double bestDownload = 1e9;
    for (int round = 0; round < 2; ++round) {
        const double cp = runCp(cloudPath, cpTarget);
        const double download = runDownload(*store, url, record);
        if (cp < 0 || download < 0) {
            return 1;
        }
        bestCp = std::min(bestCp, cp);
        bestDownload = std::min(bestDownload, download);
        std::printf("round %d: cp %.3f s, download %.3f s\n", round + 1, cp, download);
    }
    const double mib = double(size) / (1024.0 * 1024.0);
    std::printf("cp:       %8.1f MiB/s (best of 2, %.0f MiB)\n", mib / bestCp, mib);
    std::printf("download: %8.1f MiB/s (best of 2, coordinated read, throttling off)\n",
                mib / bestDownload);
    std::printf("ratio download/cp: %.2f (target >= 0.90)\n", bestCp / bestDownload);
    FileCoordinator::Backend::setShared(nullptr);
    return 0;
}
