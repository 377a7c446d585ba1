#include "platform/cloud/CloudAccount.h"

#include <QtGlobal>

#include <cctype>
#include <mutex>

namespace vl {

namespace {

std::mutex& installedMutex() {
    static std::mutex mutex;
    return mutex;
}

// Guarded by installedMutex().
std::shared_ptr<CloudAccount>& installed() {
    static std::shared_ptr<CloudAccount> instance;
    return instance;
}

}  // namespace

CloudAccount& CloudAccount::shared() {
    std::lock_guard lock(installedMutex());
    if (!installed()) {
        qFatal("No CloudAccount is installed");
    }
    return *installed();
}

void CloudAccount::setShared(std::shared_ptr<CloudAccount> service) {
    std::lock_guard lock(installedMutex());
    installed() = std::move(service);
}

bool CloudAccount::isInstalled() {
    std::lock_guard lock(installedMutex());
    return installed() != nullptr;
}

namespace {
// Serialised form: a magic prefix and the identity bytes, so that any other data is refused.
const QByteArray kTokenMagic = QByteArrayLiteral("VLCloudAccountToken1:");
}  // namespace

QByteArray CloudAccountToken::serialized() const {
    return kTokenMagic + identity_.toHex();
}

std::optional<CloudAccountToken> CloudAccountToken::fromSerialized(const QByteArray& data) {
    if (!data.startsWith(kTokenMagic)) {
        return std::nullopt;
    }
    const QByteArray hex = data.mid(kTokenMagic.size());
    if (hex.isEmpty() || hex.size() % 2 != 0) {
        return std::nullopt;
    }
    for (char c : hex) {
        if (!std::isxdigit(static_cast<unsigned char>(c))) {
            return std::nullopt;
        }
    }
    return CloudAccountToken(QByteArray::fromHex(hex));
}

QString CloudAccountToken::description() const {
    return QStringLiteral("<CloudAccountToken %1>").arg(QString::fromLatin1(identity_.toHex()));
}

}  // namespace vl
