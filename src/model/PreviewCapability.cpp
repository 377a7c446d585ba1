#include "model/PreviewCapability.h"

#include "platform/ContentTypeRegistry.h"

#include <sys/stat.h>

#include <memory>
#include <mutex>

namespace vl {

namespace {

std::mutex predicateMutex;
std::shared_ptr<const PreviewCapability::Predicate> installedPredicate;  // predicateMutex

}  // namespace

bool PreviewCapability::canPreviewItem(const Url& url) {
    std::shared_ptr<const Predicate> predicate;
    {
        std::lock_guard lock(predicateMutex);
        predicate = installedPredicate;
    }
    return predicate ? (*predicate)(url) : defaultCanPreviewItem(url);
}

void PreviewCapability::setPredicate(Predicate predicate) {
    std::lock_guard lock(predicateMutex);
    installedPredicate =
        predicate ? std::make_shared<const Predicate>(std::move(predicate)) : nullptr;
}

bool PreviewCapability::defaultCanPreviewItem(const Url& url) {
    if (url.isEmpty()) {
        return false;
    }
    // A cloud-only item's logical path does not exist yet; its name alone tells its type.
    struct stat st {};
    const QByteArray path = url.path().toLocal8Bit();
    if (::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode)) {
        return false;
    }
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    const QString type = registry.identifierForFileName(url.lastPathComponent(), false);
    static const QString previewable[] = {
        ContentTypeRegistry::Image, ContentTypeRegistry::Movie, ContentTypeRegistry::Audio,
        QStringLiteral("application/pdf"), QStringLiteral("text/plain")};
    for (const QString& kind : previewable) {
        if (registry.conformsTo(type, kind)) {
            return true;
        }
    }
    return false;
}

}  // namespace vl
