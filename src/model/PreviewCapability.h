#pragma once

#include "platform/files/Url.h"

#include <functional>
#include <optional>

namespace vl {

// Whether the quick-preview controller can render a URL. The controller belongs to the UI
// toolkit, and the app installs the controller's own test at start-up, so that an item says it
// can be previewed exactly when the preview has a view for it; until then the default answers
// by content type: images, movies, audio, PDF and plain text, never folders.
class PreviewCapability {
public:
    // isFolder, when the caller has just read it, spares the test a look at the disk.
    using Predicate = std::function<bool(const Url& url, std::optional<bool> isFolder)>;

    PreviewCapability() = delete;

    // isFolder, when the caller has just read it, spares the default test a look at the disk.
    static bool canPreviewItem(const Url& url, std::optional<bool> isFolder = std::nullopt);
    // An empty predicate restores the default. Safe from any thread.
    static void setPredicate(Predicate predicate);
    static bool defaultCanPreviewItem(const Url& url, std::optional<bool> isFolder = std::nullopt);

private:
    // Whether a file of that name is of a previewable type, by its extension.
    static bool isPreviewableName(const QString& name);
};

}  // namespace vl
