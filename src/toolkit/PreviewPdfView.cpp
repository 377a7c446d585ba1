#include "toolkit/PreviewPdfView.h"

#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QGestureEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPdfDocument>
#include <QPdfPageNavigator>
#include <QPdfView>
#include <QPinchGesture>
#include <QScroller>
#include <QThread>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vl {

namespace {

constexpr double minimumZoom = 0.1;
constexpr double maximumZoom = 8.0;

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
    if (document->status() == QPdfDocument::Status::Ready) {
        // The first size asked of each page reads the page's dictionary; asked here, the view's
        // layout of all pages on the main thread costs nothing.
        for (int page = 0; page < document->pageCount(); ++page) {
            document->pagePointSize(page);
        }
    }
    return document;
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
    pdfView_->setDocumentMargins(QMargins(12, 12, 12, 12));
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
    updatePageLabel();
    load();
}

void PreviewPdfView::load() {
    QPointer<PreviewPdfView> self(this);
    QThread* home = thread();
    const QString path = url().path();
    Dispatch::globalQueue(QualityOfService::UserInitiated)->async([self, home, path] {
        std::shared_ptr<QPdfDocument> document = openDocument(path);
        document->moveToThread(home);
        Dispatch::mainQueue()->async([self, document] {
            if (self) {
                self->adopt(document);
            }
        });
    });
}

void PreviewPdfView::adopt(std::shared_ptr<QPdfDocument> document) {
    document_ = std::move(document);
    connect(document_.get(), &QPdfDocument::statusChanged, this,
            &PreviewPdfView::documentStatusChanged);
    pdfView_->setDocument(document_.get());
    documentStatusChanged();
}

PreviewPdfView::~PreviewPdfView() {
    // The view draws from the document: it goes first.
    delete pdfView_;
}

int PreviewPdfView::pageCount() const {
    return document_ && document_->status() == QPdfDocument::Status::Ready ? document_->pageCount()
                                                                           : 0;
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
            pdfView_->setAccessibleDescription(
                pages == 1 ? Strings::localized("PDF document, 1 page")
                           : format(Strings::localized("PDF document, %d pages"), pages));
            updatePageLabel();
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
