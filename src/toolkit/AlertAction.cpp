#include "toolkit/AlertAction.h"

namespace vl {

std::shared_ptr<AlertAction> AlertAction::actionWithTitle(const QString& title, Style style,
                                                          Handler handler) {
    return actionWithTitle(title, style, std::move(handler), {});
}

std::shared_ptr<AlertAction> AlertAction::actionWithTitle(const QString& title, Style style,
                                                          Handler handler,
                                                          ShouldDismissHandler shouldDismiss) {
    std::shared_ptr<AlertAction> action(new AlertAction);
    action->title_ = title;
    action->style_ = style;
    action->handler_ = std::move(handler);
    action->shouldDismiss_ = std::move(shouldDismiss);
    return action;
}

void AlertAction::setEnabled(bool enabled) {
    if (enabled_ != enabled) {
        enabled_ = enabled;
        emit enabledChanged(enabled);
    }
}

}  // namespace vl
