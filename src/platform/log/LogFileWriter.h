#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <mutex>

namespace vl {

// Appends lines to the system log file. Each line goes out in one write() on a descriptor opened
// with O_APPEND, so lines of other threads and processes never interleave with it. The descriptor
// stays open between lines; it is opened again when the path changes, when the file was removed
// (looked at before every line) and when another file took its name (looked at once a second,
// which is when a log rotated by renaming is noticed). Thread-safe.
class LogFileWriter {
public:
    LogFileWriter() = default;
    ~LogFileWriter();
    LogFileWriter(const LogFileWriter&) = delete;
    LogFileWriter& operator=(const LogFileWriter&) = delete;

    // $XDG_STATE_HOME/com.tessaly.VelloraApp/system.log, XDG_STATE_HOME defaulting to
    // ~/.local/state; read from the environment at each call.
    static QString defaultPath();

    QString path() const;
    // An empty path goes back to the default one.
    void setPath(const QString& path);
    // Appends `line` (which ends with a newline); creates the file's directory when missing.
    bool append(const QByteArray& line) const;

    // Milliseconds of a monotonic clock; the once-a-second look at the path goes by it. Tests
    // install their own to move time on without waiting; null goes back to the steady clock.
    using Clock = std::function<qint64()>;
    void setClock(Clock clock);

private:
    // Whether the open file is no longer the one at its path.
    bool openFileWasReplacedLocked() const;

    mutable std::mutex mutex_;
    QString path_;  // guarded by mutex_; empty for the default path

    qint64 nowMs() const;

    Clock clock_;  // guarded by mutex_; null for the steady clock

    mutable std::mutex fileMutex_;
    mutable int fd_ = -1;               // guarded by fileMutex_
    mutable QByteArray openPath_;       // guarded by fileMutex_
    mutable qint64 pathCheckedMs_ = 0;  // guarded by fileMutex_
};

}  // namespace vl
