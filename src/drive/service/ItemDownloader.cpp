#include "drive/service/ItemDownloader.h"

#include "drive/coordination/PathLockTable.h"
#include "drive/coordination/PresenterRegistry.h"
#include "drive/integrity/CrashPoint.h"
#include "drive/integrity/ItemTree.h"
#include "drive/integrity/StagingArea.h"
#include "drive/store/DriveStore.h"
#include "drive/watch/DriveChangeWatcher.h"
#include "logging/VLLogging.h"
#include "platform/cloud/ItemProgress.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <vector>

namespace vl {

namespace {

qint64 nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

Error cancelledError(const QString& path) {
    return Error::fileError(Error::UserCancelled, path);
}

// The cloud copy changed under the copy: it is worth reading again.
bool isStale(const Error& error) {
    return error.domain() == Error::POSIXErrorDomain && error.code() == EAGAIN;
}

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    int get() const { return fd_; }
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_;
};

}  // namespace

ItemDownloader::ItemDownloader(std::shared_ptr<DriveStore> store, PathLockTable& locks,
                               DriveChangeWatcher& watcher,
                               std::shared_ptr<PresenterRegistry> presenters)
    : store_(std::move(store)),
      locks_(locks),
      watcher_(watcher),
      presenters_(std::move(presenters)) {}

void ItemDownloader::wakeAll() {
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

std::optional<Error> ItemDownloader::download(const Url& logicalURL,
                                              const std::atomic<bool>& cancelled,
                                              const FilePresenter* excludedPresenter) {
    const QString path = logicalURL.path();
    {
        std::unique_lock lock(mutex_);
        if (inProgress_.contains(path)) {
            changed_.wait(lock, [&] { return cancelled.load() || !inProgress_.contains(path); });
            return cancelled.load() ? std::optional<Error>(cancelledError(path)) : std::nullopt;
        }
        inProgress_.insert(path);
    }
    struct Done {
        ItemDownloader* self;
        QString path;
        ~Done() {
            std::lock_guard lock(self->mutex_);
            self->inProgress_.remove(path);
            self->changed_.notify_all();
        }
    } done{this, path};

    const ServiceSettings settings = store_->readServiceSettings();
    if (settings.network == ServiceSettings::NetworkNone) {
        VLLOG(6, "Not downloading %@: the network is off", logicalURL);
        return Error(Error::FileErrorDomain, Error::CloudServerUnavailable,
                     {{Error::FilePathKey, path}});
    }
    Error error;
    const std::optional<QString> source = store_->cloudContentPath(logicalURL, &error);
    if (!source) {
        VLLOG(3, "No cloud content for %@: %@", logicalURL, error);
        return error;
    }
    const quint64 throttle = settings.throttleBytesPerSecond;
    const QByteArray cloud = QFile::encodeName(*source);
    const qint64 total = ItemTree::totalSize(cloud);

    const std::shared_ptr<ItemProgress> progress = ItemProgress::create(total);
    progress->setKind(ItemProgress::FileKind);
    progress->setFileURL(logicalURL);
    const quint64 own = watcher_.beginOwnChanges({path});
    VLLOG(6, "Downloading %@ (%lld bytes, throttle %llu B/s)", logicalURL, total, throttle);
    progress->publish();

    // The copy is made in the staging area and goes into place only if the cloud copy did not
    // change while it was read (a remote change replaces or rewrites it): else it is read again.
    std::optional<Error> failure;
    for (int attempt = 1;; ++attempt) {
        std::optional<QString> destination =
            StagingArea::newPath(store_->home().rootPath(), &error);
        if (!destination) {
            failure = error;
            break;
        }
        const QByteArray staged = QFile::encodeName(*destination);
        const QByteArray version = ItemTree::signature(cloud);
        progress->setCompletedUnitCount(0);
        failure = copyItem(cloud, staged, *progress, throttle, cancelled);
        if (!store_->isCloudOnly(logicalURL)) {
            // Moved or deleted meanwhile: what was copied is not put back.
            failure = Error::fileError(Error::FileNoSuchFile, path);
        } else if (!failure && ItemTree::signature(cloud) != version) {
            failure = Error::posixError(EAGAIN, path);
        }
        if (!failure) {
            // The copy goes into place only while no coordinated access of the item is under
            // way, and only if the item is still the cloud-only one being downloaded (not moved
            // or deleted meanwhile) and its cloud copy still the version copied.
            PathLockTable::Holder holder;
            if (!locks_.acquire({{path, true}}, cancelled, &holder)) {
                failure = cancelledError(path);
            } else if (!store_->isCloudOnly(logicalURL)) {
                failure = Error::fileError(Error::FileNoSuchFile, path);
            } else {
                failure = store_->completeDownload(logicalURL, *destination, version);
            }
        }
        if (failure) {
            ItemTree::remove(staged);
        }
        if (!failure || !isStale(*failure) || attempt == MaxAttempts) {
            break;
        }
        VLLOG(5, "The cloud copy of %@ changed while it was downloaded; reading it again",
              logicalURL);
    }
    if (!failure) {
        progress->setCompletedUnitCount(total);
    }
    progress->unpublish();
    watcher_.endOwnChanges(own);

    if (failure) {
        if (failure->code() == Error::UserCancelled) {
            VLLOG(6, "Download of %@ cancelled", logicalURL);
        } else {
            VLLOG(3, "Download of %@ failed: %@", logicalURL, *failure);
        }
        return failure;
    }
    VLLOG(6, "Downloaded %@", logicalURL);
    presenters_->deliver(DriveChange::changed(logicalURL), excludedPresenter);
    return std::nullopt;
}

std::optional<Error> ItemDownloader::copyItem(const QByteArray& source,
                                              const QByteArray& destination, ItemProgress& progress,
                                              quint64 throttle,
                                              const std::atomic<bool>& cancelled) {
    struct stat st;
    if (::lstat(source.constData(), &st) != 0) {
        return Error::posixError(errno, QFile::decodeName(source));
    }
    if (!S_ISDIR(st.st_mode) && !S_ISREG(st.st_mode)) {
        // A symbolic link comes back as a link.
        return ItemTree::copy(source, destination);
    }
    if (!S_ISDIR(st.st_mode)) {
        qint64 done = 0;
        return copyFile(source, destination, progress, done, throttle, cancelled);
    }
    // A folder (a package): its tree, folder by folder, files counted together; names are
    // taken as bytes, whatever they decode to.
    qint64 done = 0;
    return copyTree(source, destination, progress, done, throttle, cancelled);
}

std::optional<Error> ItemDownloader::copyTree(const QByteArray& source,
                                              const QByteArray& destination, ItemProgress& progress,
                                              qint64& done, quint64 throttle,
                                              const std::atomic<bool>& cancelled) {
    struct stat st;
    if (::lstat(source.constData(), &st) != 0) {
        return Error::posixError(errno, QFile::decodeName(source));
    }
    if (S_ISREG(st.st_mode)) {
        return copyFile(source, destination, progress, done, throttle, cancelled);
    }
    if (!S_ISDIR(st.st_mode)) {
        return ItemTree::copy(source, destination);
    }
    if (::mkdir(destination.constData(), (st.st_mode & 07777) | S_IRWXU) != 0) {
        return Error::posixError(errno, QFile::decodeName(destination));
    }
    DIR* dir = ::opendir(source.constData());
    if (!dir) {
        return Error::posixError(errno, QFile::decodeName(source));
    }
    std::vector<QByteArray> names;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    ::closedir(dir);
    for (const QByteArray& name : names) {
        if (std::optional<Error> error = copyTree(source + '/' + name, destination + '/' + name,
                                                  progress, done, throttle, cancelled)) {
            return error;
        }
    }
    return std::nullopt;
}

std::optional<Error> ItemDownloader::copyFile(const QByteArray& sourcePath,
                                              const QByteArray& destinationPath,
                                              ItemProgress& progress, qint64& base,
                                              quint64 throttle,
                                              const std::atomic<bool>& cancelled) {
    const QString source = QFile::decodeName(sourcePath);
    const QString destination = QFile::decodeName(destinationPath);
    FileDescriptor in(::open(sourcePath.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    struct stat st;
    if (in.get() < 0 || ::fstat(in.get(), &st) != 0) {
        return Error::posixError(errno, source);
    }
    FileDescriptor out(::open(destinationPath.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                              st.st_mode & 0777));
    if (out.get() < 0) {
        return Error::posixError(errno, destination);
    }
    ::posix_fadvise(in.get(), 0, 0, POSIX_FADV_SEQUENTIAL);

    // Throttled copies go in slices of about a tenth of a second's worth, so the ring moves
    // smoothly and the rate holds.
    const qint64 chunk =
        throttle > 0 ? std::clamp<qint64>(qint64(throttle / 10), 4096, ChunkBytes) : ChunkBytes;
    bool kernelCopy = true;
    std::vector<char> buffer;
    const qint64 startedNs = nowNs();
    qint64 copied = 0;
    for (;;) {
        if (cancelled.load()) {
            return cancelledError(destination);
        }
        ssize_t n;
        if (kernelCopy) {
            n = ::copy_file_range(in.get(), nullptr, out.get(), nullptr, size_t(chunk), 0);
            if (n < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL ||
                          errno == EOPNOTSUPP || errno == EPERM)) {
                kernelCopy = false;
                continue;
            }
        } else {
            buffer.resize(size_t(chunk));
            n = ::read(in.get(), buffer.data(), buffer.size());
            for (ssize_t written = 0; n > 0 && written < n;) {
                const ssize_t w = ::write(out.get(), buffer.data() + written, size_t(n - written));
                if (w < 0 && errno != EINTR) {
                    return Error::posixError(errno, destination);
                }
                written += std::max<ssize_t>(w, 0);
            }
        }
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return Error::posixError(errno, kernelCopy ? destination : source);
        }
        if (n == 0) {
            break;
        }
        copied += n;
        progress.setCompletedUnitCount(base + copied);
        CrashPoint::reach();
        if (throttle > 0) {
            throttleWait(copied, throttle, startedNs, cancelled);
        }
    }
    if (::close(out.release()) != 0) {
        return Error::posixError(errno, destination);
    }
    base += copied;
    return std::nullopt;
}

void ItemDownloader::throttleWait(qint64 bytes, quint64 throttle, qint64 startedNs,
                                  const std::atomic<bool>& cancelled) {
    const qint64 dueNs = startedNs + qint64(double(bytes) * 1e9 / double(throttle));
    std::unique_lock lock(mutex_);
    while (!cancelled.load()) {
        const qint64 left = dueNs - nowNs();
        if (left <= 0) {
            return;
        }
        changed_.wait_for(lock, std::chrono::nanoseconds(std::min<qint64>(left, 50'000'000)));
    }
}

}  // namespace vl
