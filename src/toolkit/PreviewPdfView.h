#pragma once

#include "toolkit/PreviewContentView.h"

#include <memory>

class QLabel;
class QPdfDocument;
class QPdfView;

namespace vl {

// A PDF: every page in one scrolling column, fitted to the width at first; pinch, Ctrl + wheel
// and the keyboard zoom, a double tap goes back to the fitted width. A label under the pages says
// which page is at the top and how many there are. The document is opened on a global queue and
// handed to the view once its page table is read, so a long document never holds up the main
// thread; the view renders the visible pages on its own thread.
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
    void load();
    void adopt(std::shared_ptr<QPdfDocument> document);
    void documentStatusChanged();
    void updatePageLabel();

    std::shared_ptr<QPdfDocument> document_;
    QPdfView* pdfView_ = nullptr;
    QLabel* pageLabel_ = nullptr;
    double pinchStartZoom_ = 1.0;
};

}  // namespace vl
