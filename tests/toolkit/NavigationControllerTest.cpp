#include "platform/app/NetworkActivityIndicator.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/ActivitySpinner.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/NavigationBar.h"
#include "toolkit/NavigationController.h"
#include "toolkit/NavigationControllerDelegate.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/Toolbar.h"

#include <QToolButton>

#include <gtest/gtest.h>

using namespace vl;

namespace {

// Records its life cycle so that tests can check the order of the calls.
class Screen : public ViewController {
public:
    explicit Screen(QString name) { setTitle(name); }
    QStringList calls;
    void viewWillAppear(bool) override { calls << QStringLiteral("willAppear"); }
    void viewDidAppear(bool) override { calls << QStringLiteral("didAppear"); }
    void viewWillDisappear(bool) override { calls << QStringLiteral("willDisappear"); }
    void viewDidDisappear(bool) override { calls << QStringLiteral("didDisappear"); }

protected:
    void viewDidLoad() override { calls << QStringLiteral("didLoad"); }
};

class ShownRecorder : public NavigationControllerDelegate {
public:
    QList<std::shared_ptr<ViewController>> shown;
    void navigationControllerDidShowViewController(const std::shared_ptr<NavigationController>&,
                                                   const std::shared_ptr<ViewController>& vc,
                                                   bool) override {
        shown.append(vc);
    }
};

class NavigationControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        nav->setDelegate(recorder);
        nav->loadViewIfNeeded();
    }
    std::shared_ptr<Screen> screen(const char* name) {
        return std::make_shared<Screen>(QString::fromLatin1(name));
    }

    VirtualDispatcher::Installation dispatch;
    std::shared_ptr<NavigationController> nav = std::make_shared<NavigationController>();
    std::shared_ptr<ShownRecorder> recorder = std::make_shared<ShownRecorder>();
};

TEST_F(NavigationControllerTest, PushPopAndReplaceKeepTheStackAndBackReferences) {
    auto a = screen("A"), b = screen("B"), c = screen("C");
    nav->setViewControllers({a}, false);
    nav->pushViewController(b, true);
    nav->pushViewController(c, false);
    EXPECT_EQ(nav->viewControllers(), (QList<std::shared_ptr<ViewController>>{a, b, c}));
    EXPECT_EQ(nav->topViewController(), c);
    EXPECT_EQ(b->navigationController(), nav);

    EXPECT_EQ(nav->popViewControllerAnimated(false), c);
    EXPECT_EQ(c->navigationController(), nullptr);
    EXPECT_EQ(nav->popToRootViewControllerAnimated(false),
              (QList<std::shared_ptr<ViewController>>{b}));
    EXPECT_EQ(nav->popViewControllerAnimated(false), nullptr) << "the root stays";

    nav->setViewControllers({c}, false);
    EXPECT_EQ(nav->viewControllers(), (QList<std::shared_ptr<ViewController>>{c}));
    EXPECT_EQ(a->navigationController(), nullptr);
    EXPECT_TRUE(c->view()->isVisibleTo(nav->view()));
}

TEST_F(NavigationControllerTest, DelegateHearsOfTheShownControllerAfterTheTransition) {
    auto a = screen("A"), b = screen("B"), c = screen("C");
    nav->setViewControllers({a}, false);
    EXPECT_TRUE(recorder->shown.isEmpty()) << "not while the stack is being changed";
    dispatch->runUntilIdle();
    EXPECT_EQ(recorder->shown, (QList<std::shared_ptr<ViewController>>{a}));

    nav->pushViewController(b, false);
    nav->popViewControllerAnimated(false);
    dispatch->runUntilIdle();
    EXPECT_EQ(recorder->shown.last(), a);

    // Two replacements in a row: only the controller still on top is announced.
    recorder->shown.clear();
    nav->setViewControllers({b}, false);
    nav->setViewControllers({c}, false);
    dispatch->runUntilIdle();
    EXPECT_EQ(recorder->shown, (QList<std::shared_ptr<ViewController>>{c}));
}

TEST_F(NavigationControllerTest, LifeCycleLoadsOnceAndAppearsAroundTransitions) {
    auto a = screen("A"), b = screen("B");
    nav->setViewControllers({a}, false);
    a->calls.clear();
    nav->pushViewController(b, false);
    EXPECT_EQ(b->calls, (QStringList{"didLoad", "willAppear", "didAppear"}));
    EXPECT_EQ(a->calls, (QStringList{"willDisappear", "didDisappear"}));
    nav->popViewControllerAnimated(false);
    nav->pushViewController(b, false);
    EXPECT_EQ(b->calls.count(QStringLiteral("didLoad")), 1);
}

TEST_F(NavigationControllerTest, BarsShowTheTopControllersItems) {
    auto a = screen("Documents"), b = screen("Work");
    nav->setViewControllers({a, b}, false);
    NavigationBar* bar = nav->navigationBar();
    EXPECT_EQ(bar->displayedTitle(), QStringLiteral("Work"));
    EXPECT_TRUE(bar->isBackButtonVisible());
    EXPECT_TRUE(bar->backButton()->text().contains(QStringLiteral("Documents")));
    b->navigationItem()->setHidesBackButton(true);
    EXPECT_FALSE(bar->isBackButtonVisible());
    b->navigationItem()->setTitle(QStringLiteral("Select Items"));
    EXPECT_EQ(bar->displayedTitle(), QStringLiteral("Select Items"));

    b->navigationItem()->setHidesBackButton(false);
    bar->backButton()->click();
    EXPECT_EQ(nav->topViewController(), a);
    EXPECT_FALSE(bar->isBackButtonVisible());

    auto space = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FlexibleSpace);
    auto trash = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Trash);
    a->setToolbarItems({space, trash, space});
    EXPECT_EQ(nav->toolbar()->items().size(), 3);
    ASSERT_NE(nav->toolbar()->widgetForItem(trash), nullptr);
    EXPECT_EQ(nav->toolbar()->widgetForItem(space), nullptr);
    // An icon button is named for a screen reader by what it does.
    EXPECT_EQ(nav->toolbar()->widgetForItem(trash)->accessibleName(), QStringLiteral("Delete"));
    auto share = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Action);
    a->navigationItem()->setRightBarButtonItem(share);
    ASSERT_NE(nav->navigationBar()->widgetForItem(share), nullptr);
    EXPECT_EQ(nav->navigationBar()->widgetForItem(share)->accessibleName(),
              QStringLiteral("Share"));
    nav->setToolbarHidden(true);
    EXPECT_TRUE(nav->isToolbarHidden());
    EXPECT_FALSE(nav->toolbar()->isVisibleTo(nav->view()));
}

class Target {
public:
    int taps = 0;
    void tapped(const std::shared_ptr<BarButtonItem>&) { ++taps; }
};

TEST_F(NavigationControllerTest, BarItemsSendTheirActionToALiveTargetWhileEnabled) {
    auto a = screen("A");
    nav->setViewControllers({a}, false);
    auto cancel = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Cancel);
    EXPECT_EQ(cancel->title(), QStringLiteral("Cancel"));
    auto target = std::make_shared<Target>();
    cancel->setTarget(target, &Target::tapped);
    a->navigationItem()->setRightBarButtonItem(cancel);

    auto* button = qobject_cast<QToolButton*>(nav->navigationBar()->widgetForItem(cancel));
    ASSERT_NE(button, nullptr);
    button->click();
    EXPECT_EQ(target->taps, 1);

    cancel->setEnabled(false);
    EXPECT_FALSE(button->isEnabled());
    cancel->trigger();
    EXPECT_EQ(target->taps, 1);

    cancel->setEnabled(true);
    std::weak_ptr<Target> gone = target;
    target.reset();
    cancel->trigger();  // must not reach the destroyed target
    EXPECT_TRUE(gone.expired());
}

TEST_F(NavigationControllerTest, SpinnerFollowsTheNetworkActivityIndicator) {
    NavigationBar* bar = nav->navigationBar();
    NetworkActivityIndicator::shared().setNetworkActivityIndicatorVisible(true);
    dispatch->runUntilIdle();
    EXPECT_TRUE(bar->activitySpinner()->isAnimating());
    NetworkActivityIndicator::shared().setNetworkActivityIndicatorVisible(false);
    dispatch->runUntilIdle();
    EXPECT_FALSE(bar->activitySpinner()->isAnimating());
}

TEST_F(NavigationControllerTest, ModalPresentationAndDismissal) {
    auto a = screen("A"), modal = screen("Modal"), other = screen("Other");
    nav->setViewControllers({a}, false);
    bool presented = false;
    nav->presentViewController(modal, false, [&] { presented = true; });
    EXPECT_TRUE(presented);
    EXPECT_EQ(nav->presentedViewController(), modal);
    EXPECT_EQ(modal->presentingViewController(), nav);
    EXPECT_EQ(nav->visibleViewController(), modal);
    EXPECT_TRUE(nav->view()->isAncestorOf(modal->view()));

    nav->presentViewController(other, false);
    EXPECT_EQ(nav->presentedViewController(), modal) << "one presented controller at a time";

    bool dismissed = false;
    modal->dismissViewControllerAnimated(false, [&] { dismissed = true; });
    EXPECT_TRUE(dismissed);
    EXPECT_EQ(nav->presentedViewController(), nullptr);
    EXPECT_EQ(modal->presentingViewController(), nullptr);
    EXPECT_FALSE(nav->view()->isAncestorOf(modal->view()));
    EXPECT_EQ(modal->calls.filter(QStringLiteral("Disappear")).size(), 2);
}

}  // namespace
