#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace vl {

// One button of an alert: a title, a style and a handler that runs after the alert went away.
// Disabling an action greys its button and makes taps do nothing.
class AlertAction : public QObject, public std::enable_shared_from_this<AlertAction> {
    Q_OBJECT
public:
    enum class Style { Default = 0, Cancel = 1, Destructive = 2 };
    using Handler = std::function<void(const std::shared_ptr<AlertAction>& action)>;

    static std::shared_ptr<AlertAction> actionWithTitle(const QString& title, Style style,
                                                        Handler handler = {});

    QString title() const { return title_; }
    Style style() const { return style_; }
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    const Handler& handler() const { return handler_; }

signals:
    void enabledChanged(bool enabled);

private:
    AlertAction() = default;

    QString title_;
    Style style_ = Style::Default;
    bool enabled_ = true;
    Handler handler_;
};

}  // namespace vl
