#include "model/PreviewCapability.h"

#include "platform/files/ContentTypeRegistry.h"

#include <QHash>

#include <sys/stat.h>

#include <algorithm>
#include <iterator>

#include <memory>
#include <mutex>

namespace vl {

namespace {

std::mutex predicateMutex;
std::shared_ptr<const PreviewCapability::Predicate> installedPredicate;  // predicateMutex
std::mutex previewableMutex;
QHash<QString, bool> previewableExtensions;                // previewableMutex
const ContentTypeRegistry* previewableRegistry = nullptr;  // previewableMutex: whose answers

}  // namespace

bool PreviewCapability::canPreviewItem(const Url& url, std::optional<bool> isFolder) {
    std::shared_ptr<const Predicate> predicate;
    {
        std::lock_guard lock(predicateMutex);
        predicate = installedPredicate;
    }
    return predicate ? (*predicate)(url, isFolder) : defaultCanPreviewItem(url, isFolder);
}

void PreviewCapability::setPredicate(Predicate predicate) {
    std::lock_guard lock(predicateMutex);
    installedPredicate =
        predicate ? std::make_shared<const Predicate>(std::move(predicate)) : nullptr;
}

bool PreviewCapability::defaultCanPreviewItem(const Url& url, std::optional<bool> isFolder) {
    if (url.isEmpty() || !isPreviewableName(url.lastPathComponent())) {
        return false;
    }
    if (isFolder) {
        return !*isFolder;
    }
    // A cloud-only item's logical path does not exist yet; its name alone tells its type.
    struct stat st {};
    const QByteArray path = url.path().toLocal8Bit();
    return !(::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode));
}

bool PreviewCapability::isPreviewableName(const QString& name) {
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    // A type follows from the extension (as the item's own content type does), and a folder
    // holds few extensions: look each one up once. Names without one are looked up in full.
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    // The last answer on this thread first: a folder's items mostly share their extension.
    struct LastAnswer {
        const ContentTypeRegistry* registry = nullptr;
        QString extension;
        bool answer = false;
    };
    thread_local LastAnswer last;
    const QStringView extension = dot > 0 ? QStringView(name).mid(dot + 1) : QStringView();
    if (!extension.isEmpty() && last.registry == &registry &&
        extension.compare(last.extension, Qt::CaseInsensitive) == 0) {
        return last.answer;
    }
    const QString key = extension.toString().toLower();
    if (!key.isEmpty()) {
        std::lock_guard lock(previewableMutex);
        if (previewableRegistry != &registry) {
            previewableRegistry = &registry;
            previewableExtensions.clear();
        }
        const auto found = previewableExtensions.constFind(key);
        if (found != previewableExtensions.constEnd()) {
            last = {&registry, key, *found};
            return *found;
        }
    }
    static const QString previewable[] = {
        ContentTypeRegistry::Image, ContentTypeRegistry::Movie, ContentTypeRegistry::Audio,
        QStringLiteral("application/pdf"), QStringLiteral("text/plain")};
    const QString type =
        registry.identifierForFileName(key.isEmpty() ? name : QStringLiteral("item.") + key, false);
    const bool answer =
        std::any_of(std::begin(previewable), std::end(previewable),
                    [&](const QString& kind) { return registry.conformsTo(type, kind); });
    if (!key.isEmpty()) {
        std::lock_guard lock(previewableMutex);
        previewableExtensions.insert(key, answer);
        last = {&registry, key, answer};
    }
    return answer;
}

}  // namespace vl
