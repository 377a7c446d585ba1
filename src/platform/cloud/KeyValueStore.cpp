#include "platform/cloud/KeyValueStore.h"

#include <QtGlobal>

#include <mutex>

namespace vl {

namespace {

std::mutex& installedMutex() {
    static std::mutex mutex;
    return mutex;
}

// Guarded by installedMutex().
std::shared_ptr<KeyValueStore>& installed() {
    static std::shared_ptr<KeyValueStore> instance;
    return instance;
}

}  // namespace

KeyValueStore& KeyValueStore::shared() {
    std::lock_guard lock(installedMutex());
    if (!installed()) {
        qFatal("No KeyValueStore is installed");
    }
    return *installed();
}

void KeyValueStore::setShared(std::shared_ptr<KeyValueStore> store) {
    std::lock_guard lock(installedMutex());
    installed() = std::move(store);
}

bool KeyValueStore::isInstalled() {
    std::lock_guard lock(installedMutex());
    return installed() != nullptr;
}

}  // namespace vl
