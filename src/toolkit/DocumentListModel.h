#pragma once

#include "toolkit/DocumentListEntry.h"

#include <QAbstractListModel>
#include <QHash>
#include <QList>

namespace vl {

// The rows of a folder list for its list view: display name, icon (cloud-only items dimmed) and
// the URL under UrlRole.
class DocumentListModel : public QAbstractListModel {
    Q_OBJECT
public:
    static constexpr int UrlRole = Qt::UserRole + 1;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const QList<DocumentListEntry>& entries() const { return entries_; }
    void setEntries(QList<DocumentListEntry> entries);
    // The row of `url`, or -1.
    int rowForURL(const Url& url) const;
    const DocumentListEntry& entryAt(int row) const { return entries_.at(row); }

private:
    QList<DocumentListEntry> entries_;
    QHash<Url, int> rows_;
};

}  // namespace vl
