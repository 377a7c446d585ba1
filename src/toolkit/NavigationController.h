#pragma once

#include "toolkit/ViewController.h"

#include <QList>
#include <QPointer>

#include <memory>

class QVariantAnimation;

namespace vl {

class NavigationBar;
class NavigationControllerDelegate;
class Toolbar;

// A stack of view controllers under a navigation bar (back button, title, the top controller's
// bar items, the network activity spinner) and above an optional toolbar that shows the top
// controller's toolbar items. Push and pop slide when animated and the view is on screen; the
// delegate hears about each shown controller once the transition has ended (on a later turn of
// the main queue when not animated), as long as that controller is still on top.
class NavigationController : public ViewController {
    Q_OBJECT
public:
    NavigationController();
    explicit NavigationController(const std::shared_ptr<ViewController>& rootViewController);
    ~NavigationController() override;

    const QList<std::shared_ptr<ViewController>>& viewControllers() const { return stack_; }
    // Replaces the whole stack; the last controller ends up on top.
    void setViewControllers(const QList<std::shared_ptr<ViewController>>& controllers,
                            bool animated);
    std::shared_ptr<ViewController> topViewController() const;
    // The controller shown: a presented one when there is one, else the top of the stack.
    std::shared_ptr<ViewController> visibleViewController() const;

    void pushViewController(const std::shared_ptr<ViewController>& controller, bool animated);
    // Pops the top controller and returns it; nothing when only the root is left.
    std::shared_ptr<ViewController> popViewControllerAnimated(bool animated);
    // Pops down to `controller`; returns what was popped (empty when it is not on the stack).
    QList<std::shared_ptr<ViewController>> popToViewController(
        const std::shared_ptr<ViewController>& controller, bool animated);
    QList<std::shared_ptr<ViewController>> popToRootViewControllerAnimated(bool animated);

    std::shared_ptr<NavigationControllerDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<NavigationControllerDelegate>& delegate) {
        delegate_ = delegate;
    }

    bool isToolbarHidden() const { return toolbarHidden_; }
    void setToolbarHidden(bool hidden, bool animated = false);
    bool isNavigationBarHidden() const { return navigationBarHidden_; }
    void setNavigationBarHidden(bool hidden, bool animated = false);

    // The bar widgets, for layout around them and for driving them in tests.
    NavigationBar* navigationBar();
    Toolbar* toolbar();

    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;

    // The back button's work: pops the top controller, animated.
    void goBack();

protected:
    void loadView() override;

private:
    friend class ViewController;

    enum class Direction { Forward, Backward, Replace };

    void transition(const std::shared_ptr<ViewController>& from, Direction direction,
                    bool animated);
    void finishTransition();
    void showTop();
    void refreshBars();
    void announceShown(const std::shared_ptr<ViewController>& controller, bool animated);
    void layoutContent();
    bool eventFilter(QObject* watched, QEvent* event) override;

    QList<std::shared_ptr<ViewController>> stack_;
    std::weak_ptr<NavigationControllerDelegate> delegate_;
    bool toolbarHidden_ = false;
    bool navigationBarHidden_ = false;

    QPointer<NavigationBar> navigationBar_;
    QPointer<Toolbar> toolbar_;
    QPointer<QWidget> content_;
    // The view on screen; its controller may already be gone from the stack while it slides out.
    QPointer<QWidget> shownView_;
    std::shared_ptr<ViewController> outgoing_;
    QPointer<QVariantAnimation> animation_;
    std::shared_ptr<ViewController> pendingShown_;
    bool pendingAnimated_ = false;
};

}  // namespace vl
