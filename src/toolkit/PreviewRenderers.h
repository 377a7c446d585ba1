#pragma once

#include <QString>

#include <memory>

class QPluginLoader;

namespace vl {

class PreviewRendererFactory;

// Finds and loads the module of the PDF, audio and video views on first use. Main thread only.
class PreviewRenderers {
public:
    explicit PreviewRenderers(QString modulePath);
    ~PreviewRenderers();
    PreviewRenderers(const PreviewRenderers&) = delete;
    PreviewRenderers& operator=(const PreviewRenderers&) = delete;

    // The app's loader, for defaultModulePath().
    static PreviewRenderers& shared();
    // Beside an installed app (<prefix>/lib/vellora), else where the build put the module.
    static QString defaultModulePath();

    QString modulePath() const { return path_; }
    // Null when the module can't be loaded; the reason is logged the first time.
    PreviewRendererFactory* factory();

private:
    const QString path_;
    std::unique_ptr<QPluginLoader> loader_;
    PreviewRendererFactory* factory_ = nullptr;
    bool tried_ = false;
};

}  // namespace vl
