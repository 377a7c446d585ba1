#pragma once

#include "toolkit/PreviewContentView.h"

#include <QImage>
#include <QPointer>

#include <memory>

class QLabel;
class QPdfDocument;
class QPdfView;

namespace vl {

// A PDF: every page in one scrolling column, fitted to the width at first; pinch, Ctrl + wheel
// and the keyboard zoom, a double tap goes back to the fitted width. A label under the pages says
// which page is at the top and how many there are. The document is opened on a global queue and
// handed to the view once its page table is read, so a long document never holds up the main
// thread; the view renders the visible pages on its own thread. So that the first page does not
// wait for that second render, the same queue renders it at once at the width the view is
// expected to have, and that picture covers the first page until the view has its own.
class PreviewPdfView : public PreviewContentView {
    Q_OBJECT
public:
    explicit PreviewPdfView(const Url& url, QWidget* parent = nullptr);
    ~PreviewPdfView() override;

    // Null until the document is open.
    QPdfDocument* document() const { return document_.get(); }
    QPdfView* pdfView() const { return pdfView_; }
    int pageCount() const;
    // The page at the top of the view, from 0.
    int currentPage() const;
    // The zoom factor in effect (1 = the page's own size at 72 dpi scaled to the screen).
    double zoomFactor() const;
    void setZoomFactor(double factor);

    void zoomToFit() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void load(int pageWidth, double pixelRatio);
    void showFirstPage(QImage page, int pageCount);
    void placeFirstPage();
    void dropFirstPage();
    void adopt(std::shared_ptr<QPdfDocument> document);
    void documentStatusChanged();
    void describe(int pages);
    void updatePageLabel();

    std::shared_ptr<QPdfDocument> document_;
    QPdfView* pdfView_ = nullptr;
    QLabel* pageLabel_ = nullptr;
    // The first page rendered ahead of the view, over the view's own until that arrives.
    QPointer<QLabel> firstPage_;
    QSize firstPageSize_;
    // The page count told with the first page, before the document is handed over.
    int announcedPages_ = 0;
    double pinchStartZoom_ = 1.0;
};

}  // namespace vl
