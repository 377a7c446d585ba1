#include "drive/store/DriveStoreSupport.h"

#include <QDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <cerrno>
#include <ctime>

namespace vl::storesupport {

qint64 coarseNow() {
    struct timespec now;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// What QFile::encodeName gives on Linux, without its detour: every item read encodes its path.
QByteArray nativePath(const QString& path) {
    return path.toUtf8();
}

bool lstatPath(const QString& path, struct stat* st) {
    return ::lstat(nativePath(path).constData(), st) == 0;
}

bool pathExists(const QString& path) {
    struct stat st;
    return lstatPath(path, &st);
}

// rename(2) that never replaces: 0 or the errno. File systems without RENAME_NOREPLACE get a
// check first, which leaves the usual window between check and rename.
int renameNoReplace(const QString& from, const QString& to) {
    const QByteArray source = nativePath(from);
    const QByteArray target = nativePath(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    struct stat st;
    if (::lstat(target.constData(), &st) == 0) {
        return EEXIST;
    }
    return ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
}

QDateTime dateOf(const struct statx_timestamp& stamp) {
    return QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(stamp.tv_sec) * 1000 + stamp.tv_nsec / 1000000, Qt::UTC);
}

QString parentPath(const QString& path) {
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

QString lastComponent(const QString& path) {
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

std::optional<Error> removeRecursively(const QString& path) {
    struct stat st;
    if (!lstatPath(path, &st)) {
        return errno == ENOENT ? std::nullopt
                               : std::optional<Error>(Error::posixError(errno, path));
    }
    if (S_ISDIR(st.st_mode)) {
        if (!QDir(path).removeRecursively()) {
            return Error::posixError(EACCES, path);
        }
        return std::nullopt;
    }
    if (::unlink(nativePath(path).constData()) != 0) {
        return Error::posixError(errno, path);
    }
    return std::nullopt;
}

void setModificationDate(const QString& path, const QDateTime& date) {
    if (!date.isValid()) {
        return;
    }
    const qint64 ms = date.toMSecsSinceEpoch();
    struct timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = ms / 1000;
    times[1].tv_nsec = (ms % 1000) * 1000000;
    ::utimensat(AT_FDCWD, nativePath(path).constData(), times, AT_SYMLINK_NOFOLLOW);
}

bool isUnsupportedXattrError(int error) {
    return error == ENOTSUP || error == EOPNOTSUPP || error == EPERM;
}

ssize_t readXattr(const QByteArray& path, const char* name, QByteArray* value) {
    // Most values fit the first buffer; a longer one is asked for its size, then read whole.
    char buffer[4096];
    ssize_t length = ::lgetxattr(path.constData(), name, buffer, sizeof buffer);
    if (length >= 0) {
        *value = QByteArray(buffer, length);
        return 0;
    }
    while (errno == ERANGE) {
        length = ::lgetxattr(path.constData(), name, nullptr, 0);
        if (length < 0) {
            return -1;
        }
        value->resize(length);
        length = ::lgetxattr(path.constData(), name, value->data(), size_t(value->size()));
        if (length >= 0) {
            value->resize(length);
            return 0;
        }
    }
    return -1;
}

QString joinTags(const QStringList& tags) {
    QStringList escaped;
    for (const QString& tag : tags) {
        QString copy = tag;
        copy.replace(QLatin1Char(','), QStringLiteral("\\,"));
        escaped.append(copy);
    }
    return escaped.join(QLatin1Char(','));
}

QStringList splitTags(const QString& value) {
    QStringList tags;
    QString current;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value.at(i) == QLatin1Char('\\') && i + 1 < value.size() &&
            value.at(i + 1) == QLatin1Char(',')) {
            current.append(QLatin1Char(','));
            ++i;
        } else if (value.at(i) == QLatin1Char(',')) {
            if (!current.trimmed().isEmpty()) {
                tags.append(current.trimmed());
            }
            current.clear();
        } else {
            current.append(value.at(i));
        }
    }
    if (!current.trimmed().isEmpty()) {
        tags.append(current.trimmed());
    }
    return tags;
}

}  // namespace vl::storesupport
