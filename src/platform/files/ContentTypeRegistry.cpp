#include "platform/files/ContentTypeRegistry.h"

#include "platform/files/MimeContentTypeRegistry.h"

#include <mutex>

namespace vl {

namespace {

std::mutex registryMutex;
// Guarded by registryMutex. Replaced only by setShared; references handed out earlier stay
// valid only until then, which is why tests install theirs before anything asks.
std::shared_ptr<ContentTypeRegistry> sharedRegistry;

}  // namespace

ContentTypeRegistry& ContentTypeRegistry::shared() {
    std::lock_guard lock(registryMutex);
    if (!sharedRegistry) {
        sharedRegistry = std::make_shared<MimeContentTypeRegistry>();
    }
    return *sharedRegistry;
}

void ContentTypeRegistry::setShared(std::shared_ptr<ContentTypeRegistry> registry) {
    std::lock_guard lock(registryMutex);
    sharedRegistry = std::move(registry);
}

}  // namespace vl
