#pragma once

#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace vl {

class AlertAction;
class BarButtonItem;
class ViewController;

// Between the flows and the file operations: renaming from a typed name, the texts of errors,
// simple alerts, and the delete warning. Class-level operations only; main thread only.
class UIUtils {
public:
    UIUtils() = delete;

    // Gets the chosen action (or none) and whether the deletion was not confirmed.
    using DeleteCompletion =
        std::function<void(const std::shared_ptr<AlertAction>& action, bool cancelled)>;

    // Renames the item (a document reference's document rather than the reference) to the typed
    // name, keeping its extension; a taken name gets the next free "Name 2" variant. An empty or
    // invalid name fails with code 514 before anything is touched.
    static std::optional<Error> renameItemAtURLToName(const Url& url, const QString& name);
    // The URL the item is to have: the typed name, with the item's extension added unless the
    // typed name already ends in it (in any case).
    static Url computeNewURLNewBasename(const Url& url, const QString& newBasename);
    // The text of an error; the empty string for none.
    static QString bestMessage(const std::optional<Error>& error);
    static void showErrorParentViewController(const std::optional<Error>& error,
                                              const std::shared_ptr<ViewController>& parent);
    static void showAlertMessageParentViewController(const QString& title, const QString& message,
                                                     const std::shared_ptr<ViewController>& parent);
    // The delete warning, as an action sheet anchored (on a tablet) to `view` at its vertical
    // middle, else to `button`. No URLs: the completion at once with no action and cancelled; no
    // message for them: nothing shown and no completion.
    static void showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
        const QList<Url>& urls, bool hasContainer,
        const std::shared_ptr<ViewController>& viewController, QWidget* view,
        const std::shared_ptr<BarButtonItem>& button, DeleteCompletion completion);
    static std::optional<QString> messageForDeletePrompt(const QList<Url>& urls);
    // Whether the app's window is tablet-wide.
    static bool slateMode();
    static void showItemExistsAlertParentViewController(
        const QString& name, const std::shared_ptr<ViewController>& parent);
    static void showInvalidItemNameAlertParentViewController(
        const QString& name, const std::shared_ptr<ViewController>& parent);
};

}  // namespace vl
