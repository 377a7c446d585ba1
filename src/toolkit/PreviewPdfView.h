#pragma once

#include "toolkit/PreviewContentView.h"

class QLabel;
class QPdfDocument;
class QPdfView;

namespace vl {

// A PDF: every page in one scrolling column, fitted to the width at first; pinch, Ctrl + wheel
// and the keyboard zoom, a double tap goes back to the fitted width. A label under the pages says
// which page is at the top and how many there are.
class PreviewPdfView : public PreviewContentView {
    Q_OBJECT
public:
    explicit PreviewPdfView(const Url& url, QWidget* parent = nullptr);
    ~PreviewPdfView() override;

    QPdfDocument* document() const { return document_; }
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
    void documentStatusChanged();
    void updatePageLabel();

    QPdfDocument* document_ = nullptr;
    QPdfView* pdfView_ = nullptr;
    QLabel* pageLabel_ = nullptr;
    double pinchStartZoom_ = 1.0;
};

}  // namespace vl
