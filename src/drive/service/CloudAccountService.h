#pragma once

#include "drive/store/DriveStore.h"
#include "drive/watch/HomeFileWatcher.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/dispatch/Dispatch.h"

#include <memory>
#include <mutex>
#include <optional>

namespace vl {

// The cloud account of one drive home: the identity token from account.json, watched with
// inotify so that a sign-in, sign-out or account switch by velloractl while the app runs posts
// Notifications::CloudAccountIdentityDidChange. Quota operations run on a serial queue of their
// own and answer account.json's "freeBytes".
class CloudAccountService : public CloudAccount {
public:
    explicit CloudAccountService(std::shared_ptr<DriveStore> store);
    ~CloudAccountService() override;

    std::optional<CloudAccountToken> identityToken() const override;
    void performQuotaOperation(QuotaCompletion completion) override;
    // Ends the watching of account.json; no change is noticed afterwards. Main thread.
    void stopWatching();

    static inline const QString ErrorDomain = QStringLiteral("VLCloudAccountErrorDomain");
    static constexpr int NotAuthenticated = 9;
    static constexpr int QuotaUnavailable = 25;

private:
    std::optional<CloudAccountToken> readToken() const;
    void accountFileChanged();

    const std::shared_ptr<DriveStore> store_;
    const DispatchQueuePtr quotaQueue_;
    mutable std::mutex mutex_;
    std::optional<CloudAccountToken> lastToken_;  // guarded by mutex_
    std::unique_ptr<HomeFileWatcher> watcher_;    // last: stops before the rest goes
};

}  // namespace vl
