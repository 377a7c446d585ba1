#include "platform/app/ManagedPreferencesWatcher.h"

#include "platform/app/NotificationCenter.h"

#include <QDateTime>
#include <QFileInfo>

namespace vl {

ManagedPreferencesWatcher::ManagedPreferencesWatcher(const QStringList& files, QObject* parent)
    : QObject(parent), files_(files) {
    for (const QString& file : files_) {
        const QString folder = QFileInfo(file).absolutePath();
        if (QFileInfo::exists(folder) && !watcher_.directories().contains(folder)) {
            watcher_.addPath(folder);
        }
    }
    watchExistingFiles();
    lastSnapshot_ = snapshot();
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this,
            &ManagedPreferencesWatcher::watchedPathChanged);
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this,
            &ManagedPreferencesWatcher::watchedPathChanged);
}

// Writes in place are only seen on the file itself; a file replaced by rename drops out of the
// watch and is added again.
void ManagedPreferencesWatcher::watchExistingFiles() {
    const QStringList watched = watcher_.files();
    for (const QString& file : files_) {
        if (QFileInfo::exists(file) && !watched.contains(file)) {
            watcher_.addPath(file);
        }
    }
}

// Other files of the same folders change too (all of /etc, for the marker): only a change of a
// watched file's existence, size or time is posted.
QByteArray ManagedPreferencesWatcher::snapshot() const {
    QByteArray state;
    for (const QString& file : files_) {
        const QFileInfo info(file);
        state += info.exists()
                     ? QByteArray::number(info.size()) + '@' +
                           QByteArray::number(info.lastModified().toMSecsSinceEpoch()) + '/' +
                           QByteArray::number(info.metadataChangeTime().toMSecsSinceEpoch())
                     : QByteArray("-");
        state += ';';
    }
    return state;
}

void ManagedPreferencesWatcher::watchedPathChanged() {
    watchExistingFiles();
    const QByteArray now = snapshot();
    if (now == lastSnapshot_) {
        return;
    }
    lastSnapshot_ = now;
    NotificationCenter::defaultCenter().post(Notifications::ManagedPreferencesDidChange);
}

}  // namespace vl
