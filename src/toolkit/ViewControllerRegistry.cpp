#include "toolkit/ViewControllerRegistry.h"

#include "toolkit/DocumentPickerUnavailableController.h"

#include <QHash>

#include <mutex>

namespace vl {

namespace {

struct Registry {
    std::mutex mutex;
    QHash<QString, ViewControllerRegistry::Factory> factories;  // guarded by mutex
};

// The toolkit's replaceable controllers are known from the start; registering them here (not
// from their own files) also keeps the linker from dropping them out of the static library.
Registry& registry() {
    static Registry* instance = [] {
        auto* r = new Registry;
        r->factories.insert(DocumentPickerUnavailableController::ClassName,
                            [] { return std::make_shared<DocumentPickerUnavailableController>(); });
        return r;
    }();
    return *instance;
}

}  // namespace

void ViewControllerRegistry::registerClass(const QString& name, Factory factory) {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    r.factories.insert(name, std::move(factory));
}

void ViewControllerRegistry::unregisterClass(const QString& name) {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    r.factories.remove(name);
}

bool ViewControllerRegistry::hasClass(const QString& name) {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    return r.factories.contains(name);
}

QStringList ViewControllerRegistry::classNames() {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    QStringList names = r.factories.keys();
    names.sort();
    return names;
}

std::shared_ptr<ViewController> ViewControllerRegistry::createInstance(const QString& name) {
    Factory factory;
    {
        Registry& r = registry();
        std::lock_guard lock(r.mutex);
        factory = r.factories.value(name);
    }
    // Outside the lock: a factory may look up other classes.
    return factory ? factory() : nullptr;
}

}  // namespace vl
