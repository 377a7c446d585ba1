#pragma once

#include "platform/Url.h"

#include <functional>

namespace vl {

// Whether the quick-preview controller can render a URL. The controller belongs to the UI
// toolkit, which installs its own test at start-up; until then the default answers by content
// type: images, movies, audio, PDF and plain text, never folders.
class PreviewCapability {
public:
    using Predicate = std::function<bool(const Url& url)>;

    PreviewCapability() = delete;

    static bool canPreviewItem(const Url& url);
    // An empty predicate restores the default. Safe from any thread.
    static void setPredicate(Predicate predicate);
    static bool defaultCanPreviewItem(const Url& url);

private:
    // Whether a file of that name is of a previewable type, by its extension.
    static bool isPreviewableName(const QString& name);
};

}  // namespace vl
