#pragma once

#include <QSet>
#include <QString>

#include <mutex>

namespace vl {

// Drives the platform's network activity indicator from a set of named activities (such as
// "PreviewDownload"): the indicator is on exactly while at least one activity is registered.
// Identifiers form a set, not a count: showing one twice and hiding it once turns it off.
// `show` and `hide` may be called from any thread.
class NetworkIndicator {
public:
    // The process-wide indicator, made on first use; it lives until the process ends.
    static NetworkIndicator& sharedNetworkIndicator();

    NetworkIndicator() = default;
    NetworkIndicator(const NetworkIndicator&) = delete;
    NetworkIndicator& operator=(const NetworkIndicator&) = delete;

    void show(const QString& identifier);
    void hide(const QString& identifier);

private:
    std::mutex mutex_;
    QSet<QString> ids_;  // guarded by mutex_; the platform indicator is switched under it too
};

}  // namespace vl
