#include "app/StateRestoration.h"

#include "app/AppDelegate.h"
#include "logging/VLLogging.h"
#include "toolkit/ViewController.h"
#include "toolkit/Window.h"

namespace vl {

namespace {

std::shared_ptr<ViewController> identifiedRoot(const AppDelegate& delegate) {
    Window* window = delegate.rootWindow();
    const std::shared_ptr<ViewController> root = window ? window->rootViewController() : nullptr;
    return root && !root->restorationIdentifier().isEmpty() ? root : nullptr;
}

}  // namespace

void StateRestoration::restoreApplicationState() {
    const std::shared_ptr<ViewController> root = identifiedRoot(delegate_);
    if (!root || !delegate_.applicationShouldRestoreApplicationState()) {
        return;
    }
    QString problem;
    const std::map<QString, StateCoder> coders = archive_.read(&problem);
    if (!problem.isEmpty()) {
        VLLOG(4, "Not restoring the interface: %@ can't be read (%@)", archive_.path(), problem);
        return;
    }
    const auto coder = coders.find(root->restorationIdentifier());
    if (coder == coders.end()) {
        return;
    }
    VLLOG(7, "Restoring %@", root->restorationIdentifier());
    root->decodeRestorableStateWithCoder(coder->second);
}

void StateRestoration::saveApplicationState() {
    const std::shared_ptr<ViewController> root = identifiedRoot(delegate_);
    if (!root || !delegate_.applicationShouldSaveApplicationState()) {
        archive_.remove();
        return;
    }
    StateCoder coder;
    root->encodeRestorableStateWithCoder(coder);
    if (const std::optional<QString> problem =
            archive_.write({{root->restorationIdentifier(), coder}})) {
        VLLOG(3, "Can't save the interface in %@: %@", archive_.path(), *problem);
    }
}

}  // namespace vl
