#pragma once

#include "platform/files/Error.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace vl {

// The opaque identity of the signed-in account: comparable and serialisable.
class CloudAccountToken {
public:
    CloudAccountToken() = default;
    explicit CloudAccountToken(QByteArray identity) : identity_(std::move(identity)) {}

    QByteArray serialized() const;
    // Absent for data that is not a serialised token.
    static std::optional<CloudAccountToken> fromSerialized(const QByteArray& data);

    const QByteArray& identity() const { return identity_; }
    QString description() const;
    bool operator==(const CloudAccountToken& other) const { return identity_ == other.identity_; }

private:
    QByteArray identity_;
};

// The cloud account service. Posts Notifications::CloudAccountIdentityDidChange on the default
// notification centre when the identity changes while the app runs (sign-in, sign-out, another
// account).
class CloudAccount {
public:
    using QuotaCompletion = std::function<void(quint64 freeBytes, std::optional<Error> error)>;

    virtual ~CloudAccount() = default;

    static CloudAccount& shared();
    static void setShared(std::shared_ptr<CloudAccount> service);
    static bool isInstalled();

    // Absent when no account is signed in or the drive is disabled.
    virtual std::optional<CloudAccountToken> identityToken() const = 0;
    // Asks for the free bytes of the account's cloud storage. The completion runs once, on a
    // queue of the service (never the caller's), with the bytes or an error.
    virtual void performQuotaOperation(QuotaCompletion completion) = 0;
};

}  // namespace vl
