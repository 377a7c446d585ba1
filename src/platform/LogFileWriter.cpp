#include "platform/LogFileWriter.h"

#include <QDir>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>

namespace vl {

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

bool LogFileWriter::append(const QByteArray& line) const {
    // Opened for each line: the file may be rotated or removed between records, and the path
    // follows the environment.
    const QByteArray file = QFile::encodeName(path());
    int fd = ::open(file.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0 && errno == ENOENT) {
        QDir().mkpath(QFileInfo(QFile::decodeName(file)).absolutePath());
        fd = ::open(file.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    }
    if (fd < 0) {
        return false;
    }
    ssize_t written;
    do {
        written = ::write(fd, line.constData(), size_t(line.size()));
    } while (written < 0 && errno == EINTR);
    ::close(fd);
    return written == line.size();
}

}  // namespace vl
