// The share sheet of DocumentInteractionController.

#include "logging/VLLogging.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/DocumentInteractionControllerDelegate.h"
#include "toolkit/OpenWithViewController.h"
#include "toolkit/Window.h"

#include <QApplication>
#include <QFileInfo>

namespace vl {

std::shared_ptr<ViewController> DocumentInteractionController::topControllerForWidget(
    QWidget* widget) {
    Window* window = widget ? qobject_cast<Window*>(widget->window()) : nullptr;
    if (!widget) {
        for (QWidget* topLevel : QApplication::topLevelWidgets()) {
            if (auto* candidate = qobject_cast<Window*>(topLevel);
                candidate && candidate->isVisible()) {
                window = candidate;
                break;
            }
        }
    }
    std::shared_ptr<ViewController> top = window ? window->rootViewController() : nullptr;
    while (top && top->presentedViewController()) {
        top = top->presentedViewController();
    }
    return top;
}

void DocumentInteractionController::showFailure(const std::weak_ptr<ViewController>& presenter,
                                                const QString& title, const QString& message) {
    std::shared_ptr<ViewController> top = presenter.lock();
    if (!top) {
        top = topControllerForWidget(nullptr);
    }
    while (top && top->presentedViewController()) {
        top = top->presentedViewController();
    }
    if (!top) {
        return;
    }
    auto alert =
        AlertController::alertControllerWithTitle(title, message, AlertController::Style::Alert);
    alert->addAction(
        AlertAction::actionWithTitle(Strings::localized("OK"), AlertAction::Style::Default));
    top->presentViewController(alert, true);
}

std::shared_ptr<AlertController> DocumentInteractionController::makeOptionsMenu() {
    // The sheet's handlers hold this controller: it lives as long as its sheet is shown.
    auto self = shared_from_this();
    auto menu = AlertController::alertControllerWithTitle(name(), QString(),
                                                          AlertController::Style::ActionSheet);
    const QList<ApplicationRecord> apps = applicationsForOpenWith();
    if (!apps.isEmpty()) {
        std::weak_ptr<AlertController> weakMenu = menu;
        menu->setContentViewController(std::make_shared<OpenWithViewController>(
            apps, [self, weakMenu](const ApplicationRecord& app) {
                if (std::shared_ptr<AlertController> shown = weakMenu.lock()) {
                    shown->dismissViewControllerAnimated(true, [self, app] {
                        self->menuDidDismiss();
                        self->openDocumentWithApplication(app);
                    });
                }
            }));
    }

    const bool local = documentIsLocal();
    auto copy =
        AlertAction::actionWithTitle(Strings::localized("Copy"), AlertAction::Style::Default,
                                     [self](const std::shared_ptr<AlertAction>&) {
                                         self->copyToClipboard();
                                         self->menuDidDismiss();
                                     });
    copy->setEnabled(local);
    menu->addAction(copy);
    if (canShowInFolder()) {
        auto show = AlertAction::actionWithTitle(Strings::localized("Show in Folder"),
                                                 AlertAction::Style::Default,
                                                 [self](const std::shared_ptr<AlertAction>&) {
                                                     self->showInFolder();
                                                     self->menuDidDismiss();
                                                 });
        show->setEnabled(QFileInfo(url_.deletingLastPathComponent().path()).isDir());
        menu->addAction(show);
    }
    if (canSendByEmail()) {
        auto email = AlertAction::actionWithTitle(Strings::localized("Send by Email"),
                                                  AlertAction::Style::Default,
                                                  [self](const std::shared_ptr<AlertAction>&) {
                                                      self->sendByEmail();
                                                      self->menuDidDismiss();
                                                  });
        email->setEnabled(local);
        menu->addAction(email);
    }
    menu->addAction(AlertAction::actionWithTitle(
        Strings::localized("Cancel"), AlertAction::Style::Cancel,
        [self](const std::shared_ptr<AlertAction>&) { self->menuDidDismiss(); }));
    return menu;
}

bool DocumentInteractionController::presentOptionsMenu(
    const std::shared_ptr<ViewController>& presenter, const std::shared_ptr<AlertController>& menu,
    bool animated) {
    if (!presenter) {
        VLLOG(4, "No window to show the share sheet of %@ in", url_);
        return false;
    }
    presenter_ = presenter;
    menu_ = menu;
    presenter->presentViewController(menu, animated);
    return true;
}

bool DocumentInteractionController::presentOptionsMenuFromRectInViewAnimated(const QRect& rect,
                                                                             QWidget* view,
                                                                             bool animated) {
    std::shared_ptr<ViewController> presenter = view ? topControllerForWidget(view) : nullptr;
    if (!presenter) {
        return presentOptionsMenu(nullptr, nullptr, animated);
    }
    std::shared_ptr<AlertController> menu = makeOptionsMenu();
    menu->popoverPresentationController()->setSourceView(view);
    menu->popoverPresentationController()->setSourceRect(rect);
    return presentOptionsMenu(presenter, menu, animated);
}

bool DocumentInteractionController::presentOptionsMenuFromBarButtonItemAnimated(
    const std::shared_ptr<BarButtonItem>& item, bool animated) {
    std::shared_ptr<ViewController> presenter = topControllerForWidget(nullptr);
    if (!presenter) {
        return presentOptionsMenu(nullptr, nullptr, animated);
    }
    std::shared_ptr<AlertController> menu = makeOptionsMenu();
    menu->popoverPresentationController()->setBarButtonItem(item);
    return presentOptionsMenu(presenter, menu, animated);
}

void DocumentInteractionController::dismissMenuAnimated(bool animated) {
    if (std::shared_ptr<AlertController> menu = menu_.lock()) {
        menu->dismissViewControllerAnimated(
            animated, [self = shared_from_this()] { self->menuDidDismiss(); });
    }
}

void DocumentInteractionController::menuDidDismiss() {
    menu_.reset();
    if (std::shared_ptr<DocumentInteractionControllerDelegate> delegate = delegate_.lock()) {
        delegate->documentInteractionControllerDidDismissOptionsMenu(this);
    }
}

}  // namespace vl
