// Keep Offline and Remove Download of a folder of cloud-only files, and the measure of how much
// of the drive is on this device, each against the plain file work it amounts to:
//   keep offline  vs  copying the cloud copies into a folder
//   remove        vs  removing those copies
//   bytes here    vs  a walk of the drive with lstat
//
//   bench_offline [FILES [KIB]]      (default 400 files of 64 KiB)

#include "drive/service/DriveService.h"
#include "platform/cloud/CloudDocuments.h"
#include "services/OfflineKeeper.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>

using namespace vl;

namespace {

double seconds(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e9;
}

void waitFor(const bool& done) {
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int files = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 400;
    const int kib = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 64;
    QTemporaryDir dir;
    const QString home = dir.path() + QStringLiteral("/home");
    {
        DriveStore store{DriveHome(home)};
        store.prepare();
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        store.writeAccount(account);
        const QString source = dir.path() + QStringLiteral("/source");
        QFile file(source);
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(kib * 1024, 'x'));
        file.close();
        QDir().mkpath(store.home().drivePathFor(QStringLiteral("Album")));
        for (int i = 0; i < files; ++i) {
            store.importItem(source, QStringLiteral("Album/Photo %1.jpg").arg(i), true);
        }
    }
    const auto service = DriveService::install(home);
    const Url album = service->store()->driveURL(QStringLiteral("Album"), true);
    const QString cloud = service->store()->cloudPathFor(QStringLiteral("Album"));
    const auto keeper = OfflineKeeper::create();
    std::printf("%d cloud-only files of %d KiB\n", files, kib);

    // The reference first, so that both read the cloud copies from the page cache.
    const QString copies = dir.path() + QStringLiteral("/copies");
    QDir().mkpath(copies);
    QElapsedTimer timer;
    timer.start();
    for (const auto& entry : std::filesystem::directory_iterator(cloud.toStdString())) {
        std::filesystem::copy_file(entry.path(),
                                   copies.toStdString() + "/" + entry.path().filename().string());
    }
    const double copy = seconds(timer);

    bool done = false;
    timer.restart();
    keeper->keepOffline(album, [&](const Url&, const QList<Error>& errors, bool) {
        if (!errors.isEmpty()) {
            std::printf("%d failed\n", int(errors.size()));
        }
        done = true;
    });
    waitFor(done);
    const double keep = seconds(timer);
    std::printf("keep offline   %.3f s, copy %.3f s: %.2fx\n", keep, copy, keep / copy);

    timer.restart();
    quint64 walked = 0;
    QDirIterator it(service->store()->home().driveDir(),
                    QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        struct stat st;
        if (::lstat(QFile::encodeName(it.next()).constData(), &st) == 0 && S_ISREG(st.st_mode)) {
            walked += quint64(st.st_size);
        }
    }
    const double walk = seconds(timer);
    timer.restart();
    const quint64 here = CloudDocuments::shared().bytesOnThisDevice();
    const double measure = seconds(timer);
    std::printf("bytes here     %.3f s (%llu bytes), walk %.3f s (%llu bytes): %.2fx\n", measure,
                here, walk, walked, measure / walk);

    timer.restart();
    std::filesystem::remove_all(copies.toStdString());
    const double remove = seconds(timer);
    done = false;
    timer.restart();
    keeper->removeDownload(album, [&](const Url&, std::optional<Error> error) {
        if (error) {
            std::printf("remove failed: %s\n", qPrintable(error->description()));
        }
        done = true;
    });
    waitFor(done);
    const double evict = seconds(timer);
    std::printf(
        "remove download %.3f s, rm %.3f s: %.2fx (eviction compares each file with its "
        "cloud copy)\n",
        evict, remove, evict / remove);
    service->stopWatching();
    return 0;
}
