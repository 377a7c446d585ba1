#include "preview/PreviewBaseViewController.h"

#include "fileops/LaunchUtils.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "preview/PreviewItemManager.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/NavigationController.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/Window.h"

#include <QEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

namespace vl {

PreviewBaseViewController::PreviewBaseViewController() = default;

PreviewBaseViewController::~PreviewBaseViewController() {
    unregisterProgress();
}

void PreviewBaseViewController::loadView() {
    ViewController::loadView();
    QWidget* page = view();
    wrapperView_ = new QWidget(page);
    wrapperView_->setObjectName(QStringLiteral("wrapperView"));
    pageLayout_ = new QVBoxLayout(page);
    pageLayout_->setContentsMargins(0, 0, 0, 0);
    pageLayout_->addWidget(wrapperView_);
    page->installEventFilter(this);
    lastProgressChunk_ = -1;
}

void PreviewBaseViewController::viewDidLoad() {
    view()->setAutoFillBackground(true);
    QPalette palette = view()->palette();
    palette.setColor(QPalette::Window, Qt::white);
    view()->setPalette(palette);
}

void PreviewBaseViewController::viewWillAppear(bool animated) {
    ViewController::viewWillAppear(animated);
    configureButtons();
    setupConstraints();
    refreshItem();
}

void PreviewBaseViewController::viewWillDisappear(bool animated) {
    unregisterProgress();
    if (const auto manager = itemManager()) {
        manager->viewControllerWillDisappear(shared_from_this());
    }
    ViewController::viewWillDisappear(animated);
}

void PreviewBaseViewController::refreshItem() {
    const auto manager = itemManager();
    const bool hasURL = manager && manager->item() && !manager->item()->url().isEmpty();
    for (const auto& button : {barButtonActionItem_, barButtonDeleteItem_, barButtonMoveItem_}) {
        if (button) {
            button->setEnabled(hasURL);
        }
    }
    lastProgressChunk_ = -1;
}

void PreviewBaseViewController::updateProgress(ItemProgress&) {}

QPushButton* PreviewBaseViewController::openInAppNavControllerButton() {
    return nullptr;
}

// --- Progress ---

bool PreviewBaseViewController::isSubscribedToProgress() const {
    std::lock_guard lock(progressMutex_);
    return subscriber_ != nullptr;
}

void PreviewBaseViewController::registerForProgress() {
    const auto manager = itemManager();
    if (!manager || !manager->item()) {
        return;
    }
    // Weakly: the handlers run on other threads, and the last reference to a screen must not go
    // there.
    std::weak_ptr<PreviewBaseViewController> weak = sharedAs<PreviewBaseViewController>();
    const QString fileKind = ItemProgress::FileKind;
    auto token = ItemProgress::addSubscriberForFileURL(
        manager->item()->resolvedURL(),
        [weak, fileKind](
            const std::shared_ptr<ItemProgress>& progress) -> ItemProgress::UnpublishingHandler {
            const auto screen = weak.lock();
            if (!screen) {
                return {};
            }
            const ItemProgress::ObserverId id =
                progress->addFractionCompletedObserver([weak](ItemProgress& changed) {
                    if (const auto screen = weak.lock()) {
                        screen->observeFractionCompleted(changed);
                    }
                });
            {
                std::lock_guard lock(screen->progressMutex_);
                screen->observations_.push_back({progress, id});
            }
            if (progress->kind() != fileKind) {
                VLLOG(7, "ignoring progress with different kind %@, kind = %@",
                      progress->description(), progress->kind());
            } else if (progress->fractionCompleted() == 0) {
                VLLOG(7, "ignoring progress with no progress done yet %@", progress->description());
            } else {
                VLLOG(7, "got progress %@", progress->description());
            }
            std::weak_ptr<ItemProgress> weakProgress = progress;
            return [weak, weakProgress, id] {
                if (const auto progress = weakProgress.lock()) {
                    progress->removeFractionCompletedObserver(id);
                }
                const auto screen = weak.lock();
                if (!screen) {
                    return;
                }
                ItemProgress::SubscriptionToken token;
                {
                    std::lock_guard lock(screen->progressMutex_);
                    token = std::move(screen->subscriber_);
                    screen->subscriber_.reset();
                }
                if (token) {
                    ItemProgress::removeSubscriber(token);
                }
            };
        });
    std::lock_guard lock(progressMutex_);
    subscriber_ = std::move(token);
}

void PreviewBaseViewController::unregisterProgress() {
    ItemProgress::SubscriptionToken token;
    std::vector<Observation> observations;
    {
        std::lock_guard lock(progressMutex_);
        token = std::move(subscriber_);
        subscriber_.reset();
        observations.swap(observations_);
    }
    if (token) {
        ItemProgress::removeSubscriber(token);
    }
    // Whatever the unpublishing handlers did not end yet ends here.
    for (const Observation& observation : observations) {
        if (const auto progress = observation.progress.lock()) {
            progress->removeFractionCompletedObserver(observation.id);
        }
    }
}

void PreviewBaseViewController::observeFractionCompleted(ItemProgress& progress) {
    const double fraction =
        double(progress.completedUnitCount()) / double(progress.totalUnitCount());
    const double steps = fraction * 20;
    // A total of 0 gives no fraction: it counts as a step of its own.
    const int chunk =
        std::isfinite(steps) && std::fabs(steps) < double(std::numeric_limits<int>::max())
            ? int(steps)
            : std::numeric_limits<int>::min();
    if (lastProgressChunk_.exchange(chunk) != chunk) {
        VLLOG(6, "Progress %@%%: %@", fraction * 100, progress.description());
    } else {
        VLLOG(7, "Progress %@%%: %@", fraction * 100, progress.description());
    }
    updateProgress(progress);
}

// --- Bars ---

void PreviewBaseViewController::configureButtons() {
    barButtonMoveItem_ = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Organize);
    barButtonMoveItem_->setAction([weak = weak_from_this()](const auto&) {
        if (const auto screen = std::static_pointer_cast<PreviewBaseViewController>(weak.lock())) {
            screen->showMoveTarget();
        }
    });
    barButtonDeleteItem_ = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Trash);
    barButtonDeleteItem_->setAction([weak = weak_from_this()](const auto&) {
        if (const auto screen = std::static_pointer_cast<PreviewBaseViewController>(weak.lock())) {
            screen->showWarningAndDeleteDocument();
        }
    });
    barButtonActionItem_ = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Action);
    barButtonActionItem_->setAction([weak = weak_from_this()](const auto&) {
        if (const auto screen = std::static_pointer_cast<PreviewBaseViewController>(weak.lock())) {
            screen->showDocumentActivities();
        }
    });
    // The bar item owns its button and deletes it when it goes: a later appearance keeps it.
    QPushButton* button = openInAppNavControllerButton();
    if (!button) {
        openInAppItem_.reset();
    } else if (!openInAppItem_ || openInAppItem_->customView() != button) {
        connect(button, &QPushButton::clicked, this, &PreviewBaseViewController::openInDefaultApp,
                Qt::UniqueConnection);
        button->adjustSize();
        openInAppItem_ = BarButtonItem::withCustomView(button);
    }
    const auto manager = itemManager();
    const bool hasURL = manager && manager->item() && !manager->item()->url().isEmpty();
    for (const auto& item : {barButtonActionItem_, barButtonDeleteItem_, barButtonMoveItem_}) {
        item->setEnabled(hasURL);
    }

    const auto nav = navigationController();
    if (UIUtils::slateMode()) {
        auto fixed = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FixedSpace);
        fixed->setWidth(0);
        navigationItem()->setRightBarButtonItems(
            {barButtonActionItem_, fixed, barButtonDeleteItem_, fixed, barButtonMoveItem_});
        setToolbarItems({});
        if (nav) {
            nav->setToolbarHidden(true);
        }
    } else {
        setToolbarItems({barButtonActionItem_,
                         BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FlexibleSpace),
                         barButtonDeleteItem_,
                         BarButtonItem::withSystemItem(BarButtonItem::SystemItem::FlexibleSpace),
                         barButtonMoveItem_});
        if (nav) {
            nav->setToolbarHidden(false);
        }
        navigationItem()->setRightBarButtonItem(nav && mode_ == 1 ? openInAppItem_ : nullptr);
    }
}

// --- Layout ---

PreviewBaseViewController::SizeClass PreviewBaseViewController::horizontalSizeClass() {
    const QWidget* window = view()->window();
    return Window::idiomForWidget(window) == UserInterfaceIdiom::Tablet &&
                   view()->width() >= Window::kTabletMinimumWidth
               ? SizeClass::Regular
               : SizeClass::Compact;
}

PreviewBaseViewController::SizeClass PreviewBaseViewController::verticalSizeClass() {
    return view()->height() >= kRegularMinimumHeight ? SizeClass::Regular : SizeClass::Compact;
}

void PreviewBaseViewController::setupConstraints() {
    if (!navigationController()) {
        return;
    }
    constraintsSetUp_ = true;
    configureMargins();
}

void PreviewBaseViewController::configureMargins() {
    const bool regular =
        horizontalSizeClass() == SizeClass::Regular && verticalSizeClass() == SizeClass::Regular;
    const int side = regular ? kRegularMargin : kCompactMargin;
    const QSize page = view()->size();
    const int vertical =
        regular || page.height() > 2 * page.width() ? kRegularMargin : kCompactMargin;
    // The page is already the area between the navigation bar and the toolbar, so their
    // heights (and the status bar's, which a window here does not have) are not added.
    margins_ = QMargins(side, vertical, side, vertical);
    if (constraintsSetUp_ && pageLayout_) {
        pageLayout_->setContentsMargins(margins_);
    }
}

int PreviewBaseViewController::currentPseudoOrientation() {
    if (horizontalSizeClass() == SizeClass::Compact && verticalSizeClass() == SizeClass::Regular) {
        return Portrait;
    }
    // Before it is shown the page may not be in the window yet; its stack is.
    const auto nav = navigationController();
    const QWidget* window =
        view()->window() == view() && nav ? nav->view()->window() : view()->window();
    const QSize size = window->size();
    return size.width() > size.height() ? LandscapeLeft : Portrait;
}

bool PreviewBaseViewController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view() && event->type() == QEvent::Resize && constraintsSetUp_) {
        configureMargins();
    }
    return ViewController::eventFilter(watched, event);
}

// --- Actions ---

void PreviewBaseViewController::openInDefaultApp() {
    const auto manager = itemManager();
    if (!manager || !manager->item()) {
        return;
    }
    LaunchUtils::openInDefaultAppRequireOpenInWithCompletionBlock(manager->item()->url(), true,
                                                                  [](bool) {});
}

void PreviewBaseViewController::showWarningAndDeleteDocument() {
    if (const auto manager = itemManager()) {
        manager->showWarningAndDeleteDocumentBarButton(shared_from_this(), barButtonDeleteItem_);
    }
}

void PreviewBaseViewController::showMoveTarget() {
    if (const auto manager = itemManager()) {
        manager->showMoveTarget(shared_from_this());
    }
}

void PreviewBaseViewController::showDocumentActivities() {
    const auto manager = itemManager();
    if (!manager || !manager->item() || manager->item()->url().isEmpty()) {
        return;
    }
    const Url url = manager->item()->resolvedURL();
    if (!url.isFileURL()) {
        VLLOG(4, "showDocumentActivities: url is wrong class: %@", url);
        return;
    }
    VLLOG(6, "showDocumentActivities: %@", url);
    const auto controller = DocumentInteractionController::interactionControllerWithURL(url);
    manager->setDocumentInteractionController(controller);
    controller->presentOptionsMenuFromBarButtonItemAnimated(barButtonActionItem_, true);
}

}  // namespace vl
