#pragma once

#include "toolkit/DocumentListEntry.h"

#include <QList>

#include <functional>

namespace vl {

// Reads the rows of one drive folder through the cloud documents service: every visible item,
// the cloud-only ones by their logical URLs, app libraries under their localized names, sorted
// by name as people sort (numbers by value, case ignored). Safe on any thread.
class DocumentListReader {
public:
    // Folders come first in every order. Name is the natural order; Date puts the newest first,
    // Size the largest first, Kind groups by content type; ties go by name.
    enum class SortOrder { Name = 0, Date = 1, Size = 2, Kind = 3 };

    // Gets each batch of rows, sorted within itself; `last` says the folder is read. Returning
    // false stops the read.
    using BatchHandler = std::function<bool(QList<DocumentListEntry> batch, bool last)>;

    // The whole folder, sorted.
    static QList<DocumentListEntry> readFolder(const Url& folder,
                                               SortOrder order = SortOrder::Name);
    // The folder in batches, for a list that shows rows while the rest is read: the first
    // batch as soon as `firstBatch` rows are read, then one about every `interval` ms.
    static void readFolderInBatches(const Url& folder, SortOrder order, int firstBatch,
                                    int interval, const BatchHandler& handler);

    static bool lessThan(const DocumentListEntry& a, const DocumentListEntry& b, SortOrder order);
    static void sortEntries(QList<DocumentListEntry>& entries, SortOrder order);
    // Rows sorted in `order` and more rows sorted the same way, as one sorted list.
    static QList<DocumentListEntry> mergeEntries(QList<DocumentListEntry>&& rows,
                                                 QList<DocumentListEntry>&& added, SortOrder order);
    // Natural name order: digit runs by value, the rest without regard to case, in the locale's
    // order where letters outside ASCII differ.
    static int compareNames(QStringView a, QStringView b);
    // The name a folder's list is titled with: the container's name for the default container
    // and app libraries, else the folder's localized name.
    static QString titleForFolder(const Url& folder);
    // The freedesktop icon name for a file of this content type.
    static QString iconNameForContentType(const QString& contentType);
};

}  // namespace vl
