#include "app/InstanceChannel.h"

#include "logging/VLLogging.h"
#include "platform/app/PeerCredentials.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <QtEndian>

namespace vl {

namespace {

// A request is a URL and an identifier: a few kilobytes at most. Anything larger is not a sender
// of ours, and is not buffered.
constexpr quint32 kMaximumMessage = 64 * 1024;
// A peer that connects and says nothing is dropped after this long.
constexpr int kPeerTimeoutMs = 5000;
constexpr char kAccepted = '1';
constexpr char kRefused = '0';

QByteArray framed(const QByteArray& message) {
    QByteArray frame(4, '\0');
    qToBigEndian(static_cast<quint32>(message.size()), frame.data());
    return frame + message;
}

}  // namespace

QString InstanceChannel::defaultFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
           QStringLiteral("/com.tessaly.VelloraApp");
}

InstanceChannel::InstanceChannel(QString folder) : folder_(std::move(folder)) {}

InstanceChannel::~InstanceChannel() {
    if (server_) {
        server_->close();
    }
}

QString InstanceChannel::socketPath() const {
    return folder_ + QStringLiteral("/instance.socket");
}

QString InstanceChannel::lockPath() const {
    return folder_ + QStringLiteral("/instance.lock");
}

InstanceChannel::Role InstanceChannel::claim() {
    if (role_ == Role::Primary) {
        return role_;
    }
    if (!QDir().mkpath(folder_)) {
        VLLOG(4, "Can't make %@; this instance runs without handing over launches", folder_);
        return role_ = Role::Unguarded;
    }
    // Whoever can write into the folder could answer in the running instance's place.
    const QFileInfo folder(folder_);
    QFile::setPermissions(folder_, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (folder.ownerId() != PeerCredentials::currentUser() ||
        (QFile::permissions(folder_) & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                        QFile::ReadOther | QFile::WriteOther | QFile::ExeOther))) {
        VLLOG(4, "%@ is not this user's alone; this instance runs without handing over launches",
              folder_);
        return role_ = Role::Unguarded;
    }
    if (!lock_) {
        lock_ = std::make_unique<QLockFile>(lockPath());
        // Held for as long as the instance runs; only a holder that is gone leaves it free.
        lock_->setStaleLockTime(0);
    }
    if (lock_->tryLock(0)) {
        return role_ = Role::Primary;
    }
    if (lock_->error() == QLockFile::LockFailedError) {
        return role_ = Role::Secondary;
    }
    VLLOG(4, "Can't use %@ (error %d); this instance runs without handing over launches",
          lockPath(), static_cast<int>(lock_->error()));
    return role_ = Role::Unguarded;
}

InstanceChannel::HandOff InstanceChannel::handOver(const LaunchRequest& request, int timeoutMs,
                                                   QString* problem) {
    const auto fail = [problem](const QString& why) {
        if (problem) {
            *problem = why;
        }
        return HandOff::Failed;
    };
    const QDeadlineTimer deadline(timeoutMs);
    QString lastError;
    int pause = 10;
    while (!deadline.hasExpired()) {
        QLocalSocket socket;
        socket.connectToServer(socketPath());
        if (socket.waitForConnected(static_cast<int>(deadline.remainingTime()))) {
            socket.write(framed(request.message()));
            while (socket.bytesToWrite() > 0 &&
                   socket.waitForBytesWritten(static_cast<int>(deadline.remainingTime()))) {
            }
            if (socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
                const QByteArray answer = socket.read(1);
                return answer == QByteArray(1, kAccepted) ? HandOff::Accepted : HandOff::Refused;
            }
            return fail(QStringLiteral("the running instance did not answer: %1")
                            .arg(socket.errorString()));
        }
        lastError = socket.errorString();
        // Not listening yet, or gone: a holder that went away leaves the lock to this process.
        if (claim() == Role::Primary) {
            return HandOff::BecamePrimary;
        }
        if (role_ == Role::Unguarded) {
            return fail(QStringLiteral("%1 can't be used").arg(folder_));
        }
        QThread::msleep(static_cast<unsigned long>(
            std::min<qint64>(pause, std::max<qint64>(deadline.remainingTime(), 0))));
        pause = std::min(pause * 2, 200);
    }
    return fail(QStringLiteral("the running instance is not listening on %1 (%2)")
                    .arg(socketPath(), lastError));
}

std::optional<QString> InstanceChannel::listen(Receiver receiver) {
    if (role_ != Role::Primary) {
        return QStringLiteral("this instance does not hold %1").arg(lockPath());
    }
    receiver_ = std::move(receiver);
    if (!server_) {
        server_ = new QLocalServer(this);
        server_->setSocketOptions(QLocalServer::UserAccessOption);
        connect(server_, &QLocalServer::newConnection, this, &InstanceChannel::acceptConnections);
    }
    // With the lock held, a socket file still there is one a crashed instance left.
    QLocalServer::removeServer(socketPath());
    if (!server_->listen(socketPath())) {
        return server_->errorString();
    }
    return std::nullopt;
}

void InstanceChannel::acceptConnections() {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!PeerCredentials::isSameUser(socket->socketDescriptor())) {
            VLLOG(4, "Refusing a launch handed over by user %@",
                  PeerCredentials::userOf(socket->socketDescriptor()));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        QTimer::singleShot(kPeerTimeoutMs, socket, [socket] { socket->abort(); });
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readRequest(socket); });
        if (socket->bytesAvailable() > 0) {
            readRequest(socket);
        }
    }
}

void InstanceChannel::readRequest(QLocalSocket* socket) {
    if (socket->property("answered").toBool() || socket->bytesAvailable() < 4) {
        return;
    }
    uchar header[4];
    socket->peek(reinterpret_cast<char*>(header), 4);
    const quint32 size = qFromBigEndian<quint32>(header);
    if (size > kMaximumMessage) {
        VLLOG(4, "Refusing a launch hand-off of %u bytes", size);
        socket->abort();
        return;
    }
    if (socket->bytesAvailable() < static_cast<qint64>(size) + 4) {
        return;
    }
    socket->read(4);
    const std::optional<LaunchRequest> request = LaunchRequest::fromMessage(socket->read(size));
    socket->setProperty("answered", true);
    if (!request) {
        VLLOG(4, "Refusing a launch hand-off that is not a request");
        socket->abort();
        return;
    }
    const bool accepted = receiver_ && receiver_(*request);
    socket->write(QByteArray(1, accepted ? kAccepted : kRefused));
    socket->disconnectFromServer();
}

}  // namespace vl
