#pragma once

#include "platform/files/Url.h"

#include <QString>

namespace vl {

// One row of a folder list, as read on the background queue: the item's URL, the name shown,
// the icon name to show, and what a tap does with it.
struct DocumentListEntry {
    Url url;
    QString displayName;
    QString iconName;
    // The icon of the item's kind, for when no icon has the precise name.
    QString genericIconName;
    // Folders and app libraries (not packages): a tap enters them.
    bool isFolder = false;
    bool isAppLibrary = false;
    // Only the placeholder is on the device.
    bool isCloudOnly = false;
    // What the sort orders other than by name use: the content's modification time (ms since
    // the epoch), the size in bytes (0 for folders) and the content type.
    qint64 modified = 0;
    quint64 size = 0;
    QString kind;
    // In search results: the folders that hold the item, from the searched folder down ("Work ▸
    // Letters"); empty for the rows of a folder.
    QString location;
};

}  // namespace vl
