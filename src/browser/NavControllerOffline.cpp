// Keep Offline and Remove Download from the actions menu, and how much of the drive is on this
// device for the status line.

#include "browser/NavController.h"

#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "services/OfflineKeeper.h"
#include "toolkit/AlertAction.h"

#include <QLocale>

namespace vl {

namespace {

QString nameOf(const Url& url) {
    const std::shared_ptr<VLItem> item = VLItem::initWithURL(url);
    return item ? item->localizedName() : url.lastPathComponent();
}

// What the user reads about a failed download or eviction.
QString messageFor(const Error& error) {
    if (error.code() == Error::CloudServerUnavailable) {
        return Strings::localized(
            "Unable to download file. You are no longer connected to the Internet.");
    }
    return UIUtils::bestMessage(error);
}

}  // namespace

std::shared_ptr<OfflineKeeper> NavController::offlineKeeper() {
    if (!offlineKeeper_) {
        offlineKeeper_ = OfflineKeeper::create();
    }
    return offlineKeeper_;
}

QList<std::shared_ptr<AlertAction>> NavController::offlineActionsForItem(
    const VLItem& item, std::function<void()> finish) {
    const Url url = item.url();
    CloudDocuments& documents = CloudDocuments::shared();
    const bool keptOffline = documents.isItemKeptOffline(url);
    const bool keeping = offlineKeeper()->isKeepingOffline(url);
    // A folder that is here may hold downloaded items; a file counts when it is downloaded.
    const bool anythingHere =
        item.isDirectory() ? !documents.hasItemPromiseAtURL(url) : item.isDownloaded();
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();

    const auto keep = AlertAction::actionWithTitle(
        Strings::localized("Keep Offline"), AlertAction::Style::Default,
        [weakSelf, url, finish](const std::shared_ptr<AlertAction>&) {
            if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                self->keepItemOffline(url);
            }
            finish();
        });
    keep->setEnabled(!keptOffline && !keeping);

    const auto remove = AlertAction::actionWithTitle(
        Strings::localized("Remove Download"), AlertAction::Style::Default,
        [weakSelf, url, finish](const std::shared_ptr<AlertAction>&) {
            if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                self->removeItemDownload(url);
            }
            finish();
        });
    remove->setEnabled(keptOffline || keeping || anythingHere);
    return {keep, remove};
}

void NavController::keepItemOffline(const Url& url) {
    VLLOG(6, "Keep Offline: %@", url);
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    offlineKeeper()->keepOffline(url, [weakSelf](const Url& item, const QList<Error>& errors,
                                                 bool cancelled) {
        const std::shared_ptr<NavController> self = weakSelf.lock();
        if (!self) {
            return;
        }
        self->refreshBytesOnDevice();
        if (errors.isEmpty() || cancelled) {
            return;
        }
        const QString title =
            errors.size() == 1
                ? format(Strings::localized("Couldn’t download “%@”."), nameOf(item))
                : format(Strings::localizedPlural(QStringLiteral(".DICT.CANNOT_DOWNLOAD_ITEMS.%d"),
                                                  int(errors.size())),
                         int(errors.size()));
        UIUtils::showAlertMessageParentViewController(title, messageFor(errors.front()),
                                                      self->alertParent());
    });
}

void NavController::removeItemDownload(const Url& url) {
    CloudDocuments& documents = CloudDocuments::shared();
    if (documents.isItemKeptOffline(url) && !documents.isItemPinned(url)) {
        // Kept by a folder above it: that folder's pin covers it, and it stays.
        Url folder = url.deletingLastPathComponent();
        while (!documents.isItemPinned(folder) && folder.path() != QLatin1String("/")) {
            folder = folder.deletingLastPathComponent();
        }
        VLLOG(4, "Remove Download refused: %@ is kept offline with %@", url, folder);
        UIUtils::showAlertMessageParentViewController(
            format(Strings::localized("“%1$@” is kept offline with the folder “%2$@”."),
                   nameOf(url), nameOf(folder)),
            Strings::localized("Remove the download of the folder to free up its space."),
            alertParent());
        return;
    }
    VLLOG(6, "Remove Download: %@", url);
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    offlineKeeper()->removeDownload(url, [weakSelf](const Url& item, std::optional<Error> error) {
        const std::shared_ptr<NavController> self = weakSelf.lock();
        if (!self) {
            return;
        }
        self->refreshBytesOnDevice();
        if (error) {
            UIUtils::showAlertMessageParentViewController(
                format(Strings::localized("Couldn’t remove the download of “%@”."), nameOf(item)),
                error->code() == Error::CloudServerUnavailable
                    ? Strings::localized("Its changes aren’t in the cloud yet. Connect to the "
                                         "Internet and try again.")
                    : messageFor(*error),
                self->alertParent());
        }
    });
}

void NavController::refreshBytesOnDevice() {
    if (!CloudDocuments::isInstalled()) {
        return;
    }
    if (bytesOnDeviceInFlight_) {
        bytesOnDeviceStale_ = true;
        return;
    }
    bytesOnDeviceInFlight_ = true;
    bytesOnDeviceStale_ = false;
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    // A walk of the whole drive: never on the main thread.
    Dispatch::globalQueue(QualityOfService::Utility)->async([weakSelf] {
        const quint64 bytes = CloudDocuments::shared().bytesOnThisDevice();
        Dispatch::mainQueue()->async([weakSelf, bytes] {
            const std::shared_ptr<NavController> self = weakSelf.lock();
            if (!self) {
                return;
            }
            self->bytesOnDeviceInFlight_ = false;
            self->bytesOnDevice_ = bytes;
            self->updateStatusUI(nullptr);
            if (self->bytesOnDeviceStale_) {
                self->refreshBytesOnDevice();
            }
        });
    });
}

QString NavController::bytesOnDeviceString() const {
    if (!bytesOnDevice_) {
        return {};
    }
    return format(Strings::localized("%@ on this device"),
                  QLocale().formattedDataSize(qint64(*bytesOnDevice_), 1,
                                              QLocale::DataSizeTraditionalFormat));
}

}  // namespace vl
