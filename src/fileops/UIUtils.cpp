#include "fileops/UIUtils.h"

#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "model/VLRAppBookmarks.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/Window.h"

#include <QApplication>

namespace vl {

namespace {

Error invalidNameError() {
    return Error(Error::FileErrorDomain, Error::FileWriteInvalidFileName);
}

QString extensionOfName(const QString& name) {
    return Url::fromPath(QStringLiteral("/") + name).pathExtension();
}

}  // namespace

std::optional<Error> UIUtils::renameItemAtURLToName(const Url& url, const QString& name) {
    if (name.isEmpty()) {
        VLLOG(7, "Rename: empty, reverting");
        return invalidNameError();
    }
    if (!FileUtils::isValidFilename(name)) {
        VLLOG(7, "Name is invalid: %@", name);
        return invalidNameError();
    }
    VLLOG(7, "Name is valid: %@", name);
    Url item = url;
    if (std::optional<Url> target = vlr_URLByResolvingBookmark(url)) {
        VLLOG(7, "Renaming bookmark %@ (%@)", url, *target);
        item = *target;
    }
    const Url renamed = computeNewURLNewBasename(item, name);
    if (renamed == item) {
        VLLOG(7, "Rename: Old and new URLs are the same: %@ - %@", item, renamed);
        return std::nullopt;
    }
    return FileUtils::moveTo(item, renamed);
}

Url UIUtils::computeNewURLNewBasename(const Url& url, const QString& newBasename) {
    const QString oldExtension = url.pathExtension();
    const QString typedExtension = extensionOfName(newBasename);
    QString name = newBasename;
    if (!oldExtension.isEmpty() && oldExtension.compare(typedExtension, Qt::CaseInsensitive) != 0) {
        name += QLatin1Char('.') + oldExtension;
    }
    return url.deletingLastPathComponent().appendingPathComponent(name, url.hasDirectoryPath());
}

QString UIUtils::bestMessage(const std::optional<Error>& error) {
    if (!error) {
        return QStringLiteral("");
    }
    QString text = error->localizedDescription();
    if (text.isEmpty()) {
        text = error->localizedFailureReason();
    }
    return text.isEmpty() ? QStringLiteral("FaultRecord exception") : text;
}

void UIUtils::showErrorParentViewController(const std::optional<Error>& error,
                                            const std::shared_ptr<ViewController>& parent) {
    // A failure that came without an error still says that something went wrong.
    const QString title =
        error ? bestMessage(error)
              : format(Strings::localized("ERROR_GENERIC"), Error::FileErrorDomain, 0);
    showAlertMessageParentViewController(title, QString(), parent);
}

void UIUtils::showAlertMessageParentViewController(const QString& title, const QString& message,
                                                   const std::shared_ptr<ViewController>& parent) {
    if (!parent) {
        return;
    }
    const auto alert =
        AlertController::alertControllerWithTitle(title, message, AlertController::Style::Alert);
    const auto ok =
        AlertAction::actionWithTitle(Strings::localized("OK"), AlertAction::Style::Default,
                                     [](const std::shared_ptr<AlertAction>&) {});
    alert->addAction(ok);
    alert->setPreferredAction(ok);
    parent->presentViewController(alert, true);
}

void UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
    const QList<Url>& urls, bool /*hasContainer*/,
    const std::shared_ptr<ViewController>& viewController, QWidget* view,
    const std::shared_ptr<BarButtonItem>& button, DeleteCompletion completion) {
    if (urls.isEmpty()) {
        if (completion) {
            completion(nullptr, true);
        }
        return;
    }
    const std::optional<QString> message = messageForDeletePrompt(urls);
    if (!message) {
        return;
    }
    const auto sheet = AlertController::alertControllerWithTitle(
        QString(), *message, AlertController::Style::ActionSheet);
    sheet->addAction(AlertAction::actionWithTitle(
        Strings::localized("Delete from Vellora"), AlertAction::Style::Destructive,
        [completion](const std::shared_ptr<AlertAction>& action) {
            VLLOG(7, "Delete action");
            if (completion) {
                completion(action, false);
            }
        }));
    sheet->addAction(
        AlertAction::actionWithTitle(Strings::localized("Cancel"), AlertAction::Style::Cancel,
                                     [completion](const std::shared_ptr<AlertAction>& action) {
                                         VLLOG(6, "Delete: Cancel pressed");
                                         if (completion) {
                                             completion(action, true);
                                         }
                                     }));
    PopoverPresentationController& popover = *sheet->popoverPresentationController();
    if (view) {
        const QRect bounds = view->rect();
        const QRect line(bounds.x(), bounds.y() + bounds.height() / 2, bounds.width(), 0);
        popover.setSourceView(view);
        popover.setSourceRect(line);
        popover.setPermittedArrowDirections(
            PopoverPresentationController::ArrowDirections(
                PopoverPresentationController::ArrowDirection::Left) |
            PopoverPresentationController::ArrowDirection::Right);
    } else {
        popover.setBarButtonItem(button);
    }
    if (viewController) {
        viewController->presentViewController(sheet, true);
    }
}

std::optional<QString> UIUtils::messageForDeletePrompt(const QList<Url>& urls) {
    if (urls.size() == 1) {
        const std::shared_ptr<VLItem> item = VLItem::initWithURL(urls.first());
        if (!item || item->localizedName().isEmpty()) {
            return std::nullopt;
        }
        const char* key =
            item->isContainer()
                ? "The %@ app library, and all its documents, will be permanently deleted from "
                  "Vellora on all your devices. This action cannot be undone."
                : "\"%@\" will be permanently deleted from Vellora on all your devices. This "
                  "action cannot be undone.";
        return format(Strings::localized(key), item->localizedName());
    }
    const int count = int(urls.size());
    const QString items =
        format(Strings::localizedPlural(QStringLiteral(".DICT.ITEMS.%d"), count), count);
    return format(Strings::localized("%@ will be permanently deleted from Vellora on all your "
                                     "devices. This action cannot be undone."),
                  items);
}

bool UIUtils::slateMode() {
    QWidget* window = QApplication::activeWindow();
    if (!qobject_cast<Window*>(window)) {
        window = nullptr;
        for (QWidget* topLevel : QApplication::topLevelWidgets()) {
            if (qobject_cast<Window*>(topLevel) && topLevel->isVisible()) {
                window = topLevel;
                break;
            }
        }
    }
    return window && Window::idiomForWidget(window) == UserInterfaceIdiom::Tablet;
}

void UIUtils::showItemExistsAlertParentViewController(
    const QString& name, const std::shared_ptr<ViewController>& parent) {
    const QString extension = extensionOfName(name);
    QString title;
    if (!extension.isEmpty()) {
        const QString rest = name.left(name.size() - extension.size() - 1);
        title =
            format(Strings::localized("The name “%1$@” with extension “.%2$@” is already taken."),
                   rest, extension);
    } else {
        title = format(Strings::localized("The name “%@” is already taken."), name);
    }
    showAlertMessageParentViewController(title, Strings::localized("Choose a different name."),
                                         parent);
}

void UIUtils::showInvalidItemNameAlertParentViewController(
    const QString& name, const std::shared_ptr<ViewController>& parent) {
    showAlertMessageParentViewController(
        QString(),
        format(Strings::localized("The name “%@” can’t be used. Try using a name with fewer "
                                  "characters, or with no punctuation marks."),
               name),
        parent);
}

}  // namespace vl
