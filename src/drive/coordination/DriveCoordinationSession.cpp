#include "drive/coordination/DriveCoordinationSession.h"

#include "drive/coordination/DriveCoordinationBackend.h"
#include "drive/store/DriveStore.h"
#include "logging/VLLogging.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace vl {

namespace {

// Two reads in a row may find the item still cloud-only when the download they waited for was
// cancelled by its own coordinator; after that many tries something else is wrong.
constexpr int MaxDownloadAttempts = 3;

bool lstatPath(const QString& path, struct stat* st) {
    return ::lstat(QFile::encodeName(path).constData(), st) == 0;
}

bool itemExists(const Url& url) {
    struct stat st;
    return lstatPath(url.path(), &st) || lstatPath(DriveHome::placeholderPathFor(url.path()), &st);
}

// Presenters know items by their logical URLs, also when a write was asked for a placeholder.
Url logicalURL(const Url& url) {
    return DriveStore::logicalURLFor(url);
}

bool pathExists(const QString& path) {
    struct stat st;
    return lstatPath(path, &st);
}

}  // namespace

DriveCoordinationSession::DriveCoordinationSession(
    std::shared_ptr<DriveCoordinationBackend> backend, const FilePresenter* filePresenter)
    : backend_(std::move(backend)), filePresenter_(filePresenter) {}

std::optional<Error> DriveCoordinationSession::cancelledError(const Url& url) const {
    return Error::fileError(Error::UserCancelled, url.path());
}

std::optional<Error> DriveCoordinationSession::preflight(const std::vector<Url>& urls) const {
    for (const Url& url : urls) {
        if (cancelled_.load()) {
            return cancelledError(url);
        }
        if (url.isEmpty() || !url.isFileURL()) {
            VLLOG(4, "Cannot coordinate access to an empty URL");
            return Error::fileError(Error::FileNoSuchFile);
        }
    }
    return std::nullopt;
}

DriveCoordinationSession::Snapshot DriveCoordinationSession::snapshot(const Url& url) const {
    Snapshot result{url, true, false, {}};
    struct stat st;
    qint64 which = 0;
    if (!lstatPath(url.path(), &st)) {
        if (!lstatPath(DriveHome::placeholderPathFor(url.path()), &st)) {
            return result;
        }
        which = 1;
    }
    result.exists = true;
    result.signature = {which,
                        qint64(st.st_ino),
                        qint64(st.st_size),
                        qint64(st.st_mtim.tv_sec),
                        qint64(st.st_mtim.tv_nsec),
                        qint64(st.st_ctim.tv_sec),
                        qint64(st.st_ctim.tv_nsec)};
    return result;
}

std::optional<Error> DriveCoordinationSession::coordinateReading(
    const Url& url, FileCoordinator::ReadingOptions options,
    const FileCoordinator::Accessor& accessor) {
    if (std::optional<Error> error = preflight({url})) {
        return error;
    }
    Url target = url;
    if (options & FileCoordinator::ReadingOption::ResolvesSymbolicLink) {
        const QFileInfo info(url.path());
        if (info.isSymLink()) {
            target = Url::fromPath(info.symLinkTarget());
        }
    }
    DriveStore& store = backend_->store();
    if (!(options & FileCoordinator::ReadingOption::ImmediatelyAvailableMetadataOnly) &&
        store.relativePath(target) && !DriveStore::isPlaceholderURL(target)) {
        for (int attempt = 0; store.isCloudOnly(target); ++attempt) {
            if (attempt == MaxDownloadAttempts) {
                return Error::fileError(Error::FileReadNoSuchFile, target.path());
            }
            if (std::optional<Error> error =
                    backend_->downloader().download(target, cancelled_, filePresenter_)) {
                return error;
            }
        }
    }
    PathLockTable::Holder holder;
    if (!backend_->locks().acquire({{target.path(), false}}, cancelled_, &holder)) {
        return cancelledError(target);
    }
    accessor(target);
    return std::nullopt;
}

std::optional<Error> DriveCoordinationSession::coordinateWriting(
    const Url& url, FileCoordinator::WritingOptions options,
    const FileCoordinator::Accessor& accessor) {
    if (std::optional<Error> error = preflight({url})) {
        return error;
    }
    PathLockTable::Holder holder;
    if (!backend_->locks().acquire({{url.path(), true}}, cancelled_, &holder)) {
        return cancelledError(url);
    }
    const bool deleting = options & FileCoordinator::WritingOption::ForDeleting;
    // Deleting a cloud-only item means deleting its placeholder: give the accessor a URL that
    // plain file removal can act on.
    const Url accessorURL =
        deleting && backend_->store().isCloudOnly(url) ? DriveStore::placeholderURLFor(url) : url;
    const std::vector<Snapshot> before{snapshot(url)};
    const quint64 own = backend_->watcher().beginOwnChanges({url.path()});
    {
        std::lock_guard lock(movesMutex_);
        announcedMoves_.clear();
        writing_ = true;
    }
    DriveStore::takeMovesMadeOnThisThread();  // made outside this write
    accessor(accessorURL);
    finishWrite(before, deleting, nullptr, nullptr);
    backend_->watcher().endOwnChanges(own);
    return std::nullopt;
}

std::optional<Error> DriveCoordinationSession::coordinateWriting(
    const Url& url1, FileCoordinator::WritingOptions options1, const Url& url2,
    FileCoordinator::WritingOptions options2, const FileCoordinator::TwoURLAccessor& accessor) {
    if (std::optional<Error> error = preflight({url1, url2})) {
        return error;
    }
    PathLockTable::Holder holder;
    if (!backend_->locks().acquire({{url1.path(), true}, {url2.path(), true}}, cancelled_,
                                   &holder)) {
        return cancelledError(url1);
    }
    const bool moving = options1 & FileCoordinator::WritingOption::ForMoving;
    // A move is told from what the drive confirms or what is there afterwards. Looking at its
    // items beforehand would cost a path walk each, for the sake of the rare move that fails.
    const std::vector<Snapshot> before =
        moving ? std::vector<Snapshot>{{url1, false, false, {}}, {url2, false, false, {}}}
               : std::vector<Snapshot>{snapshot(url1), snapshot(url2)};
    const quint64 own = backend_->watcher().beginOwnChanges({url1.path(), url2.path()});
    {
        std::lock_guard lock(movesMutex_);
        announcedMoves_.clear();
        writing_ = true;
    }
    DriveStore::takeMovesMadeOnThisThread();  // made outside this write
    accessor(url1, url2);
    const bool deleting = (options1 | options2) & FileCoordinator::WritingOption::ForDeleting;
    finishWrite(before, deleting, moving ? &url1 : nullptr, moving ? &url2 : nullptr);
    backend_->watcher().endOwnChanges(own);
    return std::nullopt;
}

void DriveCoordinationSession::finishWrite(const std::vector<Snapshot>& before, bool deleting,
                                           const Url* movingFrom, const Url* movingTo) {
    std::vector<std::pair<Url, Url>> moves;
    {
        std::lock_guard lock(movesMutex_);
        moves = std::move(announcedMoves_);
        announcedMoves_.clear();
        writing_ = false;
    }
    const std::vector<std::pair<Url, Url>> made = DriveStore::takeMovesMadeOnThisThread();
    std::vector<Url> handled;
    for (const auto& move : moves) {
        const auto& [from, to] = move;
        const bool madeByDrive = std::find(made.begin(), made.end(), move) != made.end();
        if (madeByDrive || (!itemExists(from) && itemExists(to))) {
            applyMove(from, to, madeByDrive);
            handled.push_back(from);
            handled.push_back(to);
        }
    }
    if (moves.empty() && movingFrom && (before.front().exists || !before.front().known) &&
        !itemExists(*movingFrom) && itemExists(*movingTo)) {
        applyMove(*movingFrom, *movingTo, false);
        handled.push_back(*movingFrom);
        handled.push_back(*movingTo);
    }

    DriveStore& store = backend_->store();
    for (const Snapshot& was : before) {
        if (std::find(handled.begin(), handled.end(), was.url) != handled.end()) {
            continue;
        }
        const Snapshot now = snapshot(was.url);
        if (!was.known) {
            // What a move that did not happen left behind may have changed; its presenters
            // look again.
            if (now.exists) {
                backend_->presenters().deliver(DriveChange::changed(logicalURL(was.url)),
                                               filePresenter_);
            }
            continue;
        }
        const bool inDrive = store.relativePath(was.url).has_value();
        std::optional<DriveChange> change;
        std::optional<Error> mirrorError;
        if (!now.exists) {
            if (!was.exists) {
                continue;
            }
            const std::optional<QString> cloud = store.cloudPathForURL(was.url);
            if (inDrive && cloud && pathExists(*cloud)) {
                mirrorError = store.mirrorLocalDeletion(was.url);
            }
            change = DriveChange::deleted(was.url);
        } else if (!was.exists || (now.signature != was.signature && !deleting)) {
            if (inDrive && !store.isCloudOnly(was.url)) {
                mirrorError = store.mirrorLocalChange(was.url);
            }
            change = was.exists ? DriveChange::changed(was.url) : DriveChange::appeared(was.url);
        }
        if (mirrorError) {
            VLLOG(4, "Cannot mirror the change of %@ to the cloud: %@", was.url, *mirrorError);
        }
        if (change) {
            change->url = logicalURL(change->url);
            backend_->presenters().deliver(*change, filePresenter_);
        }
    }
}

void DriveCoordinationSession::applyMove(const Url& from, const Url& to, bool cloudCopyMoved) {
    DriveStore& store = backend_->store();
    // The promised-item move carries the cloud copy along itself; a plain rename does not.
    if (!cloudCopyMoved) {
        const std::optional<QString> cloudFrom = store.cloudPathForURL(from);
        const std::optional<QString> cloudTo = store.cloudPathForURL(to);
        if (cloudFrom && cloudTo && pathExists(*cloudFrom) && !pathExists(*cloudTo)) {
            if (std::optional<Error> error = store.mirrorLocalMove(from, to)) {
                VLLOG(4, "Cannot mirror the move of %@ to the cloud: %@", from, *error);
            }
        }
    }
    backend_->presenters().deliver(DriveChange::moved(logicalURL(from), logicalURL(to)),
                                   filePresenter_);
}

void DriveCoordinationSession::itemAtURLWillMoveToURL(const Url& oldURL, const Url& newURL) {
    std::lock_guard lock(movesMutex_);
    announcedMoves_.emplace_back(oldURL, newURL);
}

void DriveCoordinationSession::itemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) {
    {
        std::lock_guard lock(movesMutex_);
        if (writing_) {
            announcedMoves_.emplace_back(oldURL, newURL);
            return;
        }
    }
    if (!itemExists(oldURL) && itemExists(newURL)) {
        applyMove(oldURL, newURL, false);
    }
}

void DriveCoordinationSession::cancel() {
    cancelled_.store(true);
    backend_->locks().wakeAll();
    backend_->downloader().wakeAll();
}

}  // namespace vl
