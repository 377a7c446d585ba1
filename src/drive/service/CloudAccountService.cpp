#include "drive/service/CloudAccountService.h"

#include "logging/VLLogging.h"
#include "platform/app/NotificationCenter.h"

namespace vl {

CloudAccountService::CloudAccountService(std::shared_ptr<DriveStore> store)
    : store_(std::move(store)),
      quotaQueue_(Dispatch::serialQueue(QStringLiteral("com.tessaly.VelloraApp.drive.quota"),
                                        QualityOfService::Utility)) {
    lastToken_ = readToken();
    watcher_ = std::make_unique<HomeFileWatcher>(store_->home().rootPath(),
                                                 QStringList{QStringLiteral("account.json")},
                                                 [this](const QString&) { accountFileChanged(); });
}

CloudAccountService::~CloudAccountService() {
    watcher_.reset();
}

void CloudAccountService::stopWatching() {
    watcher_.reset();
}

std::optional<CloudAccountToken> CloudAccountService::readToken() const {
    const std::optional<AccountRecord> account = store_->readAccount();
    if (!account) {
        return std::nullopt;
    }
    return CloudAccountToken(QByteArray::fromHex(account->identity.toLatin1()));
}

std::optional<CloudAccountToken> CloudAccountService::identityToken() const {
    return readToken();
}

void CloudAccountService::accountFileChanged() {
    const std::optional<CloudAccountToken> token = readToken();
    {
        std::lock_guard lock(mutex_);
        if (token == lastToken_) {
            return;
        }
        lastToken_ = token;
    }
    VLLOG(6, "Cloud account identity changed, signed in=%@", token ? "YES" : "NO");
    NotificationCenter::defaultCenter().post(Notifications::CloudAccountIdentityDidChange);
}

void CloudAccountService::performQuotaOperation(QuotaCompletion completion) {
    quotaQueue_->async([store = store_, completion = std::move(completion)] {
        Error readError;
        const std::optional<AccountRecord> account = store->readAccount(&readError);
        if (!account) {
            completion(0, Error(ErrorDomain, NotAuthenticated,
                                {{Error::LocalizedFailureReasonKey,
                                  QStringLiteral("No account is signed in.")}}));
            return;
        }
        if (store->readServiceSettings().network == ServiceSettings::NetworkNone) {
            completion(0, Error(Error::FileErrorDomain, Error::CloudServerUnavailable));
            return;
        }
        if (!account->freeBytes) {
            completion(0, Error(ErrorDomain, QuotaUnavailable,
                                {{Error::LocalizedFailureReasonKey,
                                  QStringLiteral("The quota of the account is not known.")}}));
            return;
        }
        completion(*account->freeBytes, std::nullopt);
    });
}

}  // namespace vl
