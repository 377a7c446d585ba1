#include "renderers/PreviewPdfView.h"

#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QGestureEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPdfDocument>
#include <QPdfPageNavigator>
#include <QPdfPageRenderer>
#include <QPdfView>
#include <QPinchGesture>
#include <QScrollBar>
#include <QScroller>
#include <QStyle>
#include <QThread>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vl {

namespace {

constexpr double minimumZoom = 0.1;
constexpr double maximumZoom = 8.0;
constexpr int documentMargin = 12;

QString errorText(QPdfDocument::Error error) {
    switch (error) {
        case QPdfDocument::Error::FileNotFound:
            return Strings::localized("The file can’t be found.");
        case QPdfDocument::Error::InvalidFileFormat:
            return Strings::localized("It isn’t a valid PDF document.");
        case QPdfDocument::Error::IncorrectPassword:
            return Strings::localized("The document is protected by a password.");
        case QPdfDocument::Error::UnsupportedSecurityScheme:
            return Strings::localized("The document’s protection isn’t supported.");
        case QPdfDocument::Error::DataNotYetAvailable:
        case QPdfDocument::Error::Unknown:
        case QPdfDocument::Error::None:
            break;
    }
    return Strings::localized("The file can’t be read.");
}

// Opened on a worker thread and moved to the main thread; whichever thread lets go of it last
// deletes it on the thread it belongs to.
std::shared_ptr<QPdfDocument> openDocument(const QString& path) {
    std::shared_ptr<QPdfDocument> document(new QPdfDocument, [](QPdfDocument* gone) {
        if (gone->thread() == QThread::currentThread()) {
            delete gone;
        } else {
            gone->deleteLater();
        }
    });
    document->load(path);
    return document;
}

// The first size asked of each page reads the page's dictionary; asked here, the view's layout
// of all pages on the main thread costs nothing.
void readPageTable(QPdfDocument& document) {
    for (int page = 0; page < document.pageCount(); ++page) {
        document.pagePointSize(page);
    }
}

}  // namespace

PreviewPdfView::PreviewPdfView(const Url& url, QWidget* parent)
    : PreviewContentView(url, parent), pdfView_(new QPdfView(this)) {
    auto* content = new QWidget(this);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    pdfView_->setObjectName(QStringLiteral("previewPdf"));
    pdfView_->setAccessibleName(url.lastPathComponent());
    pdfView_->setFrameShape(QFrame::NoFrame);
    pdfView_->setPageMode(QPdfView::PageMode::MultiPage);
    pdfView_->setZoomMode(QPdfView::ZoomMode::FitToWidth);
    pdfView_->setPageSpacing(12);
    pdfView_->setDocumentMargins(
        QMargins(documentMargin, documentMargin, documentMargin, documentMargin));
    QPalette palette = pdfView_->palette();
    palette.setColor(QPalette::Dark, QColor(0xe5, 0xe5, 0xea));
    pdfView_->setPalette(palette);
    pdfView_->viewport()->grabGesture(Qt::PinchGesture);
    pdfView_->viewport()->installEventFilter(this);
    pdfView_->installEventFilter(this);
    QScroller::grabGesture(pdfView_->viewport(), QScroller::TouchGesture);
    layout->addWidget(pdfView_, 1);

    pageLabel_ = new QLabel(content);
    pageLabel_->setObjectName(QStringLiteral("previewPdfPage"));
    pageLabel_->setAlignment(Qt::AlignCenter);
    pageLabel_->setStyleSheet(QStringLiteral("color: #3c3c43; background: #f2f2f7; padding: 6px;"));
    layout->addWidget(pageLabel_);
    setContentWidget(content);

    connect(pdfView_->pageNavigator(), &QPdfPageNavigator::currentPageChanged, this,
            &PreviewPdfView::updatePageLabel);
    // The cover follows the page while it scrolls and goes as soon as the zoom changes.
    connect(pdfView_->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &PreviewPdfView::placeFirstPage);
    connect(pdfView_->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &PreviewPdfView::placeFirstPage);
    connect(pdfView_, &QPdfView::zoomFactorChanged, this, &PreviewPdfView::dropFirstPage);
    connect(pdfView_, &QPdfView::zoomModeChanged, this, &PreviewPdfView::dropFirstPage);
    updatePageLabel();

    // Fitted to the width the view will have: its parent's, less the margins and the scroll bar
    // that a document of more than one screen shows. A wrong guess only scales the cover.
    const QWidget* frame = parentWidget() ? parentWidget() : this;
    const int pageWidth =
        frame->width() - 2 * documentMargin -
        pdfView_->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, pdfView_);
    load(pageWidth, frame->devicePixelRatioF());
}

void PreviewPdfView::load(int pageWidth, double pixelRatio) {
    QPointer<PreviewPdfView> self(this);
    QThread* home = thread();
    const QString path = url().path();
    Dispatch::globalQueue(QualityOfService::UserInitiated)->async([=] {
        std::shared_ptr<QPdfDocument> document = openDocument(path);
        const int pages =
            document->status() == QPdfDocument::Status::Ready ? document->pageCount() : 0;
        const QSizeF points = pages > 0 ? document->pagePointSize(0) : QSizeF();
        if (pageWidth > 0 && points.width() > 0) {
            const QSize pixels(int(pageWidth * pixelRatio),
                               int(pageWidth * pixelRatio * points.height() / points.width()));
            const QImage ink = document->render(0, pixels);
            if (!ink.isNull()) {
                // The render is ink on transparency; on white paper, in the screen's own format,
                // it goes to a pixmap as it is.
                QImage page(ink.size(), QImage::Format_RGB32);
                page.fill(Qt::white);
                QPainter(&page).drawImage(0, 0, ink);
                page.setDevicePixelRatio(pixelRatio);
                Dispatch::mainQueue()->async([self, page = std::move(page), pages]() mutable {
                    if (self) {
                        self->showFirstPage(std::move(page), pages);
                    }
                });
            }
        }
        readPageTable(*document);
        document->moveToThread(home);
        Dispatch::mainQueue()->async([self, document] {
            if (self) {
                self->adopt(document);
            }
        });
    });
}

void PreviewPdfView::showFirstPage(QImage page, int pageCount) {
    if (document_ || hasFailed()) {
        return;
    }
    auto* cover = new QLabel(pdfView_->viewport());
    cover->setObjectName(QStringLiteral("previewPdfFirstPage"));
    cover->setAttribute(Qt::WA_TransparentForMouseEvents);
    firstPageSize_ = page.deviceIndependentSize().toSize();
    cover->setPixmap(QPixmap::fromImage(std::move(page)));
    firstPage_ = cover;
    placeFirstPage();
    cover->show();
    announcedPages_ = pageCount;
    describe(pageCount);
    markReady();
}

void PreviewPdfView::placeFirstPage() {
    if (!firstPage_) {
        return;
    }
    // Where the view puts the first page when fitted to the width.
    const int width = pdfView_->viewport()->width() - 2 * documentMargin;
    if (width <= 0 || firstPageSize_.isEmpty()) {
        return;
    }
    // Scaling a page costs more than the rest of showing it: the cover keeps its own size
    // unless the guessed width was clearly wrong (the scroll bar alone is a near miss).
    const bool nearMiss = std::abs(width - firstPageSize_.width()) <= width / 20;
    firstPage_->setScaledContents(!nearMiss);
    const QSize size = nearMiss
                           ? firstPageSize_
                           : QSize(width, width * firstPageSize_.height() / firstPageSize_.width());
    firstPage_->setGeometry(documentMargin - pdfView_->horizontalScrollBar()->value(),
                            documentMargin - pdfView_->verticalScrollBar()->value(), size.width(),
                            size.height());
}

void PreviewPdfView::dropFirstPage() {
    delete firstPage_.data();
}

void PreviewPdfView::adopt(std::shared_ptr<QPdfDocument> document) {
    document_ = std::move(document);
    connect(document_.get(), &QPdfDocument::statusChanged, this,
            &PreviewPdfView::documentStatusChanged);
    pdfView_->setDocument(document_.get());
    documentStatusChanged();
    if (firstPage_) {
        // The view's own rendering of the first page replaces the cover.
        if (auto* renderer = pdfView_->findChild<QPdfPageRenderer*>()) {
            connect(renderer, &QPdfPageRenderer::pageRendered, firstPage_, [this](int page) {
                if (page == 0) {
                    dropFirstPage();
                }
            });
        } else {
            dropFirstPage();
        }
        placeFirstPage();
    }
}

PreviewPdfView::~PreviewPdfView() {
    // The view draws from the document: it goes first.
    delete pdfView_;
}

int PreviewPdfView::pageCount() const {
    // Between the first page shown ahead and the document handed over, the count read with it.
    return document_ && document_->status() == QPdfDocument::Status::Ready ? document_->pageCount()
                                                                           : announcedPages_;
}

int PreviewPdfView::currentPage() const {
    return pdfView_->pageNavigator()->currentPage();
}

double PreviewPdfView::zoomFactor() const {
    if (pdfView_->zoomMode() == QPdfView::ZoomMode::Custom || pageCount() == 0) {
        return pdfView_->zoomFactor();
    }
    // Fitted: the factor that makes the widest page fill the width, as the view computes it.
    const QSizeF page = document_->pagePointSize(std::max(0, currentPage()));
    const QMargins margins = pdfView_->documentMargins();
    const double width = pdfView_->viewport()->width() - margins.left() - margins.right();
    return page.width() > 0 ? width / (page.width() * logicalDpiX() / 72.0) : 1.0;
}

void PreviewPdfView::setZoomFactor(double factor) {
    const double zoom = std::clamp(factor, minimumZoom, maximumZoom);
    pdfView_->setZoomMode(QPdfView::ZoomMode::Custom);
    pdfView_->setZoomFactor(zoom);
}

void PreviewPdfView::zoomToFit() {
    pdfView_->setZoomMode(QPdfView::ZoomMode::FitToWidth);
}

void PreviewPdfView::documentStatusChanged() {
    switch (document_->status()) {
        case QPdfDocument::Status::Ready: {
            const int pages = document_->pageCount();
            if (pages <= 0) {
                showFailure(Strings::localized("The document has no pages."));
                return;
            }
            describe(pages);
            markReady();
            break;
        }
        case QPdfDocument::Status::Error:
            showFailure(errorText(document_->error()));
            break;
        case QPdfDocument::Status::Null:
        case QPdfDocument::Status::Loading:
        case QPdfDocument::Status::Unloading:
            break;
    }
}

void PreviewPdfView::describe(int pages) {
    pdfView_->setAccessibleDescription(
        pages == 1 ? Strings::localized("PDF document, 1 page")
                   : format(Strings::localized("PDF document, %d pages"), pages));
    updatePageLabel();
}

void PreviewPdfView::updatePageLabel() {
    const int pages = pageCount();
    pageLabel_->setVisible(pages > 0);
    if (pages > 0) {
        pageLabel_->setText(format(Strings::localized("Page %d of %d"),
                                   std::clamp(currentPage(), 0, pages - 1) + 1, pages));
        pageLabel_->setAccessibleName(pageLabel_->text());
    }
}

bool PreviewPdfView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == pdfView_->viewport()) {
        switch (event->type()) {
            case QEvent::Resize:
                placeFirstPage();
                break;
            case QEvent::Gesture: {
                auto* gesture = static_cast<QGestureEvent*>(event);
                if (auto* pinch = static_cast<QPinchGesture*>(gesture->gesture(Qt::PinchGesture))) {
                    if (pinch->state() == Qt::GestureStarted) {
                        pinchStartZoom_ = zoomFactor();
                    }
                    setZoomFactor(pinchStartZoom_ * pinch->totalScaleFactor());
                    gesture->accept(pinch);
                    return true;
                }
                break;
            }
            case QEvent::Wheel: {
                auto* wheel = static_cast<QWheelEvent*>(event);
                if (wheel->modifiers() & Qt::ControlModifier) {
                    setZoomFactor(zoomFactor() * std::pow(1.25, wheel->angleDelta().y() / 120.0));
                    return true;
                }
                break;
            }
            case QEvent::MouseButtonDblClick:
                zoomToFit();
                return true;
            default:
                break;
        }
    } else if (watched == pdfView_ && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::ZoomIn)) {
            setZoomFactor(zoomFactor() * 1.25);
            return true;
        }
        if (key->matches(QKeySequence::ZoomOut)) {
            setZoomFactor(zoomFactor() / 1.25);
            return true;
        }
    }
    return PreviewContentView::eventFilter(watched, event);
}

}  // namespace vl
