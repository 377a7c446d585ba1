#pragma once

#include "drive/watch/DriveChange.h"

#include <QHash>
#include <QString>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace vl {

// Watches the whole drive tree with inotify on a thread of its own (adding watches for folders
// that appear) and turns what other processes do to it into DriveChanges: a rename is a move, an
// unlink a deletion, a write or attribute change a change; placeholders and downloads count as
// their logical item, so an eviction or a finished download is a change of the item, not a
// deletion. Events come in bursts and are delivered once a burst is quiet.
//
// Changes this process makes through coordination are announced with beginOwnChanges and are not
// delivered again. Once they have ended, the watcher thread renames a fence file inside a private
// watched folder to a name that carries the fence's number; since one inotify queue keeps the
// order of its events, every event of the changes that ended before the fence comes before it,
// and reading the fence lifts their suppression. One fence serves all the writes that ended while
// the watcher was busy, so a burst of coordinated writes costs the writers no system call here.
class DriveChangeWatcher {
public:
    using Sink = std::function<void(const DriveChange& change)>;

    DriveChangeWatcher(QString driveRoot, Sink sink);
    ~DriveChangeWatcher();
    DriveChangeWatcher(const DriveChangeWatcher&) = delete;
    DriveChangeWatcher& operator=(const DriveChangeWatcher&) = delete;

    // False (and logged) when inotify can't be set up; the service then runs without it.
    bool start();
    void stop();
    bool isRunning() const;

    // Suppresses events of the items at or below these paths until endOwnChanges. Answers 0 when
    // the watcher is not running.
    quint64 beginOwnChanges(const std::vector<QString>& paths);
    void endOwnChanges(quint64 id);
    // Returns once every event that happened before the call has been delivered (or after five
    // seconds).
    void waitUntilDelivered();

private:
    struct Record;
    struct PendingMove;

    void run();
    void readEvents();
    void handleEvent(int wd, quint32 mask, quint32 cookie, const QString& name);
    void handleFence(const QString& name);
    // After lost events: lifts suppressions waiting for fences, watches the tree afresh, tells
    // presenters to look again and lets barrier waiters go.
    void recoverFromOverflow();
    void addWatchTree(const QString& path, bool reportContents);
    void renameWatches(const QString& from, const QString& to);
    void removeWatches(const QString& path);
    void expireMoves();
    void flush();
    bool isSuppressed(const QString& logicalPath) const;
    void record(int kind, const QString& logicalPath, const QString& newLogicalPath = {});
    // Renames the fence file to <type><id>, the fence then ending the own changes that ended
    // since the last fence. False when the watcher has no fence file, or when there is nothing
    // to end and the fence is not a barrier.
    bool postFence(char type, quint64 id, bool forBarrier);
    // Watcher thread: posts one fence for the changes that ended since the last one. True while
    // a fence is on its way.
    bool postEndedChangesFence();
    void releaseOwnChanges(const std::vector<quint64>& ids);

    const QString driveRoot_;
    const Sink sink_;
    QString fenceDir_;
    int inotifyFd_ = -1;
    int stopFd_ = -1;
    int wakeFd_ = -1;
    int fenceWd_ = -1;
    std::thread thread_;

    // Watcher thread only (and start() before the thread runs):
    QHash<int, QString> watchPaths_;
    std::vector<Record> batch_;
    std::vector<PendingMove> pendingMoves_;
    qint64 batchStartedMs_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable barrierDone_;
    std::vector<std::pair<quint64, QString>> suppressed_;  // guarded by mutex_
    std::set<quint64> pendingBarriers_;                    // guarded by mutex_: posted
    std::set<quint64> finishedBarriers_;                   // guarded by mutex_
    quint64 nextId_ = 1;                                   // guarded by mutex_
    bool running_ = false;                                 // guarded by mutex_
    std::vector<quint64> endedIds_;                        // guarded by mutex_: not yet fenced
    // guarded by mutex_: fence number to the own changes it ends
    std::map<quint64, std::vector<quint64>> fenceBatches_;
    bool idle_ = false;  // guarded by mutex_: the watcher sleeps until an event or a wake

    std::mutex fenceMutex_;
    QByteArray fenceFile_;  // guarded by fenceMutex_: the fence file's current path
};

}  // namespace vl
