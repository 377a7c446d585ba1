#pragma once

#include "toolkit/DocumentListEntry.h"
#include "toolkit/DocumentListReader.h"
#include "toolkit/DocumentThumbnailLoader.h"

#include <QAbstractListModel>
#include <QHash>
#include <QList>

#include <memory>
#include <optional>

namespace vl {

// The rows of a folder list for its list view: display name, icon (a thumbnail for images, PDFs
// and videos once it is ready; cloud-only items dimmed), the URL under UrlRole, whether the item
// is kept offline and the progress of its download, also told to screen readers.
class DocumentListModel : public QAbstractListModel {
    Q_OBJECT
public:
    static constexpr int UrlRole = Qt::UserRole + 1;
    // Whether the item is kept offline (bool).
    static constexpr int PinnedRole = Qt::UserRole + 2;
    // The fraction of the item's download under way (double), invalid when none is.
    static constexpr int ProgressRole = Qt::UserRole + 3;
    // The edge of the thumbnails, in pixels.
    static constexpr int ThumbnailSize = 128;

    DocumentListModel();
    ~DocumentListModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const QList<DocumentListEntry>& entries() const { return entries_; }
    void setEntries(QList<DocumentListEntry> entries);
    // Adds rows sorted in `order` to the rows, which are sorted the same way.
    void mergeEntries(QList<DocumentListEntry> sorted, DocumentListReader::SortOrder order);
    // The download progress shown for an item (main thread); nothing removes it.
    void setProgress(const Url& url, std::optional<double> fraction);
    // The row of `url`, or -1.
    int rowForURL(const Url& url) const;
    const DocumentListEntry& entryAt(int row) const { return entries_.at(row); }

private:
    QList<DocumentListEntry> entries_;
    QHash<QString, double> progress_;  // by path: the downloads of items shown
    // The rows by the hash of their name when they all belong to one folder (a folder's list),
    // made again when first asked after a change; a lookup compares the names of the rows
    // found, so it needs no string of its own. Search results come from many folders and are
    // few.
    mutable QMultiHash<size_t, int> rowsByName_;
    mutable bool rowsValid_ = false;
    mutable bool oneFolder_ = true;
    // Asked from data(), which is const: reading a thumbnail changes nothing the view sees until
    // it is ready and dataChanged says so.
    const std::unique_ptr<DocumentThumbnailLoader> thumbnails_;
};

}  // namespace vl
