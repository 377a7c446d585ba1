#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vl {

// The platform's network activity indicator: one process-wide on/off state. Whoever shows it
// (the navigation bar's spinner) observes it; observers hear each change on the main queue, in
// the order the changes were made. Safe to set and read from any thread.
class NetworkActivityIndicator {
public:
    using Observer = std::function<void(bool visible)>;
    // Keeps an observer registered; releasing it removes the observer, also for changes already
    // queued but not delivered.
    using ObserverToken = std::shared_ptr<void>;

    static NetworkActivityIndicator& shared();

    bool isNetworkActivityIndicatorVisible() const;
    // Setting the value it already has notifies nobody.
    void setNetworkActivityIndicatorVisible(bool visible);

    ObserverToken addObserver(Observer observer);

private:
    NetworkActivityIndicator() = default;

    mutable std::mutex mutex_;
    bool visible_ = false;                            // guarded by mutex_
    std::vector<std::weak_ptr<Observer>> observers_;  // guarded by mutex_
};

}  // namespace vl
