#include "toolkit/DocumentListModel.h"

#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <algorithm>

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
            return entry.location().isEmpty()
                       ? entry.displayName()
                       : entry.displayName() + QLatin1Char('\n') + entry.location();
        case Qt::ToolTipRole:
            return entry.location().isEmpty() ? QVariant() : QVariant(entry.location());
        case Qt::AccessibleTextRole:
            return entry.displayName();
        case Qt::AccessibleDescriptionRole: {
            QStringList parts;
            if (entry.isPinned) {
                parts.append(Strings::localized("Kept offline"));
            }
            if (const auto found = progress_.constFind(entry.url().path());
                found != progress_.constEnd()) {
                parts.append(
                    format(Strings::localized("Downloading, %d%%"), int(*found * 100 + 0.5)));
            }
            return parts.isEmpty() ? QVariant() : QVariant(parts.join(QStringLiteral(", ")));
        }
        case PinnedRole:
            return entry.isPinned;
        case ProgressRole:
            if (progress_.isEmpty()) {
                return {};
            }
            if (const auto found = progress_.constFind(entry.url().path());
                found != progress_.constEnd()) {
                return *found;
            }
            return {};
        case Qt::DecorationRole:
            if (entry.kind->wantsThumbnail()) {
                if (QIcon thumbnail =
                        thumbnails_->thumbnail(entry.url(), ThumbnailSize, entry.isCloudOnly);
                    !thumbnail.isNull()) {
                    return thumbnail;
                }
            }
            return entry.isCloudOnly ? entry.kind->cloudOnlyIcon() : entry.kind->icon();
        case UrlRole:
            return entry.url().toQUrl();
        default:
            return {};
    }
}

void DocumentListModel::setEntries(QList<DocumentListEntry> entries) {
    beginResetModel();
    entries_ = std::move(entries);
    rowsByName_.clear();
    rowsValid_ = false;
    endResetModel();
}

void DocumentListModel::mergeEntries(QList<DocumentListEntry> sorted,
                                     DocumentListReader::SortOrder order) {
    beginResetModel();
    entries_ = DocumentListReader::mergeEntries(std::move(entries_), std::move(sorted), order);
    rowsByName_.clear();
    rowsValid_ = false;
    endResetModel();
}

void DocumentListModel::setProgress(const Url& url, std::optional<double> fraction) {
    if (fraction) {
        progress_.insert(url.path(), *fraction);
    } else if (!progress_.remove(url.path())) {
        return;
    }
    if (const int row = rowForURL(url); row >= 0) {
        emit dataChanged(index(row), index(row), {ProgressRole, Qt::AccessibleDescriptionRole});
    }
}

int DocumentListModel::rowForURL(const Url& url) const {
    if (entries_.isEmpty()) {
        return -1;
    }
    if (!rowsValid_) {
        rowsValid_ = true;
        const DocumentListEntry::Folder* folder = entries_.front().folder.get();
        oneFolder_ = std::all_of(entries_.cbegin(), entries_.cend(), [folder](const auto& entry) {
            return entry.folder.get() == folder;
        });
        rowsByName_.clear();
        if (oneFolder_) {
            rowsByName_.reserve(entries_.size());
            for (qsizetype row = 0; row < entries_.size(); ++row) {
                rowsByName_.insert(qHash(entries_.at(row).name), int(row));
            }
        }
    }
    if (!oneFolder_) {
        const auto found = std::find_if(entries_.cbegin(), entries_.cend(),
                                        [&url](const auto& entry) { return entry.url() == url; });
        return found == entries_.cend() ? -1 : int(found - entries_.cbegin());
    }
    const Url& folder = entries_.front().folder->url;
    const QString& path = url.path();
    if (path.size() <= folder.path().size() + 1 || !path.startsWith(folder.path()) ||
        path.at(folder.path().size()) != QLatin1Char('/')) {
        return -1;
    }
    const QStringView name = QStringView(path).sliced(folder.path().size() + 1);
    for (auto [it, end] = rowsByName_.equal_range(qHash(name)); it != end; ++it) {
        if (entries_.at(*it).name == name) {
            return *it;
        }
    }
    return -1;
}

}  // namespace vl
