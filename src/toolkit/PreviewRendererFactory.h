#pragma once

#include <QtPlugin>

class QWidget;

namespace vl {

class PreviewContentView;
class Url;

// Makes the quick preview's views whose libraries are large: PDF (QtPdf) and audio and video
// (QtMultimedia). They live in a module of their own that `PreviewRenderers` loads the first time
// such a file is shown, so that starting the app does not map and relocate those libraries.
class PreviewRendererFactory {
public:
    virtual ~PreviewRendererFactory() = default;

    virtual PreviewContentView* makePdfView(const Url& url, QWidget* parent) = 0;
    virtual PreviewContentView* makeMediaView(const Url& url, bool video, bool standardControls,
                                              QWidget* parent) = 0;
};

}  // namespace vl

#define VelloraPreviewRendererFactory_iid "com.tessaly.VelloraApp.PreviewRendererFactory/1"
Q_DECLARE_INTERFACE(vl::PreviewRendererFactory, VelloraPreviewRendererFactory_iid)
