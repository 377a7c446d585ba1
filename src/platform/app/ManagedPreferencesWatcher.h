#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>

namespace vl {

// Linux has no system-wide "managed preferences changed" notification, so the app watches the
// files that decide managed behaviour (the standard preference store, the logging marker file)
// and posts "com.tessaly.policystore.defaultsdidchange" when one of them is written, created or
// removed. The folders are watched rather than the files: preference stores are replaced by
// rename, and a marker file may not exist yet. Lives on the main thread.
class ManagedPreferencesWatcher : public QObject {
    Q_OBJECT
public:
    explicit ManagedPreferencesWatcher(const QStringList& files, QObject* parent = nullptr);

private:
    void watchedPathChanged();
    void watchExistingFiles();
    QByteArray snapshot() const;

    QStringList files_;
    QFileSystemWatcher watcher_;
    QByteArray lastSnapshot_;
};

}  // namespace vl
