#pragma once

#include "platform/app/ApplicationRecord.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QList>
#include <QObject>
#include <QRect>
#include <QString>

#include <memory>
#include <optional>

class QWidget;

namespace vl {

class AlertController;
class BarButtonItem;
class DocumentInteractionControllerDelegate;
class ViewController;

// One document and what other applications can do with it: its default application, opening it
// there or in another application registered for its type, and the share sheet (Open With, Copy,
// Show in Folder, Send by Email). Applications come from the desktop's MIME associations; one
// that needs a terminal is never offered. Main thread only.
class DocumentInteractionController
    : public QObject,
      public std::enable_shared_from_this<DocumentInteractionController> {
    Q_OBJECT
public:
    // The desktop id of this app: it never opens a document for itself through the desktop.
    static inline const QString OwnApplicationIdentifier = QStringLiteral("com.tessaly.VelloraApp");

    static std::shared_ptr<DocumentInteractionController> interactionControllerWithURL(
        const Url& url);
    explicit DocumentInteractionController(const Url& url);
    ~DocumentInteractionController() override;

    Url URL() const { return url_; }
    void setURL(const Url& url);
    // The document's content type (a MIME name), from its name.
    QString UTI() const { return contentType_; }
    QString name() const { return url_.lastPathComponent(); }

    std::weak_ptr<DocumentInteractionControllerDelegate> delegate() const { return delegate_; }
    void setDelegate(std::weak_ptr<DocumentInteractionControllerDelegate> delegate) {
        delegate_ = std::move(delegate);
    }

    // The user's default application for the document, or, when that one needs a terminal, the
    // first application registered for the type that does not; nothing when there is none.
    std::optional<ApplicationRecord> defaultApplication() const;
    // What "Open With" lists: the applications registered for the type, without this app and
    // without those that need a terminal.
    QList<ApplicationRecord> applicationsForOpenWith() const;

    // Asks the application to open the document and returns at once; no when there is no
    // default application. A launch that fails is logged and shown in an alert over the window.
    bool openDocumentWithDefaultApplication();
    void openDocumentWithApplication(const ApplicationRecord& application);

    // --- The share sheet ---
    // Shows it from the window of `view`, pointing at `rect` (in `view`'s coordinates) where the
    // window is tablet-sized; no when `view` is not in the app's window.
    bool presentOptionsMenuFromRectInViewAnimated(const QRect& rect, QWidget* view, bool animated);
    // Shows it from the app's window, pointing at the bar button on a tablet.
    bool presentOptionsMenuFromBarButtonItemAnimated(const std::shared_ptr<BarButtonItem>& item,
                                                     bool animated);
    void dismissMenuAnimated(bool animated);
    // The sheet while it is shown.
    std::shared_ptr<AlertController> optionsMenu() const { return menu_.lock(); }

    // The sheet's entries, also reachable without it.
    // The file on the clipboard: a URI list, the copied-files form file managers paste, and the
    // path as text.
    void copyToClipboard() const;
    // Whether Show in Folder can be offered: a file manager answers on the session bus, or the
    // desktop has a default application for folders.
    bool canShowInFolder() const;
    void showInFolder();
    // Whether an email can be written: xdg-email is installed.
    static bool canSendByEmail();
    void sendByEmail();
    // Whether something is at the document's path (a cloud-only item has only its placeholder).
    bool documentIsLocal() const;

private:
    std::shared_ptr<AlertController> makeOptionsMenu();
    bool presentOptionsMenu(const std::shared_ptr<ViewController>& presenter,
                            const std::shared_ptr<AlertController>& menu, bool animated);
    void menuDidDismiss();
    void open(const ApplicationRecord& application, const QList<Url>& urls);
    // An alert over `presenter`, else over the app window's top controller.
    static void showFailure(const std::weak_ptr<ViewController>& presenter, const QString& title,
                            const QString& message);
    // The controller on top of the app window that holds `widget` (any app window when null).
    static std::shared_ptr<ViewController> topControllerForWidget(QWidget* widget);

    Url url_;
    QString contentType_;
    std::weak_ptr<DocumentInteractionControllerDelegate> delegate_;
    std::weak_ptr<AlertController> menu_;
    std::weak_ptr<ViewController> presenter_;
};

}  // namespace vl
