#pragma once

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

namespace vl {

// An item of a navigation bar or toolbar: a titled button, an icon button, a custom view, or one
// of the system items. A tap sends the item's action to its target; the target is held weakly and
// a gone target gets nothing. Bars watch changed() and redraw. Main thread only.
class BarButtonItem : public QObject, public std::enable_shared_from_this<BarButtonItem> {
    Q_OBJECT
public:
    // The numbering of the platform's system items.
    enum class SystemItem {
        Done = 0,
        Cancel = 1,
        Edit = 2,
        Save = 3,
        Add = 4,
        FlexibleSpace = 5,
        FixedSpace = 6,
        Compose = 7,
        Reply = 8,
        Action = 9,
        Organize = 10,
        Bookmarks = 11,
        Search = 12,
        Refresh = 13,
        Stop = 14,
        Camera = 15,
        Trash = 16,
    };
    enum class Style { Plain = 0, Bordered = 1, Done = 2 };
    using Action = std::function<void(const std::shared_ptr<BarButtonItem>& sender)>;

    static std::shared_ptr<BarButtonItem> withTitle(const QString& title, Style style,
                                                    Action action = {});
    static std::shared_ptr<BarButtonItem> withIcon(const QIcon& icon, Style style,
                                                   Action action = {});
    static std::shared_ptr<BarButtonItem> withSystemItem(SystemItem item, Action action = {});
    // The item shows `view` and takes ownership of it; a tap on the view is the view's business
    // (connect its own signals).
    static std::shared_ptr<BarButtonItem> withCustomView(QWidget* view);

    // Sends `action` to `target` on a tap while the target is alive.
    template <typename T>
    void setTarget(const std::shared_ptr<T>& target,
                   void (T::*action)(const std::shared_ptr<BarButtonItem>&)) {
        action_ = [weak = std::weak_ptr<T>(target),
                   action](const std::shared_ptr<BarButtonItem>& sender) {
            if (auto strong = weak.lock()) {
                ((*strong).*action)(sender);
            }
        };
    }
    void setAction(Action action) { action_ = std::move(action); }

    // What a tap does: the action, when the item is enabled. Space items do nothing.
    void trigger();

    QString title() const { return title_; }
    void setTitle(const QString& title);
    QIcon icon() const { return icon_; }
    // What a screen reader says for the item: its title, else the name of its icon's action.
    QString accessibleName() const { return title_.isEmpty() ? accessibleName_ : title_; }
    void setAccessibleName(const QString& name);
    Style style() const { return style_; }
    bool isSystemItem() const { return hasSystemItem_; }
    SystemItem systemItem() const { return systemItem_; }
    bool isFlexibleSpace() const {
        return hasSystemItem_ && systemItem_ == SystemItem::FlexibleSpace;
    }
    bool isFixedSpace() const { return hasSystemItem_ && systemItem_ == SystemItem::FixedSpace; }
    bool isSpace() const { return isFlexibleSpace() || isFixedSpace(); }
    // The width of a fixed space, in pixels (0 gives the default gap).
    int width() const { return width_; }
    void setWidth(int width);

    QWidget* customView() const { return customView_; }

    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);

    ~BarButtonItem() override;

signals:
    void changed();

private:
    BarButtonItem() = default;

    QString title_;
    QIcon icon_;
    QString accessibleName_;
    Style style_ = Style::Plain;
    bool hasSystemItem_ = false;
    SystemItem systemItem_ = SystemItem::Done;
    int width_ = 0;
    QPointer<QWidget> customView_;
    bool enabled_ = true;
    Action action_;
};

}  // namespace vl
