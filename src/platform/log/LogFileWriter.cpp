#include "platform/log/LogFileWriter.h"

#include <QDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <chrono>

namespace vl {

namespace {

constexpr qint64 PathCheckIntervalMs = 1000;

// mkdir -p of the folder holding `file`, with plain system calls: a record logged as the process
// ends may get here after Qt's own statics are gone.
void makeParentFolders(const QByteArray& file) {
    QByteArray folder = file.left(file.lastIndexOf('/'));
    for (qsizetype slash = folder.indexOf('/', 1); slash != -1;
         slash = folder.indexOf('/', slash + 1)) {
        folder[slash] = '\0';
        ::mkdir(folder.constData(), 0700);
        folder[slash] = '/';
    }
    ::mkdir(folder.constData(), 0700);
}

}  // namespace

QString LogFileWriter::defaultPath() {
    QString stateHome = qEnvironmentVariable("XDG_STATE_HOME");
    if (stateHome.isEmpty() || !QDir::isAbsolutePath(stateHome)) {
        stateHome = QDir::homePath() + QStringLiteral("/.local/state");
    }
    return stateHome + QStringLiteral("/com.tessaly.VelloraApp/system.log");
}

QString LogFileWriter::path() const {
    std::lock_guard lock(mutex_);
    return path_.isEmpty() ? defaultPath() : path_;
}

void LogFileWriter::setPath(const QString& path) {
    std::lock_guard lock(mutex_);
    path_ = path;
}

void LogFileWriter::setClock(Clock clock) {
    std::lock_guard lock(mutex_);
    clock_ = std::move(clock);
}

qint64 LogFileWriter::nowMs() const {
    {
        std::lock_guard lock(mutex_);
        if (clock_) {
            return clock_();
        }
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

LogFileWriter::~LogFileWriter() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

bool LogFileWriter::openFileWasReplacedLocked() const {
    struct stat open;
    if (::fstat(fd_, &open) != 0 || open.st_nlink == 0) {
        return true;
    }
    const qint64 now = nowMs();
    if (now - pathCheckedMs_ < PathCheckIntervalMs) {
        return false;
    }
    pathCheckedMs_ = now;
    struct stat named;
    return ::stat(openPath_.constData(), &named) != 0 || named.st_ino != open.st_ino ||
           named.st_dev != open.st_dev;
}

bool LogFileWriter::append(const QByteArray& line) const {
    const QByteArray file = QFile::encodeName(path());
    std::lock_guard lock(fileMutex_);
    if (fd_ >= 0 && (file != openPath_ || openFileWasReplacedLocked())) {
        ::close(fd_);
        fd_ = -1;
    }
    if (fd_ < 0) {
        fd_ = ::open(file.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
        if (fd_ < 0 && errno == ENOENT) {
            makeParentFolders(file);
            fd_ = ::open(file.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
        }
        if (fd_ < 0) {
            return false;
        }
        openPath_ = file;
        pathCheckedMs_ = nowMs();
    }
    ssize_t written;
    do {
        written = ::write(fd_, line.constData(), size_t(line.size()));
    } while (written < 0 && errno == EINTR);
    return written == line.size();
}

}  // namespace vl
