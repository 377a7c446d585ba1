// Reading the item model's 14 attributes for every item of a 100,000-item folder, against a
// plain stat() loop over the same tree in the same run. Target: at most 2x the stat loop.
//
//   bench_drive_attributes [ITEMS] [CLOUD-ONLY-PERCENT]

#include "drive/store/DriveStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace vl;

namespace {

const char* const kExtensions[] = {"txt", "pdf", "jpg", "png", "odt",
                                   "mp3", "mov", "md",  "",    "zip"};

double statLoop(const std::vector<QByteArray>& paths) {
    QElapsedTimer timer;
    timer.start();
    size_t found = 0;
    for (const QByteArray& path : paths) {
        struct stat st;
        if (::stat(path.constData(), &st) == 0) {
            ++found;
        }
    }
    const double ms = timer.nsecsElapsed() / 1e6;
    if (found == 0) {
        std::fprintf(stderr, "stat found nothing\n");
    }
    return ms;
}

double attributeLoop(const DriveStore& store, const std::vector<Url>& urls) {
    QElapsedTimer timer;
    timer.start();
    size_t read = 0;
    for (const Url& url : urls) {
        if (store.promisedItemAttributes(url, ItemAttributeKeySets::itemModelKeys(), nullptr)) {
            ++read;
        }
    }
    const double ms = timer.nsecsElapsed() / 1e6;
    if (read != urls.size()) {
        std::fprintf(stderr, "read %zu of %zu items\n", read, urls.size());
    }
    return ms;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int items = argc > 1 ? std::atoi(argv[1]) : 100000;
    const int cloudOnlyPercent = argc > 2 ? std::atoi(argv[2]) : 0;

    QTemporaryDir dir;
    DriveStore store{DriveHome(dir.path())};
    if (store.prepare()) {
        return 1;
    }
    const QString folder = store.home().drivePathFor(QStringLiteral("Big"));
    QDir().mkpath(folder);

    // The tree: small local files of several types, and optionally cloud-only items
    // (placeholders). Both loops visit the same entries.
    std::vector<Url> urls;
    std::vector<QByteArray> statPaths;
    urls.reserve(items);
    statPaths.reserve(items);
    PlaceholderFile record;
    record.size = 4096;
    record.creationDate = QDateTime::currentDateTimeUtc();
    record.modificationDate = record.creationDate;
    for (int i = 0; i < items; ++i) {
        const char* extension = kExtensions[i % 10];
        const QString name = QStringLiteral("item-%1%2%3")
                                 .arg(i)
                                 .arg(*extension ? QStringLiteral(".") : QString())
                                 .arg(QLatin1String(extension));
        const QString path = folder + QLatin1Char('/') + name;
        const bool cloudOnly = cloudOnlyPercent > 0 && (i % 100) < cloudOnlyPercent;
        if (cloudOnly) {
            record.name = name;
            record.write(DriveHome::placeholderPathFor(path));
            statPaths.push_back(QFile::encodeName(DriveHome::placeholderPathFor(path)));
        } else {
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly)) {
                return 1;
            }
            file.write("content");
            statPaths.push_back(QFile::encodeName(path));
        }
        urls.push_back(Url::fromPath(path));
    }

    // Warm caches once, then alternate and keep the best of each.
    statLoop(statPaths);
    attributeLoop(store, urls);
    double bestStat = 1e300;
    double bestAttributes = 1e300;
    for (int round = 0; round < 5; ++round) {
        bestStat = std::min(bestStat, statLoop(statPaths));
        bestAttributes = std::min(bestAttributes, attributeLoop(store, urls));
    }
    std::printf("items: %d (%d%% cloud-only)\n", items, cloudOnlyPercent);
    std::printf("stat loop:            %9.1f ms  (%.2f us/item)\n", bestStat,
                bestStat * 1000 / items);
    std::printf("14-attribute read:    %9.1f ms  (%.2f us/item)\n", bestAttributes,
                bestAttributes * 1000 / items);
    std::printf("ratio:                %9.2fx  (target <= 2x)\n", bestAttributes / bestStat);
    return 0;
}
