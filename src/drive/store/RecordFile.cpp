#include "drive/store/RecordFile.h"

#include "drive/integrity/CrashPoint.h"
#include "logging/VLLogging.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSaveFile>

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>

namespace vl {

namespace {

constexpr int kCorruptFile = 259;
constexpr int kWriteUnknown = 512;

std::mutex keptAsideMutex;

QStringList& keptAside() {
    static QStringList paths;  // guarded by keptAsideMutex
    return paths;
}

}  // namespace

std::optional<QJsonObject> RecordFile::readObject(const QString& path, Error* error,
                                                  bool* missing) {
    if (missing) {
        *missing = false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        const bool exists = file.exists();
        if (missing) {
            *missing = !exists;
        }
        if (error) {
            *error = exists ? Error::posixError(EACCES, path)
                            : Error::fileError(Error::FileReadNoSuchFile, path);
        }
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        if (error) {
            *error = corruptFileError(path, parseError.error != QJsonParseError::NoError
                                                ? parseError.errorString()
                                                : QStringLiteral("not a JSON object"));
        }
        return std::nullopt;
    }
    return document.object();
}

std::optional<Error> RecordFile::writeObject(const QString& path, const QJsonObject& object,
                                             const QString& temporaryPath) {
    return writeBytes(path, QJsonDocument(object).toJson(QJsonDocument::Indented), temporaryPath);
}

std::optional<QString> RecordFile::keepAsideIfCorrupt(const QString& path) {
    Error error;
    bool missing = false;
    if (readObject(path, &error, &missing) || missing || error.code() != kCorruptFile) {
        return std::nullopt;
    }
    const QString aside =
        path + QStringLiteral(".corrupt-") +
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd'T'HHmmsszzz"));
    if (::rename(QFile::encodeName(path).constData(), QFile::encodeName(aside).constData()) != 0) {
        VLLOG(3, "Unreadable record %@ could not be kept aside: %@", path,
              Error::posixError(errno, aside));
        return std::nullopt;
    }
    VLLOG(3, "Unreadable record %@ kept aside as %@ (%@)", path, aside, error);
    std::lock_guard lock(keptAsideMutex);
    keptAside().append(aside);
    return aside;
}

QStringList RecordFile::takeKeptAside() {
    std::lock_guard lock(keptAsideMutex);
    return std::exchange(keptAside(), {});
}

std::optional<Error> RecordFile::writeBytes(const QString& path, const QByteArray& bytes,
                                            const QString& temporaryPath) {
    const auto failure = [&](const QString& reason) {
        return Error(Error::FileErrorDomain, kWriteUnknown,
                     {{Error::FilePathKey, path}, {Error::LocalizedFailureReasonKey, reason}});
    };
    keepAsideIfCorrupt(path);
    if (temporaryPath.isEmpty()) {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly)) {
            return failure(file.errorString());
        }
        file.write(bytes);
        if (!file.commit()) {
            return failure(file.errorString());
        }
        return std::nullopt;
    }
    const QByteArray temporary = QFile::encodeName(temporaryPath);
    const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        return failure(QString::fromLocal8Bit(strerror(errno)));
    }
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            break;
        }
        written += n;
    }
    const int saved = errno;
    if (::close(fd) != 0 || written != bytes.size()) {
        ::unlink(temporary.constData());
        return failure(QString::fromLocal8Bit(strerror(written != bytes.size() ? saved : errno)));
    }
    CrashPoint::reach();
    if (::rename(temporary.constData(), QFile::encodeName(path).constData()) != 0) {
        const int renameError = errno;
        ::unlink(temporary.constData());
        return failure(QString::fromLocal8Bit(strerror(renameError)));
    }
    CrashPoint::reach();
    return std::nullopt;
}

Error RecordFile::corruptFileError(const QString& path, const QString& reason) {
    return Error(Error::FileErrorDomain, kCorruptFile,
                 {{Error::FilePathKey, path}, {Error::LocalizedFailureReasonKey, reason}});
}

}  // namespace vl
