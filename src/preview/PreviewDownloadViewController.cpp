#include "preview/PreviewDownloadViewController.h"

#include "fileops/UIUtils.h"
#include "model/VLItem.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "preview/ConstraintUtils.h"
#include "preview/DownloadView.h"
#include "preview/PreviewItemManager.h"
#include "preview/ThumbnailImageView.h"
#include "services/NetworkWatcher.h"
#include "toolkit/NavigationController.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLocale>
#include <QResizeEvent>

namespace vl {

PreviewDownloadViewController::PreviewDownloadViewController() = default;
PreviewDownloadViewController::~PreviewDownloadViewController() = default;

void PreviewDownloadViewController::viewDidLoad() {
    PreviewBaseViewController::viewDidLoad();
    setupViewsAndConstraints();
}

void PreviewDownloadViewController::setupViewsAndConstraints() {
    thumbnailView_ = new ThumbnailImageView;
    thumbnailView_->setObjectName(QStringLiteral("thumbnailView"));
    thumbnailView_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    downloadView_ = new DownloadView;
    downloadView_->setDelegate(sharedAs<PreviewDownloadViewController>());

    mainStackView_ = new QWidget(wrapperView());
    mainStackView_->setObjectName(QStringLiteral("mainStackView"));
    mainLayout_ = new QBoxLayout(QBoxLayout::TopToBottom, mainStackView_);
    mainLayout_->setContentsMargins(0, 0, 0, 0);
    mainLayout_->setSpacing(kStackSpacing);
    mainLayout_->addWidget(thumbnailView_, 1);
    mainLayout_->addWidget(downloadView_, 0, Qt::AlignHCenter);
    wrapperView()->setLayout(
        ConstraintUtils::stretchSubviewConstraintsWithinView(mainStackView_, wrapperView()));

    adjustViewsForOrientation(currentPseudoOrientation());
}

void PreviewDownloadViewController::adjustViewsForOrientation(int orientation) {
    if (!mainLayout_) {
        return;
    }
    sideBySide_ = orientation == LandscapeLeft || orientation == LandscapeRight;
    if (sideBySide_) {
        // Picture and column get equal halves.
        mainLayout_->setDirection(QBoxLayout::LeftToRight);
        mainLayout_->setStretch(0, 1);
        mainLayout_->setStretch(1, 1);
        mainLayout_->setAlignment(downloadView_, Qt::AlignVCenter);
        downloadView_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    } else {
        mainLayout_->setDirection(QBoxLayout::TopToBottom);
        mainLayout_->setStretch(0, 1);
        mainLayout_->setStretch(1, 0);
        mainLayout_->setAlignment(downloadView_, Qt::AlignHCenter);
        downloadView_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }
    mainLayout_->invalidate();
}

void PreviewDownloadViewController::setDownloading(bool downloading) {
    downloading_ = downloading;
    if (isViewLoaded() && downloadView_) {
        downloadView_->setDownloading(downloading);
    }
}

void PreviewDownloadViewController::refreshItem() {
    PreviewBaseViewController::refreshItem();
    const auto manager = itemManager();
    const std::shared_ptr<VLItem> item = manager ? manager->item() : nullptr;
    if (downloadView_) {
        downloadView_->setItem(item);
    }
    if (thumbnailView_) {
        thumbnailView_->setItem(item);
    }
}

void PreviewDownloadViewController::viewWillAppear(bool animated) {
    PreviewBaseViewController::viewWillAppear(animated);
    if (downloading_ && downloadView_) {
        downloadView_->setDownloading(true);
    }
    const auto nav = navigationController();
    QWidget* window = nav ? nav->view()->window() : view()->window();
    if (window != view() && window != watchedWindow_) {
        if (watchedWindow_) {
            watchedWindow_->removeEventFilter(this);
        }
        watchedWindow_ = window;
        watchedWindow_->installEventFilter(this);
    }
    adjustViewsForOrientation(currentPseudoOrientation());
}

void PreviewDownloadViewController::updateProgress(ItemProgress& progress) {
    {
        std::lock_guard lock(pendingProgressMutex_);
        pendingProgress_ = progress.shared_from_this();
    }
    if (progressDeliveryQueued_.exchange(true)) {
        return;
    }
    Dispatch::mainQueue()->async([weak = weak_from_this()] {
        if (const auto screen =
                std::static_pointer_cast<PreviewDownloadViewController>(weak.lock())) {
            screen->deliverProgress();
        }
    });
}

void PreviewDownloadViewController::deliverProgress() {
    progressDeliveryQueued_ = false;
    std::shared_ptr<ItemProgress> progress;
    {
        std::lock_guard lock(pendingProgressMutex_);
        progress.swap(pendingProgress_);
    }
    if (progress && downloadView_) {
        downloadView_->updateProgress(*progress);
    }
}

void PreviewDownloadViewController::viewWillTransitionToSize(const QSize& size) {
    Q_UNUSED(size);
    std::weak_ptr<ViewController> weak = weak_from_this();
    Dispatch::mainQueue()->async([weak] {
        const auto screen = std::static_pointer_cast<PreviewDownloadViewController>(weak.lock());
        if (!screen) {
            return;
        }
        // The window's shape when the block runs: resizes that came in between count.
        const QSize now = screen->watchedWindow_ ? screen->watchedWindow_->size()
                                                 : screen->view()->window()->size();
        screen->adjustViewsForOrientation(now.width() > now.height() ? LandscapeLeft : Portrait);
        screen->configureMargins();
    });
}

bool PreviewDownloadViewController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == watchedWindow_ && event->type() == QEvent::Resize) {
        viewWillTransitionToSize(static_cast<QResizeEvent*>(event)->size());
    }
    return PreviewBaseViewController::eventFilter(watched, event);
}

void PreviewDownloadViewController::downloadViewDidPressStartDownload(DownloadView& view,
                                                                      const Url& url) {
    Q_UNUSED(url);
    const auto manager = itemManager();
    if (!manager) {
        return;
    }
    const std::shared_ptr<VLItem> item = manager->item();
    if (NetworkWatcher::sharedNetworkWatcher().networkState() ==
            NetworkWatcher::NetworkStateCellular &&
        item && item->fileSize().value_or(0) > PreviewItemManager::kCellularDownloadSizeLimit) {
        const QString limit =
            QLocale().formattedDataSize(qint64(PreviewItemManager::kCellularDownloadSizeLimit), 0,
                                        QLocale::DataSizeTraditionalFormat);
        UIUtils::showAlertMessageParentViewController(
            vl::format(Strings::localized("This item is over %@."), limit),
            vl::format(Strings::localized("“%@” will not download until you connect to Wi-Fi."),
                       item->localizedName()),
            shared_from_this());
        return;
    }
    view.setDownloading(true);
    manager->startDownload();
}

void PreviewDownloadViewController::downloadViewDidPressCancelDownload(DownloadView& view,
                                                                       const Url& url) {
    Q_UNUSED(url);
    view.setDownloading(false);
    if (const auto manager = itemManager()) {
        manager->cancelDownload();
    }
}

}  // namespace vl
