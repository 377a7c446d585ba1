#include "browser/NavController.h"

#include "logging/VLLogging.h"
#include "platform/app/Preferences.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Strings.h"
#include "services/QuotaFetcher.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentPickerUnavailableController.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/ViewControllerRegistry.h"

#include <QPointer>

namespace vl {

namespace {

// The stored token, or absent when none is stored or the stored value can't be read back.
std::optional<CloudAccountToken> storedToken() {
    const QVariant stored = Preferences::standard().value(NavController::NimbraIdentityTokenKey);
    if (!stored.isValid()) {
        return std::nullopt;
    }
    // The store keeps bytes as base64 text.
    const QByteArray data = QByteArray::fromBase64(stored.toString().toLatin1());
    return CloudAccountToken::fromSerialized(data);
}

}  // namespace

NavController::NavController() = default;

NavController::~NavController() {
    stopObserving();
}

void NavController::viewDidLoad() {
    setDelegate(sharedAs<NavController>());

    NotificationCenter& center = NotificationCenter::defaultCenter();
    const QPointer<NavController> self(this);
    becameActiveObserver_ =
        center.addObserver(Notifications::ApplicationDidBecomeActive, Dispatch::mainQueue(),
                           [self](const Notification& notification) {
                               if (self) {
                                   self->didBecomeActiveNotification(notification);
                               }
                           });
    accountObserver_ =
        center.addObserver(Notifications::CloudAccountIdentityDidChange, Dispatch::mainQueue(),
                           [self](const Notification& notification) {
                               if (self) {
                                   self->nimbraAccountAvailabilityChanged(notification);
                               }
                           });

    setupInitialViewController();
    NavigationController::viewDidLoad();
}

void NavController::stopObserving() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    if (becameActiveObserver_) {
        center.removeObserver(becameActiveObserver_);
    }
    if (accountObserver_) {
        center.removeObserver(accountObserver_);
    }
}

void NavController::setupInitialViewController() {
    pickerIsAlive_ = false;
    if (checkNimbraState()) {
        VLLOG(7, "Nimbra is enabled");
        setToolbarHidden(false);
        const std::shared_ptr<DocumentListController> list = DocumentListController::create();
        VLLOG(7, "Contained items: %@", list ? list->containedItems() : QList<Url>());
        if (list) {
            initNewListController(list);
            setViewControllers({list}, false);
        } else {
            VLLOG(3, "DocumentListController creation failed");
        }
        quotaFetcher_ = QuotaFetcher::create();
        quotaFetcher_->setDelegate(sharedAs<NavController>());
        quotaFetcher_->runWithInterval(300);
    } else {
        VLLOG(4, "Nimbra is not enabled");
        const std::shared_ptr<ViewController> placeholder =
            ViewControllerRegistry::createInstance(DocumentPickerUnavailableController::ClassName);
        if (placeholder) {
            setViewControllers({placeholder}, false);
        } else {
            VLLOG(3, "DocumentPickerUnavailableController creation failed");
            const QPointer<NavController> self(this);
            Dispatch::mainQueue()->async([self] {
                if (self) {
                    self->showUnavailableAlert();
                }
            });
        }
        setToolbarHidden(true);
        quotaFetcher_.reset();
        quotaBytes_ = 0;
    }
    VLLOG(7, "%@ viewDidLoad", QStringLiteral("NavController"));
}

void NavController::showUnavailableAlert() {
    // The message is deliberately not a string-table key.
    const auto alert = AlertController::alertControllerWithTitle(
        QString(), QStringLiteral("Nimbra is not enabled"), AlertController::Style::Alert);
    alert->addAction(
        AlertAction::actionWithTitle(Strings::localized("OK"), AlertAction::Style::Default));
    presentViewController(alert, true);
}

bool NavController::checkNimbraState() const {
    return CloudAccount::isInstalled() && CloudAccount::shared().identityToken().has_value();
}

void NavController::handleAccountChanges() {
    const std::optional<CloudAccountToken> current =
        CloudAccount::isInstalled() ? CloudAccount::shared().identityToken() : std::nullopt;
    const std::optional<CloudAccountToken> stored = storedToken();
    if (current != stored) {
        VLLOG(6, "Nimbra Token Changed, enabled=%@, reinitializing view", current ? "YES" : "NO");
        saveNimbraToken(current);
        setupInitialViewController();
    } else {
        VLLOG(7, "Nimbra Token Matches");
    }
}

void NavController::saveNimbraToken(const std::optional<CloudAccountToken>& token) {
    Preferences& preferences = Preferences::standard();
    if (token) {
        preferences.setValue(NimbraIdentityTokenKey, token->serialized());
    } else {
        preferences.remove(NimbraIdentityTokenKey);
    }
    preferences.synchronize();
}

void NavController::didBecomeActiveNotification(const Notification&) {
    VLLOG(6, "Got AppDidBecomeActiveNotification (nav)");
    handleAccountChanges();
}

void NavController::nimbraAccountAvailabilityChanged(const Notification&) {
    VLLOG(6, "Nimbra account availability changed");
    handleAccountChanges();
}

void NavController::logContainerURL() {
    const std::optional<Url> url = CloudDocuments::isInstalled()
                                       ? CloudDocuments::shared().defaultContainerURL()
                                       : std::nullopt;
    if (url) {
        VLLOG(7, "Nimbra container is at %@", *url);
    } else {
        VLLOG(7, "Nimbra is not available");
    }
}

}  // namespace vl
