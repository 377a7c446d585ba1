#pragma once

#include "toolkit/DocumentListEntry.h"

#include <QList>

namespace vl {

// Reads the rows of one drive folder through the cloud documents service: every visible item,
// the cloud-only ones by their logical URLs, app libraries under their localized names, sorted
// by name as people sort (numbers by value, case ignored). Safe on any thread.
class DocumentListReader {
public:
    // Folders come first in every order. Name is the natural order; Date puts the newest first,
    // Size the largest first, Kind groups by content type; ties go by name.
    enum class SortOrder { Name = 0, Date = 1, Size = 2, Kind = 3 };

    static QList<DocumentListEntry> readFolder(const Url& folder,
                                               SortOrder order = SortOrder::Name);
    static void sortEntries(QList<DocumentListEntry>& entries, SortOrder order);
    // The name a folder's list is titled with: the container's name for the default container
    // and app libraries, else the folder's localized name.
    static QString titleForFolder(const Url& folder);
    // The freedesktop icon name for a file of this content type.
    static QString iconNameForContentType(const QString& contentType);
};

}  // namespace vl
