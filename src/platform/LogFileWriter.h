#pragma once

#include <QByteArray>
#include <QString>

#include <mutex>

namespace vl {

// Appends lines to the system log file. Each line goes out in one write() on a descriptor opened
// with O_APPEND, so lines of other threads and processes never interleave with it. Thread-safe.
class LogFileWriter {
public:
    // $XDG_STATE_HOME/com.tessaly.VelloraApp/system.log, XDG_STATE_HOME defaulting to
    // ~/.local/state; read from the environment at each call.
    static QString defaultPath();

    QString path() const;
    // An empty path goes back to the default one.
    void setPath(const QString& path);
    // Appends `line` (which ends with a newline); creates the file's directory when missing.
    bool append(const QByteArray& line) const;

private:
    mutable std::mutex mutex_;
    QString path_;  // guarded by mutex_; empty for the default path
};

}  // namespace vl
