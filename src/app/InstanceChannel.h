#pragma once

#include "app/LaunchRequest.h"

#include <QLockFile>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QLocalServer;
class QLocalSocket;

namespace vl {

// One running instance of the app per user session. The first start takes a lock in the app's
// folder of the runtime directory and listens on a local socket beside it; a later start hands
// its launch request over that socket and ends. Only the same user gets through: the folder is
// the user's own and closed to everyone else (0700), the socket file is owner-only, and the
// server checks the user the kernel recorded for each peer. Main thread only.
class InstanceChannel : public QObject {
public:
    enum class Role {
        Primary,    // this process holds the lock: it is the running instance
        Secondary,  // another running process holds it
        Unguarded,  // the folder can't be used; this process runs on its own (logged)
    };
    enum class HandOff { Accepted, Refused, BecamePrimary, Failed };

    // The receiver of a request handed over: its answer goes back to the sender.
    using Receiver = std::function<bool(const LaunchRequest&)>;

    // <runtime directory>/com.tessaly.VelloraApp
    static QString defaultFolder();

    explicit InstanceChannel(QString folder);
    ~InstanceChannel() override;

    // Takes the lock when it is free (or left by a process that is gone).
    Role claim();
    Role role() const { return role_; }

    // For a secondary: hands `request` to the running instance, waiting up to `timeoutMs` for it
    // to listen and to answer (it may still be starting). When the running instance goes away
    // meanwhile, this process takes the lock and becomes the primary. `problem` tells why it
    // failed. Blocks; needs an application object.
    HandOff handOver(const LaunchRequest& request, int timeoutMs, QString* problem = nullptr);

    // For the primary: listens for hand-offs and gives each request to `receiver` on this thread.
    // Why it could not listen, or nothing.
    std::optional<QString> listen(Receiver receiver);

    QString socketPath() const;
    QString lockPath() const;

private:
    void acceptConnections();
    void readRequest(QLocalSocket* socket);

    QString folder_;
    Role role_ = Role::Unguarded;
    std::unique_ptr<QLockFile> lock_;
    QLocalServer* server_ = nullptr;  // child of this object
    Receiver receiver_;
};

}  // namespace vl
