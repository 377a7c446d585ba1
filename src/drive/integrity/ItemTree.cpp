#include "drive/integrity/ItemTree.h"

#include "drive/integrity/CrashPoint.h"
#include "drive/store/DriveHome.h"
#include "drive/store/PlaceholderFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace vl {

namespace {

std::vector<QByteArray> entriesOf(const QByteArray& folder, bool* ok) {
    std::vector<QByteArray> names;
    DIR* dir = ::opendir(folder.constData());
    *ok = dir != nullptr;
    if (!dir) {
        return names;
    }
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names.emplace_back(entry->d_name);
        }
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

Error errorAt(int code, const QByteArray& path) {
    return Error::posixError(code, QString::fromUtf8(path));
}

std::optional<Error> copyFile(const QByteArray& from, const QByteArray& to, mode_t mode) {
    const int in = ::open(from.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (in < 0) {
        return errorAt(errno, from);
    }
    const int out = ::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode & 07777);
    if (out < 0) {
        const int saved = errno;
        ::close(in);
        return errorAt(saved, to);
    }
    int failure = 0;
    bool kernelCopy = true;
    char buffer[64 * 1024];
    for (;;) {
        ssize_t n;
        if (kernelCopy) {
            n = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0);
            if (n < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL ||
                          errno == EOPNOTSUPP || errno == EPERM)) {
                kernelCopy = false;
                continue;
            }
        } else {
            n = ::read(in, buffer, sizeof buffer);
            for (ssize_t written = 0; n > 0 && written < n;) {
                const ssize_t w = ::write(out, buffer + written, size_t(n - written));
                if (w < 0 && errno != EINTR) {
                    n = -1;
                    break;
                }
                written += std::max<ssize_t>(w, 0);
            }
        }
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            failure = n < 0 ? errno : 0;
            break;
        }
        CrashPoint::reach();
    }
    ::close(in);
    if (::close(out) != 0 && !failure) {
        failure = errno;
    }
    return failure ? std::optional<Error>(errorAt(failure, to)) : std::nullopt;
}

// Reads until `size` bytes or the end: the count, or -1.
ssize_t readFully(int fd, char* buffer, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, buffer + done, size - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            return -1;
        }
        if (n == 0) {
            break;
        }
        done += size_t(n);
    }
    return ssize_t(done);
}

bool sameFileBytes(const QByteArray& a, const QByteArray& b) {
    const int fa = ::open(a.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    const int fb = ::open(b.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    constexpr size_t kChunk = 256 * 1024;
    thread_local std::vector<char> bufferA(kChunk);
    thread_local std::vector<char> bufferB(kChunk);
    bool same = fa >= 0 && fb >= 0;
    while (same) {
        const ssize_t na = readFully(fa, bufferA.data(), kChunk);
        const ssize_t nb = readFully(fb, bufferB.data(), kChunk);
        same = na >= 0 && na == nb && std::memcmp(bufferA.data(), bufferB.data(), size_t(na)) == 0;
        if (na < ssize_t(kChunk)) {
            break;
        }
    }
    if (fa >= 0) {
        ::close(fa);
    }
    if (fb >= 0) {
        ::close(fb);
    }
    return same;
}

QByteArray linkTarget(const QByteArray& path) {
    QByteArray target(4096, Qt::Uninitialized);
    const ssize_t n = ::readlink(path.constData(), target.data(), size_t(target.size()));
    return n < 0 ? QByteArray() : target.left(n);
}

}  // namespace

bool ItemTree::isPlaceholder(const QByteArray& folder, const QByteArray& name) {
    static const QByteArray suffix = DriveHome::PlaceholderSuffix.toUtf8();
    if (name.size() <= 1 + suffix.size() || !name.startsWith('.') || !name.endsWith(suffix)) {
        return false;
    }
    return PlaceholderFile::read(QString::fromUtf8(folder + '/' + name), nullptr).has_value();
}

std::optional<Error> ItemTree::copy(const QByteArray& from, const QByteArray& to,
                                    bool skipPlaceholders) {
    struct stat st;
    if (::lstat(from.constData(), &st) != 0) {
        return errorAt(errno, from);
    }
    CrashPoint::reach();
    if (S_ISLNK(st.st_mode)) {
        const QByteArray target = linkTarget(from);
        return ::symlink(target.constData(), to.constData()) == 0
                   ? std::nullopt
                   : std::optional<Error>(errorAt(errno, to));
    }
    if (!S_ISDIR(st.st_mode)) {
        return copyFile(from, to, st.st_mode);
    }
    if (::mkdir(to.constData(), (st.st_mode & 07777) | S_IRWXU) != 0) {
        return errorAt(errno, to);
    }
    bool ok = false;
    for (const QByteArray& name : entriesOf(from, &ok)) {
        if (skipPlaceholders && isPlaceholder(from, name)) {
            continue;
        }
        if (std::optional<Error> error =
                copy(from + '/' + name, to + '/' + name, skipPlaceholders)) {
            return error;
        }
    }
    return ok ? std::nullopt : std::optional<Error>(errorAt(errno ? errno : EIO, from));
}

bool ItemTree::sameContent(const QByteArray& a, const QByteArray& b, bool skipPlaceholders) {
    struct stat sa;
    struct stat sb;
    if (::lstat(a.constData(), &sa) != 0 || ::lstat(b.constData(), &sb) != 0 ||
        (sa.st_mode & S_IFMT) != (sb.st_mode & S_IFMT)) {
        return false;
    }
    if (S_ISLNK(sa.st_mode)) {
        return linkTarget(a) == linkTarget(b);
    }
    if (!S_ISDIR(sa.st_mode)) {
        return sa.st_size == sb.st_size && sameFileBytes(a, b);
    }
    bool okA = false;
    bool okB = false;
    std::vector<QByteArray> namesA = entriesOf(a, &okA);
    std::vector<QByteArray> namesB = entriesOf(b, &okB);
    if (skipPlaceholders) {
        std::erase_if(namesA, [&](const QByteArray& name) { return isPlaceholder(a, name); });
        std::erase_if(namesB, [&](const QByteArray& name) { return isPlaceholder(b, name); });
    }
    if (!okA || !okB || namesA != namesB) {
        return false;
    }
    for (const QByteArray& name : namesA) {
        if (!sameContent(a + '/' + name, b + '/' + name, skipPlaceholders)) {
            return false;
        }
    }
    return true;
}

QByteArray ItemTree::signature(const QByteArray& path) {
    struct stat st;
    if (::lstat(path.constData(), &st) != 0) {
        return {};
    }
    QByteArray signature;
    for (const auto value :
         {qint64(st.st_ino), qint64(st.st_mode), qint64(st.st_size), qint64(st.st_mtim.tv_sec),
          qint64(st.st_mtim.tv_nsec), qint64(st.st_ctim.tv_sec), qint64(st.st_ctim.tv_nsec)}) {
        signature += QByteArray::number(value) + ',';
    }
    if (S_ISDIR(st.st_mode)) {
        bool ok = false;
        for (const QByteArray& name : entriesOf(path, &ok)) {
            signature += '/' + name + ':' + ItemTree::signature(path + '/' + name) + ';';
        }
    }
    return signature;
}

qint64 ItemTree::totalSize(const QByteArray& path) {
    struct stat st;
    if (::lstat(path.constData(), &st) != 0) {
        return 0;
    }
    if (S_ISREG(st.st_mode)) {
        return st.st_size;
    }
    qint64 total = 0;
    if (S_ISDIR(st.st_mode)) {
        bool ok = false;
        for (const QByteArray& name : entriesOf(path, &ok)) {
            total += totalSize(path + '/' + name);
        }
    }
    return total;
}

std::optional<Error> ItemTree::remove(const QByteArray& path) {
    struct stat st;
    if (::lstat(path.constData(), &st) != 0) {
        return errno == ENOENT ? std::nullopt : std::optional<Error>(errorAt(errno, path));
    }
    if (S_ISDIR(st.st_mode)) {
        bool ok = false;
        for (const QByteArray& name : entriesOf(path, &ok)) {
            if (std::optional<Error> error = remove(path + '/' + name)) {
                return error;
            }
        }
        return ::rmdir(path.constData()) == 0 ? std::nullopt
                                              : std::optional<Error>(errorAt(errno, path));
    }
    return ::unlink(path.constData()) == 0 ? std::nullopt
                                           : std::optional<Error>(errorAt(errno, path));
}

}  // namespace vl
