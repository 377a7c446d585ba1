#include "toolkit/NavigationController.h"

#include "toolkit/Background.h"

#include "platform/dispatch/Dispatch.h"
#include "toolkit/NavigationBar.h"
#include "toolkit/NavigationControllerDelegate.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/Toolbar.h"

#include <QEvent>
#include <QPalette>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace vl {

namespace {
constexpr int kSlideMilliseconds = 250;
}

NavigationController::NavigationController() = default;

NavigationController::NavigationController(const std::shared_ptr<ViewController>& root) {
    if (root) {
        stack_.append(root);
    }
}

NavigationController::~NavigationController() {
    if (animation_) {
        animation_->stop();
        delete animation_.data();
    }
    // Views of the stack belong to their controllers, which may outlive this one; so does the
    // view still sliding out (the shared quick preview's, for one).
    QList<std::shared_ptr<ViewController>> shown = stack_;
    if (outgoing_) {
        shown.append(outgoing_);
    }
    for (const std::shared_ptr<ViewController>& controller : shown) {
        if (controller->isViewLoaded() && controller->view_ && content_ &&
            controller->view_->parentWidget() == content_) {
            controller->view_->hide();
            controller->view_->setParent(nullptr);
        }
    }
}

void NavigationController::loadView() {
    auto* view = new QWidget;
    fillBackground(view);
    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    navigationBar_ = new NavigationBar(view);
    navigationBar_->setBackAction([this] { goBack(); });
    content_ = new QWidget(view);
    content_->installEventFilter(this);
    toolbar_ = new Toolbar(view);
    toolbar_->setObjectName(QStringLiteral("toolbar"));
    toolbar_->setAutoFillBackground(true);
    QPalette barPalette = toolbar_->palette();
    barPalette.setColor(QPalette::Window, QColor(247, 247, 247));
    toolbar_->setPalette(barPalette);
    toolbar_->setMinimumHeight(44);
    layout->addWidget(navigationBar_);
    layout->addWidget(content_, 1);
    layout->addWidget(toolbar_);
    setView(view);
    for (const std::shared_ptr<ViewController>& controller : stack_) {
        controller->setNavigationController(sharedAs<NavigationController>());
    }
    showTop();
    refreshBars();
}

NavigationBar* NavigationController::navigationBar() {
    view();
    return navigationBar_;
}

Toolbar* NavigationController::toolbar() {
    view();
    return toolbar_;
}

std::shared_ptr<ViewController> NavigationController::topViewController() const {
    return stack_.isEmpty() ? nullptr : stack_.last();
}

std::shared_ptr<ViewController> NavigationController::visibleViewController() const {
    if (std::shared_ptr<ViewController> presented = presentedViewController()) {
        return presented;
    }
    return topViewController();
}

void NavigationController::pushViewController(const std::shared_ptr<ViewController>& controller,
                                              bool animated) {
    if (!controller || stack_.contains(controller)) {
        return;
    }
    std::shared_ptr<ViewController> from = topViewController();
    stack_.append(controller);
    controller->setNavigationController(sharedAs<NavigationController>());
    transition(from, Direction::Forward, animated);
}

std::shared_ptr<ViewController> NavigationController::popViewControllerAnimated(bool animated) {
    if (stack_.size() <= 1) {
        return nullptr;
    }
    std::shared_ptr<ViewController> popped = stack_.takeLast();
    popped->setNavigationController(nullptr);
    transition(popped, Direction::Backward, animated);
    return popped;
}

QList<std::shared_ptr<ViewController>> NavigationController::popToViewController(
    const std::shared_ptr<ViewController>& controller, bool animated) {
    const qsizetype index = stack_.indexOf(controller);
    if (index < 0 || index == stack_.size() - 1) {
        return {};
    }
    std::shared_ptr<ViewController> from = topViewController();
    QList<std::shared_ptr<ViewController>> popped = stack_.mid(index + 1);
    stack_.resize(index + 1);
    for (const std::shared_ptr<ViewController>& gone : popped) {
        gone->setNavigationController(nullptr);
        if (gone != from && gone->view_ && content_ && gone->view_->parentWidget() == content_) {
            gone->view_->hide();
            gone->view_->setParent(nullptr);
        }
    }
    transition(from, Direction::Backward, animated);
    return popped;
}

QList<std::shared_ptr<ViewController>> NavigationController::popToRootViewControllerAnimated(
    bool animated) {
    return stack_.isEmpty() ? QList<std::shared_ptr<ViewController>>{}
                            : popToViewController(stack_.first(), animated);
}

void NavigationController::setViewControllers(
    const QList<std::shared_ptr<ViewController>>& controllers, bool animated) {
    std::shared_ptr<ViewController> from = topViewController();
    const bool topIsNew = !controllers.isEmpty() && !stack_.contains(controllers.last());
    for (const std::shared_ptr<ViewController>& old : stack_) {
        if (controllers.contains(old)) {
            continue;
        }
        old->setNavigationController(nullptr);
        if (old != from && old->view_ && content_ && old->view_->parentWidget() == content_) {
            old->view_->hide();
            old->view_->setParent(nullptr);
        }
    }
    stack_.clear();
    for (const std::shared_ptr<ViewController>& controller : controllers) {
        if (controller && !stack_.contains(controller)) {
            stack_.append(controller);
            controller->setNavigationController(sharedAs<NavigationController>());
        }
    }
    transition(from, topIsNew ? Direction::Forward : Direction::Backward, animated);
}

void NavigationController::transition(const std::shared_ptr<ViewController>& from,
                                      Direction direction, bool animated) {
    finishTransition();
    std::shared_ptr<ViewController> to = topViewController();
    if (std::shared_ptr<NavigationControllerDelegate> d = delegate(); d && to) {
        d->navigationControllerWillShowViewController(sharedAs<NavigationController>(), to,
                                                      animated);
    }
    if (!isViewLoaded()) {
        // Nothing is on screen yet: the view shows the top when it loads.
        if (to) {
            announceShown(to, false);
        }
        return;
    }
    const bool changed = from != to;
    if (to) {
        to->loadViewIfNeeded();
    }
    if (changed && from) {
        from->viewWillDisappear(animated);
    }
    if (changed && to) {
        to->viewWillAppear(animated);
    }
    outgoing_ = changed ? from : nullptr;
    pendingShown_ = to;
    pendingAnimated_ = animated;
    showTop();
    refreshBars();

    QWidget* fromView = outgoing_ && outgoing_->view_ ? outgoing_->view_.data() : nullptr;
    QWidget* toView = to ? to->view() : nullptr;
    if (!animated || !changed || !fromView || !toView || !content_->isVisible()) {
        finishTransition();
        return;
    }
    // Slide: forward brings the new view in from the right over the old one; backward uncovers
    // the new view by sliding the old one out to the right.
    fromView->show();
    if (direction == Direction::Backward) {
        fromView->raise();
    } else {
        toView->raise();
    }
    auto* animation = new QVariantAnimation(this);
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    animation->setDuration(kSlideMilliseconds);
    animation->setEasingCurve(QEasingCurve::OutCubic);
    const int width = content_->width();
    const bool forward = direction != Direction::Backward;
    QPointer<QWidget> fromPtr = fromView;
    QPointer<QWidget> toPtr = toView;
    connect(animation, &QVariantAnimation::valueChanged, this,
            [fromPtr, toPtr, width, forward](const QVariant& value) {
                const double t = value.toDouble();
                if (forward) {
                    if (toPtr)
                        toPtr->move(int(width * (1 - t)), 0);
                    if (fromPtr)
                        fromPtr->move(int(-width * 0.3 * t), 0);
                } else {
                    if (toPtr)
                        toPtr->move(int(-width * 0.3 * (1 - t)), 0);
                    if (fromPtr)
                        fromPtr->move(int(width * t), 0);
                }
            });
    connect(animation, &QVariantAnimation::finished, this, [this] { finishTransition(); });
    animation_ = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void NavigationController::finishTransition() {
    if (animation_) {
        QVariantAnimation* animation = animation_;
        animation_ = nullptr;
        animation->disconnect(this);
        animation->stop();
    }
    std::shared_ptr<ViewController> to = pendingShown_;
    std::shared_ptr<ViewController> from = outgoing_;
    const bool animated = pendingAnimated_;
    pendingShown_.reset();
    outgoing_.reset();
    if (!to && !from) {
        return;
    }
    if (from && from->view_) {
        from->view_->hide();
        if (!stack_.contains(from)) {
            from->view_->setParent(nullptr);
        }
    }
    layoutContent();
    if (from) {
        from->viewDidDisappear(animated);
    }
    if (to && from) {
        to->viewDidAppear(animated);
    }
    if (to) {
        announceShown(to, animated);
    }
}

void NavigationController::showTop() {
    if (!content_) {
        return;
    }
    std::shared_ptr<ViewController> top = topViewController();
    for (const std::shared_ptr<ViewController>& controller : stack_) {
        if (controller != top && controller != outgoing_ && controller->view_) {
            controller->view_->hide();
        }
    }
    if (!top) {
        return;
    }
    QWidget* view = top->view();
    if (view->parentWidget() != content_) {
        view->setParent(content_);
    }
    view->setGeometry(content_->rect());
    view->show();
    view->raise();
}

void NavigationController::refreshBars() {
    if (!navigationBar_) {
        return;
    }
    std::shared_ptr<ViewController> top = topViewController();
    QString backTitle;
    if (stack_.size() > 1) {
        const std::shared_ptr<ViewController>& previous = stack_.at(stack_.size() - 2);
        backTitle = previous->navigationItem()->title();
        if (backTitle.isEmpty()) {
            backTitle = previous->title();
        }
        if (backTitle.isNull()) {
            backTitle = QStringLiteral("");
        }
    }
    navigationBar_->setItem(top ? top->navigationItem() : nullptr, top ? top->title() : QString(),
                            backTitle);
    navigationBar_->setVisible(!navigationBarHidden_);
    toolbar_->setItems(top ? top->toolbarItems() : QList<std::shared_ptr<BarButtonItem>>{});
    toolbar_->setVisible(!toolbarHidden_);
}

void NavigationController::announceShown(const std::shared_ptr<ViewController>& controller,
                                         bool animated) {
    std::weak_ptr<NavigationController> weakSelf = sharedAs<NavigationController>();
    std::weak_ptr<ViewController> weakShown = controller;
    Dispatch::mainQueue()->async([weakSelf, weakShown, animated] {
        std::shared_ptr<NavigationController> self = weakSelf.lock();
        std::shared_ptr<ViewController> shown = weakShown.lock();
        // A controller replaced before the callback came is no longer worth configuring.
        if (!self || !shown || self->topViewController() != shown) {
            return;
        }
        if (std::shared_ptr<NavigationControllerDelegate> d = self->delegate()) {
            d->navigationControllerDidShowViewController(self, shown, animated);
        }
    });
}

void NavigationController::setToolbarHidden(bool hidden, bool /*animated*/) {
    toolbarHidden_ = hidden;
    if (toolbar_) {
        toolbar_->setVisible(!hidden);
    }
}

void NavigationController::setNavigationBarHidden(bool hidden, bool /*animated*/) {
    navigationBarHidden_ = hidden;
    if (navigationBar_) {
        navigationBar_->setVisible(!hidden);
    }
}

void NavigationController::goBack() {
    popViewControllerAnimated(true);
}

void NavigationController::layoutContent() {
    if (!content_) {
        return;
    }
    if (std::shared_ptr<ViewController> top = topViewController(); top && top->view_) {
        top->view_->setGeometry(content_->rect());
    }
}

bool NavigationController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == content_ && event->type() == QEvent::Resize && !animation_) {
        layoutContent();
    }
    return ViewController::eventFilter(watched, event);
}

void NavigationController::viewWillAppear(bool animated) {
    if (std::shared_ptr<ViewController> top = topViewController()) {
        top->viewWillAppear(animated);
    }
}

void NavigationController::viewDidAppear(bool animated) {
    if (std::shared_ptr<ViewController> top = topViewController()) {
        top->viewDidAppear(animated);
    }
}

void NavigationController::viewWillDisappear(bool animated) {
    if (std::shared_ptr<ViewController> top = topViewController()) {
        top->viewWillDisappear(animated);
    }
}

void NavigationController::viewDidDisappear(bool animated) {
    if (std::shared_ptr<ViewController> top = topViewController()) {
        top->viewDidDisappear(animated);
    }
}

}  // namespace vl
