#include "drive/integrity/StagingArea.h"

#include "drive/integrity/ItemTree.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>
#include <atomic>
#include <cerrno>

namespace vl {

namespace {

// The start time of a process in clock ticks since boot (field 22 of /proc/<pid>/stat), which
// tells a process from a later one that reuses its id.
QByteArray startTimeOf(const QByteArray& pid) {
    QFile file(QStringLiteral("/proc/") + QString::fromLatin1(pid) + QStringLiteral("/stat"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray stat = file.readAll();
    // The command name may hold spaces and parentheses: fields count from its closing one.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 19 ? fields.at(19) : QByteArray();
}

const QString& processFolderName() {
    static const QString name = [] {
        const QByteArray pid = QByteArray::number(::getpid());
        return QString::fromLatin1(pid + '-' + startTimeOf(pid));
    }();
    return name;
}

std::atomic<quint64> counter{0};

}  // namespace

QString StagingArea::rootFor(const QString& homeRoot) {
    return homeRoot + QStringLiteral("/staging");
}

std::optional<QString> StagingArea::newPath(const QString& homeRoot, Error* error) {
    const QString folder = rootFor(homeRoot) + QLatin1Char('/') + processFolderName();
    if (!QDir().mkpath(folder)) {
        if (error) {
            *error = Error::posixError(errno ? errno : EACCES, folder);
        }
        return std::nullopt;
    }
    return folder + QStringLiteral("/") + QString::number(counter.fetch_add(1));
}

void StagingArea::sweep(const QString& homeRoot) {
    const QDir root(rootFor(homeRoot));
    for (const QString& name : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden)) {
        const qsizetype dash = name.indexOf(QLatin1Char('-'));
        const QByteArray pid = name.left(dash).toLatin1();
        if (dash <= 0 || name == processFolderName()) {
            continue;
        }
        const QByteArray started = startTimeOf(pid);
        if (started.isEmpty() || started != name.mid(dash + 1).toLatin1()) {
            ItemTree::remove(root.filePath(name).toUtf8());
        }
    }
}

}  // namespace vl
