#include "toolkit/PreviewController.h"

#include "toolkit/Background.h"

#include "logging/VLLogging.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/PreviewContentView.h"
#include "toolkit/PreviewControllerDataSource.h"
#include "toolkit/PreviewControllerDelegate.h"
#include "toolkit/PreviewGenericView.h"
#include "toolkit/PreviewImageView.h"
#include "toolkit/PreviewRendererFactory.h"
#include "toolkit/PreviewRenderers.h"
#include "toolkit/PreviewTextView.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QShortcut>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vl {

PreviewController::PreviewController() = default;

PreviewController::~PreviewController() = default;

bool PreviewController::canPreviewItem(const Url& url, std::optional<bool> isFolder) {
    return PreviewContentKind::canPreviewItem(url, isFolder);
}

PreviewContentView* PreviewController::currentContentView() const {
    return content_;
}

void PreviewController::setDataSource(const std::weak_ptr<PreviewControllerDataSource>& source) {
    dataSource_ = source;
}

void PreviewController::setAdditionalRightBarButtonItems(
    const QList<std::shared_ptr<BarButtonItem>>& items) {
    additionalRightItems_ = items;
    updateRightBarItems();
}

void PreviewController::updateRightBarItems() {
    navigationItem()->setRightBarButtonItems(additionalRightItems_);
}

void PreviewController::loadView() {
    auto* view = new QWidget;
    view->setObjectName(QStringLiteral("previewController"));
    fillBackground(view);
    layout_ = new QVBoxLayout(view);
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);

    pageBar_ = new QWidget(view);
    pageBar_->setObjectName(QStringLiteral("previewPageBar"));
    fillBackground(pageBar_, QColor(0xf9, 0xf9, 0xf9));
    auto* bar = new QHBoxLayout(pageBar_);
    bar->setContentsMargins(8, 4, 8, 4);
    const auto makeButton = [this](QStyle::StandardPixmap icon, const QString& name) {
        auto* button = new QToolButton(pageBar_);
        button->setIcon(pageBar_->style()->standardIcon(icon));
        button->setIconSize(QSize(24, 24));
        button->setMinimumSize(44, 44);
        button->setAutoRaise(true);
        button->setAccessibleName(name);
        button->setToolTip(name);
        return button;
    };
    previousButton_ = makeButton(QStyle::SP_ArrowBack, Strings::localized("Previous"));
    previousButton_->setObjectName(QStringLiteral("previewPrevious"));
    nextButton_ = makeButton(QStyle::SP_ArrowForward, Strings::localized("Next"));
    nextButton_->setObjectName(QStringLiteral("previewNext"));
    pageLabel_ = new QLabel(pageBar_);
    pageLabel_->setObjectName(QStringLiteral("previewPageLabel"));
    pageLabel_->setAlignment(Qt::AlignCenter);
    bar->addWidget(previousButton_);
    bar->addWidget(pageLabel_, 1);
    bar->addWidget(nextButton_);
    connect(previousButton_, &QToolButton::clicked, this,
            &PreviewController::showPreviousPreviewItem);
    connect(nextButton_, &QToolButton::clicked, this, &PreviewController::showNextPreviewItem);
    layout_->addWidget(pageBar_);
    pageBar_->hide();

    auto* previous = new QShortcut(QKeySequence(Qt::ALT | Qt::Key_Left), view);
    connect(previous, &QShortcut::activated, this, &PreviewController::showPreviousPreviewItem);
    auto* next = new QShortcut(QKeySequence(Qt::ALT | Qt::Key_Right), view);
    connect(next, &QShortcut::activated, this, &PreviewController::showNextPreviewItem);
    setView(view);
}

void PreviewController::viewDidLoad() {
    updateRightBarItems();
    reloadData();
}

void PreviewController::reloadData() {
    std::shared_ptr<PreviewControllerDataSource> source = dataSource();
    count_ = source ? std::max(0, source->numberOfPreviewItemsInPreviewController(*this)) : 0;
    current_ = count_ > 0 ? std::clamp(current_, 0, count_ - 1) : 0;
    showCurrent();
}

void PreviewController::setCurrentPreviewItemIndex(int index) {
    const int clamped = count_ > 0 ? std::clamp(index, 0, count_ - 1) : 0;
    if (clamped == current_ && content_) {
        return;
    }
    current_ = clamped;
    showCurrent();
}

void PreviewController::showNextPreviewItem() {
    if (current_ + 1 < count_) {
        setCurrentPreviewItemIndex(current_ + 1);
    }
}

void PreviewController::showPreviousPreviewItem() {
    if (current_ > 0) {
        setCurrentPreviewItemIndex(current_ - 1);
    }
}

void PreviewController::refreshCurrentPreviewItem() {
    showCurrent();
}

void PreviewController::showCurrent() {
    std::shared_ptr<PreviewControllerDataSource> source = dataSource();
    currentUrl_ =
        source && count_ > 0 ? source->previewControllerPreviewItemAtIndex(*this, current_) : Url();
    kind_ = PreviewContentKind::kindForUrl(currentUrl_);
    setTitle(currentUrl_.isEmpty() ? QString() : currentUrl_.lastPathComponent());
    if (!isViewLoaded() || !layout_) {
        return;
    }
    delete content_.data();
    delete emptyLabel_.data();
    if (currentUrl_.isEmpty()) {
        auto* empty = new QLabel(Strings::localized("No Document"), view());
        empty->setObjectName(QStringLiteral("previewEmpty"));
        empty->setAlignment(Qt::AlignCenter);
        empty->setStyleSheet(QStringLiteral("color: #8e8e93;"));
        emptyLabel_ = empty;
        layout_->insertWidget(0, empty, 1);
    } else {
        VLLOG(7, "Previewing %@ as %@", currentUrl_, PreviewContentKind::name(kind_));
        content_ = makeContentView(currentUrl_, kind_);
        layout_->insertWidget(0, content_, 1);
        content_->show();
    }
    updatePageBar();
    emit currentContentViewChanged(content_);
    if (std::shared_ptr<PreviewControllerDelegate> receiver = delegate();
        receiver && !currentUrl_.isEmpty()) {
        receiver->previewControllerDidShowPreviewItem(*this, current_);
    }
}

PreviewContentView* PreviewController::makeContentView(const Url& url,
                                                       PreviewContentKind::Kind kind) {
    switch (kind) {
        case PreviewContentKind::Image: {
            QScreen* screen =
                view()->screen() ? view()->screen() : QGuiApplication::primaryScreen();
            const QSize pixels = screen ? screen->size() * screen->devicePixelRatio() : QSize();
            return new PreviewImageView(url, pixels, view());
        }
        case PreviewContentKind::PlainText:
        case PreviewContentKind::Code:
        case PreviewContentKind::Markdown:
            return new PreviewTextView(url, kind, view());
        // Without their module (a broken installation), such files get the generic page.
        case PreviewContentKind::Pdf:
            if (PreviewRendererFactory* renderers = PreviewRenderers::shared().factory()) {
                return renderers->makePdfView(url, view());
            }
            break;
        case PreviewContentKind::Audio:
        case PreviewContentKind::Video:
            if (PreviewRendererFactory* renderers = PreviewRenderers::shared().factory()) {
                std::shared_ptr<PreviewControllerDelegate> receiver = delegate();
                const bool standard =
                    !receiver || receiver->previewControllerWantsDefaultMediaPlayer(*this, url);
                return renderers->makeMediaView(url, kind == PreviewContentKind::Video, standard,
                                                view());
            }
            break;
        case PreviewContentKind::Generic:
            break;
    }
    return new PreviewGenericView(url, view());
}

void PreviewController::updatePageBar() {
    pageBar_->setVisible(count_ > 1);
    previousButton_->setEnabled(current_ > 0);
    nextButton_->setEnabled(current_ + 1 < count_);
    pageLabel_->setText(format(Strings::localized("%d of %d"), current_ + 1, count_));
    pageLabel_->setAccessibleName(pageLabel_->text());
}

}  // namespace vl
