#pragma once

#include "platform/files/Url.h"
#include "toolkit/DocumentListKind.h"

#include <QString>

#include <memory>

namespace vl {

// One row of a folder list, as read on the background queue. A folder may hold 100,000 of them,
// so a row keeps only what is its own: its name (the URL derives from the folder and the name),
// a name to show when that differs, and what orders the rows; the folder and the kind are
// shared with the other rows.
struct DocumentListEntry {
    // The folder that holds the item, and in search results where it is ("Work ▸ Letters",
    // empty for the rows of a folder).
    struct Folder {
        Url url;
        QString location;
    };

    std::shared_ptr<const Folder> folder;
    // The last component of the item's URL (a cloud-only item's logical name).
    QString name;
    // The name shown when it is not `name`: an app library's localized name, the name of the
    // document a reference points at. Null otherwise.
    QString shownName;
    const DocumentListKind* kind = DocumentListKind::folder();
    // What the sort orders other than by name use: the content's modification time (ms since
    // the epoch) and the size in bytes (0 for folders), read only when an order needs them.
    qint64 modified = 0;
    quint64 size = 0;
    // Folders and app libraries (not packages): a tap enters them.
    bool isFolder = false;
    // Folders and packages: the URL names a directory.
    bool isDirectory = false;
    bool isAppLibrary = false;
    // Only the placeholder is on the device.
    bool isCloudOnly = false;
    // Kept offline: pinned itself, or inside a pinned folder.
    bool isPinned = false;

    Url url() const { return folder->url.appendingPathComponent(name, isDirectory); }
    const QString& displayName() const { return shownName.isNull() ? name : shownName; }
    const QString& location() const { return folder->location; }
};

}  // namespace vl
