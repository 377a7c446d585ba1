#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace vl {

// The key-value store synced across the user's devices. Posts
// Notifications::KeyValueStoreDidChangeExternally on the default notification centre when another
// device (another process) changed it. Safe from any thread.
class KeyValueStore {
public:
    virtual ~KeyValueStore() = default;

    static KeyValueStore& shared();
    static void setShared(std::shared_ptr<KeyValueStore> store);
    static bool isInstalled();

    // Invalid when absent.
    virtual QVariant objectForKey(const QString& key) const = 0;
    // Absent when the key is missing or its value is not a dictionary.
    virtual std::optional<QVariantMap> dictionaryForKey(const QString& key) const = 0;
    virtual void setObject(const QVariant& value, const QString& key) = 0;
    virtual void removeObjectForKey(const QString& key) = 0;
    virtual QVariantMap dictionaryRepresentation() const = 0;
    // Re-reads the store; false when it can't be read.
    virtual bool synchronize() = 0;
};

}  // namespace vl
