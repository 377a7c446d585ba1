#include "app/FirstPaintWatcher.h"

#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "platform/dispatch/Dispatch.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/NavigationController.h"
#include "toolkit/Window.h"

#include <QCoreApplication>
#include <QEvent>

namespace vl {

FirstPaintWatcher::FirstPaintWatcher(Window& window, std::function<void()> afterFirstPaint)
    : window_(&window), afterFirstPaint_(std::move(afterFirstPaint)) {
    // Paint events go to the widget painted, which does not exist yet: only the application
    // sees them all.
    QCoreApplication::instance()->installEventFilter(this);
}

FirstPaintWatcher::~FirstPaintWatcher() {
    if (QCoreApplication* application = QCoreApplication::instance()) {
        application->removeEventFilter(this);
    }
}

bool FirstPaintWatcher::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Paint || seen_) {
        return false;
    }
    bool rootList = false;
    if (QWidget* widget = firstScreenWidget(&rootList); widget && watched == widget) {
        seen_ = true;
        QCoreApplication::instance()->removeEventFilter(this);
        // The paint itself runs once this filter returns; what follows waits for it and for
        // the window's flush to the display.
        const QPointer<FirstPaintWatcher> self(this);
        Dispatch::mainQueue()->async([self, rootList] {
            if (self) {
                self->painted(rootList);
            }
        });
    }
    return false;
}

QWidget* FirstPaintWatcher::firstScreenWidget(bool* isRootList) const {
    if (!window_) {
        return nullptr;
    }
    std::shared_ptr<ViewController> top = window_->rootViewController();
    if (const auto navigation = std::dynamic_pointer_cast<NavigationController>(top)) {
        top = navigation->topViewController();
    }
    if (!top || !top->isViewLoaded()) {
        return nullptr;
    }
    if (const auto list = std::dynamic_pointer_cast<DocumentListController>(top)) {
        *isRootList = true;
        return list->hasLoaded() && list->listView() ? list->listView()->viewport() : nullptr;
    }
    return top->view();
}

void FirstPaintWatcher::painted(bool rootList) {
    VLLOG(6, "%s", rootList ? RootListMessage : WindowMessage);
    // The benchmark waits for this record in the log file: sent now, it is not held back with
    // the records gathering for the log queue.
    VLSLSClient::SLSClient()->flush();
    if (afterFirstPaint_) {
        std::function<void()> work = std::move(afterFirstPaint_);
        work();
    }
}

}  // namespace vl
