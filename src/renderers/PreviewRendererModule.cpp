#include "renderers/PreviewRendererModule.h"

#include "renderers/PreviewMediaView.h"
#include "renderers/PreviewPdfView.h"

namespace vl {

PreviewContentView* PreviewRendererModule::makePdfView(const Url& url, QWidget* parent) {
    return new PreviewPdfView(url, parent);
}

PreviewContentView* PreviewRendererModule::makeMediaView(const Url& url, bool video,
                                                         bool standardControls, QWidget* parent) {
    return new PreviewMediaView(url, video, standardControls, parent);
}

}  // namespace vl
