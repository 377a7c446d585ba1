#include "toolkit/DocumentListModel.h"

#include "toolkit/ToolkitIcons.h"

namespace vl {

DocumentListModel::DocumentListModel()
    : thumbnails_(std::make_unique<DocumentThumbnailLoader>([this](const Url& url) {
          if (const int row = rowForURL(url); row >= 0) {
              emit dataChanged(index(row), index(row), {Qt::DecorationRole});
          }
      })) {}

DocumentListModel::~DocumentListModel() = default;

int DocumentListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(entries_.size());
}

QVariant DocumentListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= entries_.size()) {
        return {};
    }
    const DocumentListEntry& entry = entries_.at(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return entry.location.isEmpty()
                       ? entry.displayName
                       : entry.displayName + QLatin1Char('\n') + entry.location;
        case Qt::ToolTipRole:
            return entry.location.isEmpty() ? QVariant() : QVariant(entry.location);
        case Qt::AccessibleTextRole:
            return entry.displayName;
        case Qt::DecorationRole:
            if (DocumentThumbnailLoader::wantsThumbnail(entry.kind)) {
                if (QIcon thumbnail = thumbnails_->thumbnail(entry.url, ThumbnailSize);
                    !thumbnail.isNull()) {
                    return thumbnail;
                }
            }
            // Icons are made here, on the main thread, and cached by name.
            return entry.isCloudOnly
                       ? ToolkitIcons::cloudOnlyIcon(entry.iconName, entry.genericIconName)
                       : ToolkitIcons::icon(entry.iconName, entry.genericIconName);
        case UrlRole:
            return entry.url.toQUrl();
        default:
            return {};
    }
}

void DocumentListModel::setEntries(QList<DocumentListEntry> entries) {
    beginResetModel();
    entries_ = std::move(entries);
    rows_.clear();
    rows_.reserve(entries_.size());
    for (qsizetype row = 0; row < entries_.size(); ++row) {
        rows_.insert(entries_.at(row).url, int(row));
    }
    endResetModel();
}

int DocumentListModel::rowForURL(const Url& url) const {
    return rows_.value(url, -1);
}

}  // namespace vl
