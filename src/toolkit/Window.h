#pragma once

#include <QRect>
#include <QWidget>

#include <memory>

namespace vl {

class ViewController;

// Phone or tablet, as decided by the window's width.
enum class UserInterfaceIdiom { Phone, Tablet };

// The app's one top-level window: white, phone-sized by default and resizable, showing its root
// view controller's view over the whole area. It owns the root controller.
class Window : public QWidget {
    Q_OBJECT
public:
    // Windows at least this wide (in device-independent pixels) use the tablet idiom.
    static constexpr int kTabletMinimumWidth = 768;
    static constexpr QSize kPhoneSize{390, 844};

    // The frame the app's window gets: phone-sized and centred on the primary screen, shortened
    // to fit its available area; the zero rectangle when there is no screen.
    static QRect mainScreenBounds();
    static UserInterfaceIdiom idiomForWidth(int width);
    // The idiom for the window `widget` is in (its own width when it is not in a Window).
    static UserInterfaceIdiom idiomForWidget(const QWidget* widget);

    explicit Window(const QRect& frame = mainScreenBounds());
    ~Window() override;

    std::shared_ptr<ViewController> rootViewController() const { return root_; }
    void setRootViewController(const std::shared_ptr<ViewController>& controller);

    // Shows the window, raises it and gives it the focus.
    void makeKeyAndVisible();

    UserInterfaceIdiom userInterfaceIdiom() const { return idiomForWidth(width()); }

signals:
    void userInterfaceIdiomChanged(UserInterfaceIdiom idiom);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    std::shared_ptr<ViewController> root_;
    UserInterfaceIdiom lastIdiom_;
    bool appeared_ = false;
};

}  // namespace vl
