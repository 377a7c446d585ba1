#include "drive/coordination/PresenterRegistry.h"

#include "logging/VLLogging.h"

#include <algorithm>

namespace vl {

namespace {

// `url` rebased from below `from` to below `to`.
Url rebased(const Url& url, const Url& from, const Url& to) {
    if (url == from) {
        return to;
    }
    return Url::fromPath(to.path() + url.path().mid(from.path().size()), url.hasDirectoryPath());
}

bool isStrictAncestor(const Url& folder, const Url& url) {
    return folder != url && folder.isAncestorOf(url);
}

void logAccommodationError(const Url& url, const std::optional<Error>& error) {
    if (error) {
        VLLOG(4, "Presenter of %@ could not accommodate deletion: %@", url, *error);
    }
}

}  // namespace

void PresenterRegistry::add(const std::shared_ptr<FilePresenter>& presenter) {
    if (!presenter) {
        return;
    }
    std::lock_guard lock(mutex_);
    const bool known = std::any_of(entries_.begin(), entries_.end(),
                                   [&](const Entry& e) { return e.key == presenter.get(); });
    if (!known) {
        entries_.push_back({presenter.get(), presenter, nextGeneration_++});
    }
}

void PresenterRegistry::remove(const FilePresenter* presenter) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](const Entry& e) { return e.key == presenter; });
}

std::vector<std::shared_ptr<FilePresenter>> PresenterRegistry::presenters() const {
    std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<FilePresenter>> result;
    for (const Entry& entry : entries_) {
        if (auto presenter = entry.presenter.lock()) {
            result.push_back(std::move(presenter));
        }
    }
    return result;
}

bool PresenterRegistry::isRegistered(const FilePresenter* key, quint64 generation) const {
    std::lock_guard lock(mutex_);
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& e) { return e.key == key && e.generation == generation; });
}

void PresenterRegistry::post(const std::shared_ptr<FilePresenter>& presenter, quint64 generation,
                             std::function<void(FilePresenter&)> callback) {
    const DispatchQueuePtr queue = presenter->presentedItemOperationQueue();
    if (!queue) {
        return;
    }
    queue->async([weakRegistry = weak_from_this(), weakPresenter = std::weak_ptr(presenter),
                  key = presenter.get(), generation, callback = std::move(callback)] {
        const auto registry = weakRegistry.lock();
        const auto strong = weakPresenter.lock();
        if (registry && strong && registry->isRegistered(key, generation)) {
            callback(*strong);
        }
    });
}

void PresenterRegistry::deliver(const DriveChange& change, const FilePresenter* excluded) {
    std::vector<std::pair<std::shared_ptr<FilePresenter>, quint64>> targets;
    {
        std::lock_guard lock(mutex_);
        for (const Entry& entry : entries_) {
            if (entry.key == excluded) {
                continue;
            }
            if (auto presenter = entry.presenter.lock()) {
                targets.emplace_back(std::move(presenter), entry.generation);
            }
        }
    }
    // Presenters answer their URL outside the lock: they may call back into the registry.
    for (const auto& [presenter, generation] : targets) {
        const std::optional<Url> presented = presenter->presentedItemURL();
        if (!presented || presented->isEmpty()) {
            continue;
        }
        const Url& url = *presented;
        const Url changed = change.url;
        switch (change.kind) {
            case DriveChange::Kind::Changed:
            case DriveChange::Kind::Appeared:
                if (url == changed) {
                    post(presenter, generation,
                         [](FilePresenter& p) { p.presentedItemDidChange(); });
                } else if (isStrictAncestor(url, changed)) {
                    const bool appeared = change.kind == DriveChange::Kind::Appeared;
                    post(presenter, generation, [changed, appeared](FilePresenter& p) {
                        if (appeared) {
                            p.presentedSubitemDidAppearAtURL(changed);
                        } else {
                            p.presentedSubitemDidChangeAtURL(changed);
                        }
                    });
                }
                break;
            case DriveChange::Kind::Deleted:
                if (changed.isAncestorOf(url)) {
                    post(presenter, generation, [url](FilePresenter& p) {
                        p.accommodatePresentedItemDeletionWithCompletionHandler(
                            [url](std::optional<Error> error) {
                                logAccommodationError(url, error);
                            });
                    });
                } else if (isStrictAncestor(url, changed)) {
                    post(presenter, generation, [changed](FilePresenter& p) {
                        p.accommodatePresentedSubitemDeletionAtURLCompletionHandler(
                            changed, [changed](std::optional<Error> error) {
                                logAccommodationError(changed, error);
                            });
                    });
                }
                break;
            case DriveChange::Kind::Missed:
                if (changed.isAncestorOf(url)) {
                    post(presenter, generation,
                         [](FilePresenter& p) { p.presentedItemDidChange(); });
                }
                break;
            case DriveChange::Kind::Moved: {
                const Url to = change.newURL;
                if (changed.isAncestorOf(url)) {
                    const Url newURL = rebased(url, changed, to);
                    post(presenter, generation,
                         [newURL](FilePresenter& p) { p.presentedItemDidMoveToURL(newURL); });
                } else if (isStrictAncestor(url, changed) || isStrictAncestor(url, to)) {
                    post(presenter, generation, [changed, to](FilePresenter& p) {
                        p.presentedSubitemAtURLDidMoveToURL(changed, to);
                    });
                }
                break;
            }
        }
    }
}

}  // namespace vl
