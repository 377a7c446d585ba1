#pragma once

#include <QByteArray>
#include <QDir>
#include <QString>

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

// A file that holds the current fuzz input, for readers that take a path. It lives in a folder
// of its own in a memory file system where there is one (else /tmp), and is rewritten in
// place for each input with plain system calls, so that the file system costs little per run.
class FuzzInputFile {
public:
    explicit FuzzInputFile(const char* name) {
        QByteArray base = "/dev/shm";
        if (!QDir(QString::fromLocal8Bit(base)).exists()) {
            base = qgetenv("XDG_RUNTIME_DIR");
        }
        if (base.isEmpty() || !QDir(QString::fromLocal8Bit(base)).exists()) {
            base = "/tmp";
        }
        QByteArray folder = base + "/vellora-fuzz-XXXXXX";
        if (!::mkdtemp(folder.data())) {
            std::abort();
        }
        folder_ = QString::fromLocal8Bit(folder);
        path_ = folder_ + QLatin1Char('/') + QLatin1String(name);
        encoded_ = folder + '/' + name;
    }
    ~FuzzInputFile() { QDir(folder_).removeRecursively(); }
    FuzzInputFile(const FuzzInputFile&) = delete;
    FuzzInputFile& operator=(const FuzzInputFile&) = delete;

    // The file's path, once it holds exactly `data`.
    const QString& hold(const std::uint8_t* data, std::size_t size) {
        const int fd = ::open(encoded_.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (fd < 0) {
            std::abort();
        }
        for (std::size_t done = 0; done < size;) {
            const ssize_t written = ::write(fd, data + done, size - done);
            if (written <= 0) {
                std::abort();
            }
            done += std::size_t(written);
        }
        ::close(fd);
        return path_;
    }
    const QString& folder() const { return folder_; }

private:
    QString folder_;
    QString path_;
    QByteArray encoded_;
};
