#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>

namespace vl {

class BarButtonItem;
class NavigationController;
class NavigationItem;
class PresentationOverlay;
class StateCoder;
enum class UserInterfaceIdiom;

// How a presented controller covers its presenter: the whole window, a centred card over a dimmed
// window (alerts), a sheet anchored at the bottom on phones (action sheets), or over the current
// context (the whole window too, the presenter's screen left in place behind it).
enum class ModalPresentationStyle { FullScreen, AlertCard, ActionSheet, OverCurrentContext };

// The base of every screen: a lazily created view with the load / did-load / will-appear /
// will-disappear life cycle, a title, a navigation item, toolbar items, a restoration identifier,
// and modal presentation of another controller.
//
// Controllers are owned through std::shared_ptr (create them with std::make_shared); the
// navigation stack and the presenter hold them strongly, back references are weak. A controller
// is a QObject so that widgets can connect to it with the controller as context, which cuts the
// connection when the controller goes away; it never has a QObject parent. Main thread only.
class ViewController : public QObject, public std::enable_shared_from_this<ViewController> {
    Q_OBJECT
public:
    using Completion = std::function<void()>;

    ViewController();
    ~ViewController() override;

    // The view, loaded on first use: loadView() then viewDidLoad().
    QWidget* view();
    bool isViewLoaded() const { return viewLoaded_; }
    void loadViewIfNeeded() { view(); }

    QString title() const { return title_; }
    virtual void setTitle(const QString& title);

    std::shared_ptr<NavigationItem> navigationItem() const { return navigationItem_; }

    const QList<std::shared_ptr<BarButtonItem>>& toolbarItems() const { return toolbarItems_; }
    void setToolbarItems(const QList<std::shared_ptr<BarButtonItem>>& items, bool animated = false);

    QString restorationIdentifier() const { return restorationIdentifier_; }
    void setRestorationIdentifier(const QString& identifier) {
        restorationIdentifier_ = identifier;
    }

    // What the controller keeps for the next start under its restoration identifier, and takes
    // back then; the base keeps nothing.
    virtual void encodeRestorableStateWithCoder(StateCoder& coder);
    virtual void decodeRestorableStateWithCoder(const StateCoder& coder);

    // The navigation controller whose stack holds this controller, if any.
    std::shared_ptr<NavigationController> navigationController() const;

    // --- Modal presentation ---
    // Shows `controller` over this controller's window. Refused (logged) while this controller
    // already presents one. The completion runs once the controller is shown.
    void presentViewController(const std::shared_ptr<ViewController>& controller, bool animated,
                               Completion completion = {});
    // Dismisses the controller this one presents, or, when it presents none, this controller
    // from its presenter.
    void dismissViewControllerAnimated(bool animated, Completion completion = {});
    std::shared_ptr<ViewController> presentedViewController() const { return presented_; }
    std::shared_ptr<ViewController> presentingViewController() const { return presenting_.lock(); }
    virtual ModalPresentationStyle modalPresentationStyle() const {
        return ModalPresentationStyle::FullScreen;
    }

    // Phone or tablet, by the width of the window this controller's view is in.
    UserInterfaceIdiom userInterfaceIdiom();

    // Objects other code attaches to a controller for as long as it lives (a folder list's
    // status bar, for example); a null value removes the entry.
    void setAssociatedObject(const QString& key, std::shared_ptr<void> object);
    std::shared_ptr<void> associatedObject(const QString& key) const;

    // This controller as the subclass it was made as.
    template <typename T>
    std::shared_ptr<T> sharedAs() {
        return std::dynamic_pointer_cast<T>(shared_from_this());
    }

    // --- Life cycle, called by the containers ---
    virtual void viewWillAppear(bool animated);
    virtual void viewDidAppear(bool animated);
    virtual void viewWillDisappear(bool animated);
    virtual void viewDidDisappear(bool animated);

protected:
    // Makes the view; the default is a plain white widget. Overrides call setView().
    virtual void loadView();
    virtual void viewDidLoad() {}
    void setView(QWidget* view);

private:
    friend class NavigationController;
    friend class PresentationOverlay;

    void setNavigationController(const std::shared_ptr<NavigationController>& controller);

    QPointer<QWidget> view_;
    bool viewLoaded_ = false;
    QString title_;
    QString restorationIdentifier_;
    std::shared_ptr<NavigationItem> navigationItem_;
    QList<std::shared_ptr<BarButtonItem>> toolbarItems_;
    std::weak_ptr<NavigationController> navigationController_;
    std::shared_ptr<ViewController> presented_;
    std::weak_ptr<ViewController> presenting_;
    QPointer<PresentationOverlay> overlay_;
    std::map<QString, std::shared_ptr<void>> associated_;
};

}  // namespace vl
