#pragma once

#include "platform/dispatch/Dispatch.h"

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <mutex>

namespace vl {

struct Notification {
    QString name;
    QVariantMap userInfo;
};

// Names of the notifications the platform posts.
namespace Notifications {
inline const QString ApplicationDidBecomeActive =
    QStringLiteral("VLApplicationDidBecomeActiveNotification");
inline const QString ApplicationWillResignActive =
    QStringLiteral("VLApplicationWillResignActiveNotification");
inline const QString CloudAccountIdentityDidChange =
    QStringLiteral("VLCloudAccountIdentityDidChangeNotification");
// Posted system-wide when administrator-managed preferences change.
inline const QString ManagedPreferencesDidChange =
    QStringLiteral("com.tessaly.policystore.defaultsdidchange");
inline const QString KeyValueStoreDidChangeExternally =
    QStringLiteral("VLKeyValueStoreDidChangeExternallyNotification");
// Posted by the cloud documents service when an item is pinned or unpinned; "url" is the item's.
inline const QString DriveItemPinningDidChange =
    QStringLiteral("VLDriveItemPinningDidChangeNotification");
}  // namespace Notifications

// Named notifications with observers. An observer added with a queue gets each notification as
// an async block on that queue; one added without a queue runs synchronously on the poster's
// thread. Observers may be added, removed and posted to from any thread.
class NotificationCenter {
public:
    using Observer = std::function<void(const Notification&)>;
    // Opaque registration handle; removing it (or calling removeObserver) stops delivery, also of
    // notifications already queued but not yet delivered.
    class Token;
    using TokenPtr = std::shared_ptr<Token>;

    static NotificationCenter& defaultCenter();

    TokenPtr addObserver(const QString& name, DispatchQueuePtr queue, Observer observer);
    void removeObserver(const TokenPtr& token);
    void post(const QString& name, const QVariantMap& userInfo = {});
    void post(const Notification& notification);

    NotificationCenter();
    ~NotificationCenter();

private:
    struct Registry;
    std::shared_ptr<Registry> registry_;
};

}  // namespace vl
