// PreviewItemManager: downloading a cloud-only item. The platform fetches the content when it
// grants a coordinated read of the item, so a download is one read, run on the manager's serial
// downloadQueue and blocking it until the content is here or the read fails.

#include "preview/PreviewItemManager.h"

#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/text/Strings.h"
#include "preview/PreviewDownloadViewController.h"
#include "services/NetworkIndicator.h"
#include "services/NetworkWatcher.h"
#include "toolkit/AlertAction.h"
#include "toolkit/AlertController.h"
#include "toolkit/NavigationController.h"

namespace vl {

namespace {

// The screen may have left the stack meanwhile: its last reference, and with it its widgets, must
// not go on the download thread.
void releaseOnMainQueue(std::shared_ptr<PreviewDownloadViewController> screen) {
    Dispatch::mainQueue()->async([screen = std::move(screen)] {});
}

}  // namespace

std::shared_ptr<VLItem> PreviewItemManager::item() const {
    std::lock_guard guard(lock_);
    return item_;
}

std::shared_ptr<PreviewDownloadViewController> PreviewItemManager::createDownloadViewController() {
    auto controller = std::make_shared<PreviewDownloadViewController>();
    controller->setMode(mode_);
    controller->setItemManager(shared_from_this());
    std::lock_guard lock(downloadMutex_);
    downloadViewController_ = controller;
    return controller;
}

std::shared_ptr<PreviewDownloadViewController> PreviewItemManager::downloadViewController() const {
    std::lock_guard lock(downloadMutex_);
    return downloadViewController_;
}

bool PreviewItemManager::hasDownloadInProgress() const {
    std::lock_guard lock(downloadMutex_);
    return downloadFC_ != nullptr;
}

bool PreviewItemManager::shouldAutoDownload() {
    if (NetworkWatcher::sharedNetworkWatcher().networkState() != NetworkWatcher::NetworkStateWiFi) {
        return false;
    }
    const std::shared_ptr<VLItem> item = this->item();
    if (!item || item->fileSize().value_or(0) >= kAutoDownloadSizeLimit) {
        return false;
    }
    const bool canPreview = item->canPreview();
    VLLOG(6, "CanPreview=%@ for %@", canPreview, item->resolvedURL());
    return canPreview;
}

void PreviewItemManager::startDownload() {
    startDownloading([weak = weak_from_this()](const Url& oldURL, const Url& newURL,
                                               const std::optional<Error>& error) {
        const std::shared_ptr<PreviewItemManager> self = weak.lock();
        if (!self) {
            return;
        }
        if (error) {
            VLLOG(3, "Error downloading %@: %@", oldURL, *error);
        } else {
            VLLOG(6, "Showing preview of URL %@", newURL);
        }
        if (const auto screen = self->downloadViewController()) {
            screen->setDownloading(false);
        }
        if (error) {
            self->showDownloadError(error);
            return;
        }
        // The content is here now: the quick preview takes the download screen's place.
        self->setItemUpdatePreview(VLItem::initWithURL(newURL), true);
    });
}

void PreviewItemManager::startDownloading(DownloadCompletion completion) {
    VLLOG(7, "Dispatching download...");
    const quint64 generation = cancelGeneration_.load();
    downloadQueue_->async(
        [weak = weak_from_this(), completion = std::move(completion), generation] {
            std::shared_ptr<PreviewItemManager> self = weak.lock();
            if (!self) {
                return;
            }
            self->startDownloadingNow(completion, generation);
            // The manager owns screens: its last reference must go on the main thread.
            Dispatch::mainQueue()->async([self = std::move(self)] {});
        });
}

void PreviewItemManager::startDownloadingNow(const DownloadCompletion& completion) {
    startDownloadingNow(completion, cancelGeneration_.load());
}

void PreviewItemManager::startDownloadingNow(const DownloadCompletion& completion,
                                             quint64 requestGeneration) {
    VLLOG(7, "Download queue: changing FilePresenter");
    const bool cancelledWhileQueued = requestGeneration != cancelGeneration_.load();
    cancelDownloadCoordinator();
    // The manager's own presenter is not told of its own read.
    const auto coordinator = std::make_shared<FileCoordinator>(shared_from_this());
    {
        std::lock_guard lock(downloadMutex_);
        downloadFC_ = coordinator;
    }
    if (cancelledWhileQueued) {
        // Ends as a cancelled read does: the same log lines, eviction and completion.
        coordinator->cancel();
    }
    const std::shared_ptr<VLItem> item = this->item();
    const Url url = item ? item->resolvedURL() : Url();
    if (!FileUtils::exists(url)) {
        VLLOG(6, "Dispatching download of %@", url);
        NetworkIndicator::sharedNetworkIndicator().show(kNetworkActivityKey);
    } else {
        VLLOG(7, "Dispatching download -- although file is already local");
    }
    if (auto screen = downloadViewController()) {
        screen->registerForProgress();
        releaseOnMainQueue(std::move(screen));
    }

    bool reachable = true;
    std::optional<Error> error;
    const FileCoordinator::ReadingOptions options =
        FileCoordinator::ReadingOption::WithoutChanges |
        FileCoordinator::ReadingOption::ResolvesSymbolicLink;
    // Granting the read is the download: the content itself is not read here.
    coordinator->coordinateReadingItemAtURL(url, options, &error, [&](const Url& newURL) {
        VLLOG(7, "coordinateReadingItemAtURL finished, old URL %@, new URL %@", url, newURL);
        Error check;
        reachable = CloudDocuments::shared().checkPromisedItemIsReachable(newURL, &check);
        if (!reachable) {
            VLLOG(3, "coordinateReadingItemAtURL: newURL does not exist, error %@",
                  check.description());
        }
        NetworkIndicator::sharedNetworkIndicator().hide(kNetworkActivityKey);
        Dispatch::mainQueue()->async(
            [self = shared_from_this(), completion, newURL, reachable, coordinator] {
                std::optional<Error> result;
                if (!reachable) {
                    result = Error(Error::FileErrorDomain, Error::FileReadNoSuchFile);
                }
                const std::shared_ptr<VLItem> current = self->item();
                completion(current ? current->resolvedURL() : Url(), newURL, result);
                self->clearDownloadCoordinator(coordinator);
            });
    });
    if (!error) {
        return;
    }

    if (auto screen = downloadViewController()) {
        screen->unregisterProgress();
        releaseOnMainQueue(std::move(screen));
    }
    NetworkIndicator::sharedNetworkIndicator().hide(kNetworkActivityKey);
    if (error->code() != Error::UserCancelled) {
        VLLOG(3, "coordinateReadingItemAtURL failed, URL %@: %@", url, *error);
    } else {
        VLLOG(7, "coordinateReadingItemAtURL was cancelled, URL %@", url);
        // Whatever arrived stays in the cloud only: a cancelled download leaves no copy here.
        if (const std::optional<Error> evictError = CloudDocuments::shared().evictDriveItem(url)) {
            VLLOG(6, "Failed to evict %@: %@", url, *evictError);
        } else {
            VLLOG(7, "Evicted %@", url);
        }
    }
    Dispatch::mainQueue()->async(
        [weak = weak_from_this(), completion, url, error = *error, coordinator] {
            if (const auto self = weak.lock()) {
                completion(url, Url(), error);
                self->clearDownloadCoordinator(coordinator);
            }
        });
}

void PreviewItemManager::cancelDownload() {
    ++cancelGeneration_;
    cancelDownloadCoordinator();
}

void PreviewItemManager::cancelDownloadCoordinator() {
    std::shared_ptr<FileCoordinator> coordinator;
    {
        std::lock_guard lock(downloadMutex_);
        coordinator = downloadFC_;
    }
    if (coordinator) {
        coordinator->cancel();
    }
    NetworkIndicator::sharedNetworkIndicator().hide(kNetworkActivityKey);
}

void PreviewItemManager::clearDownloadCoordinator(
    const std::shared_ptr<FileCoordinator>& coordinator) {
    // A later download may have put its own coordinator there meanwhile.
    std::lock_guard lock(downloadMutex_);
    if (downloadFC_ == coordinator) {
        downloadFC_.reset();
    }
}

void PreviewItemManager::showDownloadError(const std::optional<Error>& error) {
    if (!error || error->code() == Error::UserCancelled) {
        return;
    }
    QString message = error->localizedDescription();
    if (error->code() == Error::CloudServerUnavailable &&
        !NetworkWatcher::sharedNetworkWatcher().isConnected()) {
        message = Strings::localized(
            "Unable to download file. You are no longer connected to the Internet.");
    }
    const std::shared_ptr<NavigationController> navigation = navigationController();
    const std::shared_ptr<ViewController> parent =
        navigation ? navigation->topViewController() : nullptr;
    if (!parent) {
        return;
    }
    const auto alert = AlertController::alertControllerWithTitle(QString(), message,
                                                                 AlertController::Style::Alert);
    alert->addAction(AlertAction::actionWithTitle(Strings::localized("OK"),
                                                  AlertAction::Style::Default,
                                                  [](const std::shared_ptr<AlertAction>&) {}));
    parent->presentViewController(alert, true);
}

}  // namespace vl
