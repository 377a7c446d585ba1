#pragma once

#include "platform/files/Error.h"

#include <QByteArray>

#include <optional>

namespace vl {

// Whole items (a file, a folder with everything in it, a symbolic link) handled by their native
// byte paths, so that names which are not valid UTF-8 are copied, compared and removed like any
// other. Placeholders are skipped only where asked, and only those that read as placeholders.
class ItemTree {
public:
    // Copies `from` to `to`, which must not exist; symbolic links are copied as links. Steps of
    // the copy are crash points.
    static std::optional<Error> copy(const QByteArray& from, const QByteArray& to,
                                     bool skipPlaceholders = false);
    // Whether both hold the same content: kinds, names, bytes, link targets (not dates).
    static bool sameContent(const QByteArray& a, const QByteArray& b,
                            bool skipPlaceholders = false);
    // Changes whenever anything in the item is written, replaced, added or removed.
    static QByteArray signature(const QByteArray& path);
    // Total size in bytes of the files in the item.
    static qint64 totalSize(const QByteArray& path);
    static std::optional<Error> remove(const QByteArray& path);
    // The name of a placeholder that reads as one (a user's file may look like a placeholder).
    static bool isPlaceholder(const QByteArray& folder, const QByteArray& name);
};

}  // namespace vl
