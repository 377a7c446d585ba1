#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace vl {

// One button of an alert: a title, a style and a handler that runs after the alert went away.
// Disabling an action greys its button and makes taps do nothing. An action may also carry a
// should-dismiss hook: a tap asks it first, and a no keeps the alert up without the handler.
class AlertAction : public QObject, public std::enable_shared_from_this<AlertAction> {
    Q_OBJECT
public:
    enum class Style { Default = 0, Cancel = 1, Destructive = 2 };
    using Handler = std::function<void(const std::shared_ptr<AlertAction>& action)>;
    using ShouldDismissHandler = std::function<bool()>;

    static std::shared_ptr<AlertAction> actionWithTitle(const QString& title, Style style,
                                                        Handler handler = {});
    static std::shared_ptr<AlertAction> actionWithTitle(const QString& title, Style style,
                                                        Handler handler,
                                                        ShouldDismissHandler shouldDismiss);

    QString title() const { return title_; }
    Style style() const { return style_; }
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    const Handler& handler() const { return handler_; }
    void setShouldDismissHandler(ShouldDismissHandler shouldDismiss) {
        shouldDismiss_ = std::move(shouldDismiss);
    }
    // The hook's answer; yes when there is none.
    bool shouldDismiss() const { return !shouldDismiss_ || shouldDismiss_(); }

signals:
    void enabledChanged(bool enabled);

private:
    AlertAction() = default;

    QString title_;
    Style style_ = Style::Default;
    bool enabled_ = true;
    Handler handler_;
    ShouldDismissHandler shouldDismiss_;
};

}  // namespace vl
