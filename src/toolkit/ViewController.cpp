#include "toolkit/ViewController.h"

#include "toolkit/Background.h"

#include "logging/VLLogging.h"
#include "toolkit/NavigationController.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/PresentationOverlay.h"
#include "toolkit/Window.h"

#include <QPalette>

namespace vl {

ViewController::ViewController() : navigationItem_(std::make_shared<NavigationItem>()) {}

ViewController::~ViewController() {
    delete overlay_.data();
    // The view belongs to the controller even while a container shows it.
    delete view_.data();
}

QWidget* ViewController::view() {
    if (!viewLoaded_) {
        viewLoaded_ = true;
        loadView();
        if (!view_) {
            setView(new QWidget);
        }
        viewDidLoad();
    }
    return view_;
}

void ViewController::encodeRestorableStateWithCoder(StateCoder&) {}

void ViewController::decodeRestorableStateWithCoder(const StateCoder&) {}

void ViewController::loadView() {
    auto* view = new QWidget;
    fillBackground(view);
    setView(view);
}

void ViewController::setView(QWidget* view) {
    if (view_ && view_ != view) {
        delete view_.data();
    }
    view_ = view;
    viewLoaded_ = true;
}

void ViewController::setTitle(const QString& title) {
    title_ = title;
    // The bar shows the navigation item's title, which follows the controller's.
    navigationItem_->setTitle(title);
}

void ViewController::setToolbarItems(const QList<std::shared_ptr<BarButtonItem>>& items,
                                     bool /*animated*/) {
    toolbarItems_ = items;
    if (std::shared_ptr<NavigationController> navigation = navigationController()) {
        if (navigation->topViewController().get() == this) {
            navigation->refreshBars();
        }
    }
}

std::shared_ptr<NavigationController> ViewController::navigationController() const {
    return navigationController_.lock();
}

void ViewController::setNavigationController(
    const std::shared_ptr<NavigationController>& controller) {
    navigationController_ = controller;
}

void ViewController::presentViewController(const std::shared_ptr<ViewController>& controller,
                                           bool animated, Completion completion) {
    if (!controller) {
        return;
    }
    if (presented_) {
        VLLOG(4, "Refusing to present %@: already presenting %@",
              QString::fromUtf8(controller->metaObject()->className()),
              QString::fromUtf8(presented_->metaObject()->className()));
        return;
    }
    presented_ = controller;
    controller->presenting_ = weak_from_this();
    QWidget* host = view()->window();
    auto* overlay =
        new PresentationOverlay(host, controller->view(), controller->modalPresentationStyle());
    controller->overlay_ = overlay;
    controller->viewWillAppear(animated);
    std::weak_ptr<ViewController> weakPresented = controller;
    overlay->present(animated, [weakPresented, animated, completion = std::move(completion)] {
        if (std::shared_ptr<ViewController> presented = weakPresented.lock()) {
            presented->viewDidAppear(animated);
        }
        if (completion) {
            completion();
        }
    });
}

void ViewController::dismissViewControllerAnimated(bool animated, Completion completion) {
    if (!presented_) {
        if (std::shared_ptr<ViewController> presenter = presenting_.lock()) {
            presenter->dismissViewControllerAnimated(animated, std::move(completion));
        } else if (completion) {
            completion();
        }
        return;
    }
    std::shared_ptr<ViewController> presented = presented_;
    // A controller presented by the one leaving goes with it.
    if (presented->presented_) {
        presented->dismissViewControllerAnimated(false);
    }
    presented->viewWillDisappear(animated);
    QPointer<PresentationOverlay> overlay = presented->overlay_;
    presented->overlay_ = nullptr;
    // The stack forgets the presented controller at once, so that a handler that runs after the
    // dismissal may present the next one.
    presented_.reset();
    presented->presenting_.reset();
    auto finish = [presented, animated, completion = std::move(completion)] {
        presented->viewDidDisappear(animated);
        if (completion) {
            completion();
        }
    };
    if (overlay) {
        overlay->dismiss(animated, std::move(finish));
    } else {
        finish();
    }
}

UserInterfaceIdiom ViewController::userInterfaceIdiom() {
    return Window::idiomForWidget(view());
}

void ViewController::setAssociatedObject(const QString& key, std::shared_ptr<void> object) {
    if (object) {
        associated_[key] = std::move(object);
    } else {
        associated_.erase(key);
    }
}

std::shared_ptr<void> ViewController::associatedObject(const QString& key) const {
    auto it = associated_.find(key);
    return it == associated_.end() ? nullptr : it->second;
}

void ViewController::viewWillAppear(bool) {}
void ViewController::viewDidAppear(bool) {}
void ViewController::viewWillDisappear(bool) {}
void ViewController::viewDidDisappear(bool) {}

}  // namespace vl
