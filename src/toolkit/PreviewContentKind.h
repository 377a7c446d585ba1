#pragma once

#include "platform/files/Url.h"

#include <QString>

#include <optional>

namespace vl {

// Which view of the quick preview shows a file. Everything the preview renders and everything the
// item model reports as previewable is decided here, by the file's name, so that the two agree.
class PreviewContentKind {
public:
    enum Kind {
        Image,      // decoded with QImageReader
        PlainText,  // prose: proportional and wrapped
        Code,       // source code, CSV and other structured text: monospace, unwrapped
        Markdown,   // rendered
        Pdf,
        Audio,
        Video,
        Generic,  // anything else: a page with the item's icon, name, kind and size
    };

    PreviewContentKind() = delete;

    // The kind for a file of this name (its extension decides, as for the item's content type).
    static Kind kindForFileName(const QString& name);
    // The kind for a URL; folders (and packages, which are folders on disk) are Generic.
    static Kind kindForUrl(const Url& url, std::optional<bool> isFolder = std::nullopt);
    // True when the preview has a view of its own for the URL, not only the generic page.
    static bool canPreviewItem(const Url& url, std::optional<bool> isFolder = std::nullopt);
    // The name used in logs and tests.
    static QString name(Kind kind);
};

}  // namespace vl
