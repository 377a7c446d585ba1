#include "drive/service/KeyValueStoreService.h"

#include "logging/VLLogging.h"
#include "platform/app/NotificationCenter.h"

#include <QSet>

namespace vl {

KeyValueStoreService::KeyValueStoreService(std::shared_ptr<DriveStore> store)
    : store_(std::move(store)) {
    values_ = store_->readKeyValueStore();
    watcher_ = std::make_unique<HomeFileWatcher>(store_->home().rootPath(),
                                                 QStringList{QStringLiteral("kvstore.json")},
                                                 [this](const QString&) { fileChanged(); });
}

KeyValueStoreService::~KeyValueStoreService() {
    watcher_.reset();
}

void KeyValueStoreService::stopWatching() {
    watcher_.reset();
}

QVariant KeyValueStoreService::objectForKey(const QString& key) const {
    std::lock_guard lock(mutex_);
    return values_.value(key);
}

std::optional<QVariantMap> KeyValueStoreService::dictionaryForKey(const QString& key) const {
    std::lock_guard lock(mutex_);
    const QVariant value = values_.value(key);
    if (value.typeId() != QMetaType::QVariantMap) {
        return std::nullopt;
    }
    return value.toMap();
}

void KeyValueStoreService::setObject(const QVariant& value, const QString& key) {
    std::lock_guard lock(mutex_);
    values_.insert(key, value);
    if (std::optional<Error> error = store_->writeKeyValueStore(values_)) {
        VLLOG(3, "Failed to write the key-value store: %@", *error);
    }
}

void KeyValueStoreService::removeObjectForKey(const QString& key) {
    std::lock_guard lock(mutex_);
    values_.remove(key);
    if (std::optional<Error> error = store_->writeKeyValueStore(values_)) {
        VLLOG(3, "Failed to write the key-value store: %@", *error);
    }
}

QVariantMap KeyValueStoreService::dictionaryRepresentation() const {
    std::lock_guard lock(mutex_);
    return values_;
}

bool KeyValueStoreService::synchronize() {
    Error error;
    const QVariantMap values = store_->readKeyValueStore(&error);
    if (error.code() != 0) {
        return false;
    }
    std::lock_guard lock(mutex_);
    values_ = values;
    return true;
}

void KeyValueStoreService::fileChanged() {
    Error error;
    const QVariantMap values = store_->readKeyValueStore(&error);
    if (error.code() != 0) {
        // A malformed file keeps the last good values.
        return;
    }
    QStringList changed;
    {
        std::lock_guard lock(mutex_);
        // Our own writes come back here too; they change nothing.
        QSet<QString> keys;
        for (auto it = values.begin(); it != values.end(); ++it) {
            keys.insert(it.key());
        }
        for (auto it = values_.begin(); it != values_.end(); ++it) {
            keys.insert(it.key());
        }
        for (const QString& key : keys) {
            if (values.value(key) != values_.value(key)) {
                changed.append(key);
            }
        }
        if (changed.isEmpty()) {
            return;
        }
        values_ = values;
    }
    changed.sort();
    VLLOG(6, "Key-value store changed externally: %@", changed);
    NotificationCenter::defaultCenter().post(
        Notifications::KeyValueStoreDidChangeExternally,
        {{ChangeReasonKey, ServerChange}, {ChangedKeysKey, changed}});
}

}  // namespace vl
