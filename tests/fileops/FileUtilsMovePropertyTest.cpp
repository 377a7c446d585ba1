#include "fileops/FileUtils.h"

#include "model/DriveFixture.h"

#include <QDirIterator>

#include <algorithm>
#include <random>

namespace vl::test {
namespace {

using FileUtilsMovePropertyTest = DriveFixture;

// The contents of every file below `root`, sorted: a move that lost or overwrote a file changes
// it. Service files (placeholders, temporaries) are not the user's.
QList<QByteArray> contentsBelow(const QString& root) {
    QList<QByteArray> contents;
    QDirIterator it(root, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly)) {
            contents.append(file.readAll());
        }
    }
    std::sort(contents.begin(), contents.end());
    return contents;
}

TEST_F(FileUtilsMovePropertyTest, RandomMovesAmongFewNamesKeepEveryFile) {
    VLSetLogLevel(3);
    const QStringList folders{QString(), QStringLiteral("X"), QStringLiteral("X/Y"),
                              QStringLiteral("Z")};
    const QStringList names{QStringLiteral("a"), QStringLiteral("a.txt"), QStringLiteral("a 2.txt"),
                            QStringLiteral("b")};
    for (const QString& folder : folders.mid(1)) {
        makeDir(folder);
    }
    int serial = 0;
    for (const QString& folder : folders) {
        for (const QString& name : names.mid(0, 2)) {
            writeFile((folder.isEmpty() ? QString() : folder + QLatin1Char('/')) + name,
                      QByteArray::number(serial++));
        }
    }
    const QString root = drivePath(QString());
    const QList<QByteArray> before = contentsBelow(root);
    ASSERT_EQ(before.size(), serial);

    std::mt19937 random(20151023);
    int moved = 0;
    for (int step = 0; step < 2000; ++step) {
        // Any item below the root, files and folders alike, to any folder under any of the names.
        QStringList items;
        QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            items.append(it.next());
        }
        ASSERT_FALSE(items.isEmpty());
        const QString source = items.at(int(random() % items.size()));
        QStringList targets{root};
        for (const QString& item : items) {
            if (QFileInfo(item).isDir()) {
                targets.append(item);
            }
        }
        const QString folder = targets.at(int(random() % targets.size()));
        const QString name = names.at(int(random() % names.size()));
        if (!FileUtils::moveTo(Url::fromPath(source),
                               Url::fromPath(folder + QLatin1Char('/') + name))) {
            ++moved;
        }
        ASSERT_EQ(contentsBelow(root), before)
            << "step " << step << ": " << source.toStdString() << " -> " << folder.toStdString()
            << "/" << name.toStdString();
    }
    EXPECT_GT(moved, 1000);
}

}  // namespace
}  // namespace vl::test
