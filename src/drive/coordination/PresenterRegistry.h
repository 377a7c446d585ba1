#pragma once

#include "drive/watch/DriveChange.h"
#include "platform/cloud/FilePresenter.h"

#include <memory>
#include <mutex>
#include <vector>

namespace vl {

// The registered file presenters and the delivery of drive changes to them: each presenter
// concerned gets its callback as an async block on its own operation queue. A presenter that is
// removed (or destroyed) hears nothing more, not even of changes queued before its removal.
class PresenterRegistry : public std::enable_shared_from_this<PresenterRegistry> {
public:
    void add(const std::shared_ptr<FilePresenter>& presenter);
    void remove(const FilePresenter* presenter);
    std::vector<std::shared_ptr<FilePresenter>> presenters() const;

    // Tells every concerned presenter except `excluded` (the presenter of the coordinator that
    // made the change).
    void deliver(const DriveChange& change, const FilePresenter* excluded = nullptr);

private:
    struct Entry {
        const FilePresenter* key;
        std::weak_ptr<FilePresenter> presenter;
        quint64 generation;
    };
    bool isRegistered(const FilePresenter* key, quint64 generation) const;
    void post(const std::shared_ptr<FilePresenter>& presenter, quint64 generation,
              std::function<void(FilePresenter&)> callback);

    mutable std::mutex mutex_;
    std::vector<Entry> entries_;  // guarded by mutex_
    quint64 nextGeneration_ = 1;  // guarded by mutex_
};

}  // namespace vl
