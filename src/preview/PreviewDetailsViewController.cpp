#include "preview/PreviewDetailsViewController.h"

#include "fileops/LaunchUtils.h"
#include "fileops/RenamePrompt.h"
#include "fileops/UIUtils.h"
#include "model/VLItem.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "preview/FileInfoStackView.h"
#include "preview/PreviewItemManager.h"
#include "preview/ThumbnailImageView.h"
#include "toolkit/AlertController.h"
#include "toolkit/HairlineView.h"
#include "toolkit/NavigationController.h"

#include <QEvent>
#include <QFontMetrics>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace vl {

namespace {

QFont titleFont() {
    QFont font;
    font.setPointSizeF(24 * 0.75);  // 24 points of the touch screens' 96-per-inch scale
    return font;
}

}  // namespace

PreviewDetailsViewController::PreviewDetailsViewController() = default;
PreviewDetailsViewController::~PreviewDetailsViewController() = default;

void PreviewDetailsViewController::viewDidLoad() {
    PreviewBaseViewController::viewDidLoad();
    const auto manager = itemManager();
    const std::shared_ptr<VLItem> item = manager ? manager->item() : nullptr;
    if (item && !item->url().isEmpty()) {
        if (const std::optional<QString> app =
                LaunchUtils::defaultAppNameForDocumentRequireOpenIn(item->url(), true)) {
            openInAppButton_ =
                new QPushButton(vl::format(Strings::localized("Open in “%@”"), *app));
            openInAppButton_->setObjectName(QStringLiteral("openInApp"));
            openInAppButton_->setAccessibleName(openInAppButton_->text());
        }
    }
    setupViewsAndConstraints();
}

bool PreviewDetailsViewController::shouldDisplayOpenInAppButtonInView() {
    return openInAppButton_ && UIUtils::slateMode();
}

QPushButton* PreviewDetailsViewController::openInAppNavControllerButton() {
    return shouldDisplayOpenInAppButtonInView() ? nullptr : openInAppButton_.data();
}

QWidget* PreviewDetailsViewController::buildVerticalStackWithSubviewsSpacing(
    const QList<QWidget*>& subviews, int spacing) {
    auto* stack = new QWidget;
    auto* layout = new QVBoxLayout(stack);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    for (QWidget* subview : subviews) {
        layout->addWidget(subview, 0, Qt::AlignHCenter);
    }
    stack->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return stack;
}

void PreviewDetailsViewController::setupViewsAndConstraints() {
    thumbnailView_ = new ThumbnailImageView;

    auto* upper = new HairlineView;
    auto* lower = new HairlineView;
    hairlineViews_ = {upper, lower};

    filenameTextField_ = new QLabel;
    filenameTextField_->setObjectName(QStringLiteral("filename"));
    filenameTextField_->setFont(titleFont());
    filenameTextField_->setWordWrap(true);
    filenameTextField_->setCursor(Qt::PointingHandCursor);
    // A fixed height of 1.2 lines: a long name wraps within the hairline's width but stays one
    // line high.
    filenameTextField_->setFixedHeight(
        int(std::ceil(1.2 * QFontMetricsF(titleFont()).lineSpacing())));
    filenameTextField_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    filenameTextField_->installEventFilter(this);

    filenameStackView_ =
        buildVerticalStackWithSubviewsSpacing({upper, filenameTextField_, lower}, kFilenameSpacing);
    for (QWidget* stretched : QList<QWidget*>{upper, filenameTextField_.data(), lower}) {
        filenameStackView_->layout()->setAlignment(stretched, Qt::Alignment());
    }

    fileInfoView_ = new FileInfoStackView;

    QList<QWidget*> details{filenameStackView_, fileInfoView_};
    if (shouldDisplayOpenInAppButtonInView()) {
        auto* third = new HairlineView;
        hairlineViews_.append(third);
        openInAppButton_->setFont(titleFont());
        openInAppButton_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
        connect(openInAppButton_, &QPushButton::clicked, this,
                &PreviewBaseViewController::openInDefaultApp);
        details << third << openInAppButton_;
    }
    fileDetailsView_ = buildVerticalStackWithSubviewsSpacing(details, kStackSpacing);
    auto* detailsLayout = static_cast<QVBoxLayout*>(fileDetailsView_->layout());
    detailsLayout->setContentsMargins(kDetailsInset, 0, kDetailsInset, 0);
    detailsLayout->setAlignment(filenameStackView_, Qt::Alignment());
    for (HairlineView* line : hairlineViews_.mid(2)) {
        detailsLayout->setAlignment(line, Qt::Alignment());
    }

    mainStackView_ = new QWidget(wrapperView());
    mainLayout_ = new QBoxLayout(QBoxLayout::TopToBottom, mainStackView_);
    mainLayout_->setContentsMargins(0, 0, 0, 0);
    mainLayout_->setSpacing(kStackSpacing);
    mainLayout_->addWidget(thumbnailView_, 1);
    mainLayout_->addWidget(fileDetailsView_, 0);
    auto* wrapperLayout = new QVBoxLayout(wrapperView());
    wrapperLayout->setContentsMargins(0, 0, 0, 0);
    wrapperLayout->addWidget(mainStackView_);

    adjustViewsForOrientation(currentPseudoOrientation());
}

void PreviewDetailsViewController::adjustViewsForOrientation(int orientation) {
    if (!mainLayout_) {
        return;
    }
    sideBySide_ = orientation == LandscapeLeft || orientation == LandscapeRight;
    auto* detailsLayout = static_cast<QVBoxLayout*>(fileDetailsView_->layout());
    auto* nameLayout = static_cast<QVBoxLayout*>(filenameStackView_->layout());
    const Qt::Alignment across = sideBySide_ ? Qt::AlignLeading : Qt::AlignHCenter;
    if (sideBySide_) {
        // Picture and details get equal halves; the details sit at the middle of the height.
        mainLayout_->setDirection(QBoxLayout::LeftToRight);
        mainLayout_->setStretch(0, 1);
        mainLayout_->setStretch(1, 1);
        mainLayout_->setAlignment(fileDetailsView_, Qt::AlignVCenter);
    } else {
        mainLayout_->setDirection(QBoxLayout::TopToBottom);
        mainLayout_->setStretch(0, 1);
        mainLayout_->setStretch(1, 0);
        mainLayout_->setAlignment(fileDetailsView_, Qt::Alignment());
    }
    detailsLayout->setAlignment(fileInfoView_, across | Qt::AlignTop);
    if (openInAppButton_ && detailsLayout->indexOf(openInAppButton_) >= 0) {
        detailsLayout->setAlignment(openInAppButton_, across);
    }
    Q_UNUSED(nameLayout);
    filenameTextField_->setAlignment((sideBySide_ ? Qt::AlignLeading : Qt::AlignHCenter) |
                                     Qt::AlignVCenter);
    mainLayout_->invalidate();
}

void PreviewDetailsViewController::refreshItem() {
    PreviewBaseViewController::refreshItem();
    const auto manager = itemManager();
    const std::shared_ptr<VLItem> item = manager ? manager->item() : nullptr;
    if (!fileInfoView_) {
        return;
    }
    fileInfoView_->setItem(item);
    originalFilename_ = item ? item->localizedName() : QString();
    filenameTextField_->setText(originalFilename_);
    filenameTextField_->setAccessibleName(originalFilename_);
    filenameTextField_->setToolTip(originalFilename_);
    thumbnailView_->setItem(item);
}

void PreviewDetailsViewController::viewWillAppear(bool animated) {
    PreviewBaseViewController::viewWillAppear(animated);
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

void PreviewDetailsViewController::viewWillTransitionToSize(const QSize& size) {
    if (fileDetailsView_) {
        fileDetailsView_->updateGeometry();
    }
    std::weak_ptr<ViewController> weak = weak_from_this();
    Q_UNUSED(size);
    Dispatch::mainQueue()->async([weak] {
        const auto screen = std::static_pointer_cast<PreviewDetailsViewController>(weak.lock());
        if (!screen) {
            return;
        }
        // The window's shape when the block runs: resizes that came in between count, not the
        // first one.
        const QSize now = screen->watchedWindow_ ? screen->watchedWindow_->size()
                                                 : screen->view()->window()->size();
        screen->adjustViewsForOrientation(now.width() > now.height() ? LandscapeLeft : Portrait);
        screen->configureMargins();
        screen->refreshItem();
    });
}

bool PreviewDetailsViewController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == filenameTextField_ && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        filenameWasTapped();
        return true;
    }
    if (watched == watchedWindow_ && event->type() == QEvent::Resize) {
        viewWillTransitionToSize(static_cast<QResizeEvent*>(event)->size());
    }
    return PreviewBaseViewController::eventFilter(watched, event);
}

void PreviewDetailsViewController::filenameWasTapped() {
    const auto manager = itemManager();
    const std::shared_ptr<VLItem> item = manager ? manager->item() : nullptr;
    if (!item || !item->renameable()) {
        return;
    }
    const Url url = item->url();
    renamePrompt_ = RenamePrompt::newWithFilenameCompletion(
        item->localizedName(), [url](const QString& name, bool* done) -> QString {
            if (name.isEmpty()) {
                return QString();
            }
            const std::optional<Error> error = UIUtils::renameItemAtURLToName(url, name);
            *done = !error;
            return UIUtils::bestMessage(error);
        });
    presentViewController(renamePrompt_->alert(), true);
}

}  // namespace vl
