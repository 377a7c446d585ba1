#pragma once

#include "toolkit/PreviewRendererFactory.h"

#include <QObject>

namespace vl {

// The entry point of the module `PreviewRenderers` loads.
class PreviewRendererModule : public QObject, public PreviewRendererFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID VelloraPreviewRendererFactory_iid)
    Q_INTERFACES(vl::PreviewRendererFactory)
public:
    PreviewContentView* makePdfView(const Url& url, QWidget* parent) override;
    PreviewContentView* makeMediaView(const Url& url, bool video, bool standardControls,
                                      QWidget* parent) override;
};

}  // namespace vl
