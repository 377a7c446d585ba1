#pragma once

#include "platform/cloud/FileCoordinator.h"

#include <QString>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vl {

class DriveCoordinationBackend;

// The work of one FileCoordinator over the drive: takes the path locks, downloads cloud-only
// items before a read, runs the accessor, and after a write mirrors what changed to the cloud
// copy and tells the presenters concerned (except its own).
class DriveCoordinationSession : public FileCoordinator::Session {
public:
    DriveCoordinationSession(std::shared_ptr<DriveCoordinationBackend> backend,
                             const FilePresenter* filePresenter);

    std::optional<Error> coordinateReading(const Url& url, FileCoordinator::ReadingOptions options,
                                           const FileCoordinator::Accessor& accessor) override;
    std::optional<Error> coordinateWriting(const Url& url, FileCoordinator::WritingOptions options,
                                           const FileCoordinator::Accessor& accessor) override;
    std::optional<Error> coordinateWriting(
        const Url& url1, FileCoordinator::WritingOptions options1, const Url& url2,
        FileCoordinator::WritingOptions options2,
        const FileCoordinator::TwoURLAccessor& accessor) override;
    void itemAtURLWillMoveToURL(const Url& oldURL, const Url& newURL) override;
    void itemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) override;
    void cancel() override;

private:
    // What is known of an item before a write, to tell afterwards what the write did.
    struct Snapshot {
        Url url;
        // False for the items of a move, which are not looked at beforehand.
        bool known = true;
        bool exists = false;
        // Which of item and placeholder was found, and its inode, size, mtime and ctime.
        std::array<qint64, 7> signature{};
    };
    Snapshot snapshot(const Url& url) const;
    std::optional<Error> preflight(const std::vector<Url>& urls) const;
    std::optional<Error> cancelledError(const Url& url) const;
    void finishWrite(const std::vector<Snapshot>& before, bool deleting, const Url* movingFrom,
                     const Url* movingTo);
    // cloudCopyMoved: the drive's own move made it, cloud copy included.
    void applyMove(const Url& from, const Url& to, bool cloudCopyMoved);

    std::shared_ptr<DriveCoordinationBackend> backend_;
    const FilePresenter* const filePresenter_;
    std::atomic<bool> cancelled_{false};
    std::mutex movesMutex_;
    std::vector<std::pair<Url, Url>> announcedMoves_;  // guarded by movesMutex_
    bool writing_ = false;                             // guarded by movesMutex_
};

}  // namespace vl
