#pragma once

#include "drive/store/DriveStore.h"
#include "drive/watch/HomeFileWatcher.h"
#include "platform/cloud/KeyValueStore.h"

#include <memory>
#include <mutex>

namespace vl {

// The key-value store of one drive home, kept in kvstore.json. Writes by this process go to the
// file at once; a write by another process (velloractl) is read back and posted as
// Notifications::KeyValueStoreDidChangeExternally with the changed keys.
class KeyValueStoreService : public KeyValueStore {
public:
    // userInfo keys of the change notification.
    static inline const QString ChangeReasonKey = QStringLiteral("ChangeReason");
    static inline const QString ChangedKeysKey = QStringLiteral("ChangedKeys");
    static constexpr int ServerChange = 0;

    explicit KeyValueStoreService(std::shared_ptr<DriveStore> store);
    ~KeyValueStoreService() override;

    QVariant objectForKey(const QString& key) const override;
    std::optional<QVariantMap> dictionaryForKey(const QString& key) const override;
    void setObject(const QVariant& value, const QString& key) override;
    void removeObjectForKey(const QString& key) override;
    QVariantMap dictionaryRepresentation() const override;
    bool synchronize() override;
    // Ends the watching of kvstore.json; other processes' writes are read at the next
    // synchronize. Main thread.
    void stopWatching();

private:
    void fileChanged();

    const std::shared_ptr<DriveStore> store_;
    mutable std::mutex mutex_;
    QVariantMap values_;  // guarded by mutex_
    std::unique_ptr<HomeFileWatcher> watcher_;
};

}  // namespace vl
