#pragma once

#include "drive/network/LinkStateReader.h"
#include "drive/store/DriveHome.h"
#include "platform/cloud/ReachabilityMonitor.h"

#include <QHash>
#include <QNetworkInformation>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vl {

class NetworkChangeListener;

// The reachability flags of one drive home, shared by every monitor made for it.
//
// The override in <home>/service.json decides when set ("none" 0, "wifi" reachable, "cellular"
// reachable over WWAN); with "auto" the machine's state does: QNetworkInformation (its backend
// chosen by features, else the glib one) when it knows, else LinkStateReader. A listener thread
// (rtnetlink, inotify on the home, a periodic re-check) and QNetworkInformation's signals on the
// main thread make it re-read the state; listeners hear of every change of the flags.
class NetworkStateSource : public std::enable_shared_from_this<NetworkStateSource> {
public:
    using Flags = ReachabilityMonitor::Flags;
    using Listener = std::function<void(Flags flags)>;

    // The source of the home, made on first use and kept while someone holds it.
    static std::shared_ptr<NetworkStateSource> forHome(const DriveHome& home);
    // The flags an override value stands for; absent for "auto" and anything unknown.
    static std::optional<Flags> overrideFlags(const QString& network);
    // The machine's flags with no override: what QNetworkInformation says (absent before it
    // answered), the links deciding what it does not know.
    static Flags systemFlags(std::optional<QNetworkInformation::Reachability> reachability,
                             std::optional<QNetworkInformation::TransportMedium> medium,
                             Flags links);

    NetworkStateSource(DriveHome home, LinkStateReader reader);
    ~NetworkStateSource();
    NetworkStateSource(const NetworkStateSource&) = delete;
    NetworkStateSource& operator=(const NetworkStateSource&) = delete;

    // Starts the listener thread and QNetworkInformation; forHome() calls it.
    void start();
    Flags flags() const;
    // Reads the state again and tells the listeners when the flags changed. Any thread.
    void refresh();

    quint64 addListener(Listener listener);
    void removeListener(quint64 token);

private:
    Flags computeFlags() const;
    Flags systemFlags() const;
    void startSystemInformation();

    const DriveHome home_;
    const LinkStateReader reader_;
    std::unique_ptr<NetworkChangeListener> changeListener_;  // set once in start()

    // What QNetworkInformation said last, as its enum values; -1 before it answered. Written on
    // the main thread, read anywhere.
    std::atomic<int> systemReachability_{-1};
    std::atomic<int> systemMedium_{-1};

    // Held for a whole refresh, so that listeners hear changes in the order they were read.
    std::mutex refreshMutex_;
    mutable std::mutex mutex_;
    Flags flags_ = 0;                     // guarded by mutex_
    QHash<quint64, Listener> listeners_;  // guarded by mutex_
    quint64 nextToken_ = 1;               // guarded by mutex_
};

}  // namespace vl
