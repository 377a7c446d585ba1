#include "toolkit/PreviewRenderers.h"

#include "logging/VLLogging.h"
#include "toolkit/PreviewRendererFactory.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPluginLoader>

namespace vl {

PreviewRenderers::PreviewRenderers(QString modulePath) : path_(std::move(modulePath)) {}

// The module stays loaded: views it made may outlive this object in a test, and Qt keeps a
// loaded plugin's library mapped anyway.
PreviewRenderers::~PreviewRenderers() = default;

PreviewRenderers& PreviewRenderers::shared() {
    static PreviewRenderers renderers(defaultModulePath());
    return renderers;
}

QString PreviewRenderers::defaultModulePath() {
    const QString name = QFileInfo(QStringLiteral(VELLORA_RENDERERS_MODULE)).fileName();
    const QString installed =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/vellora/") + name;
    if (QFileInfo::exists(installed)) {
        return installed;
    }
    return QStringLiteral(VELLORA_RENDERERS_MODULE);
}

PreviewRendererFactory* PreviewRenderers::factory() {
    if (tried_) {
        return factory_;
    }
    tried_ = true;
    QElapsedTimer timer;
    timer.start();
    loader_ = std::make_unique<QPluginLoader>(path_);
    // Every symbol resolved now: a module that doesn't fit this app fails here, not in a call.
    loader_->setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    QObject* instance = loader_->instance();
    factory_ = qobject_cast<PreviewRendererFactory*>(instance);
    if (!factory_) {
        VLLOG(3, "Couldn't load the PDF, audio and video previews from %@: %@", path_,
              instance ? QStringLiteral("not a preview module") : loader_->errorString());
    } else {
        VLLOG(7, "Loaded the PDF, audio and video previews in %@ ms", timer.elapsed());
    }
    return factory_;
}

}  // namespace vl
