#pragma once

#include "platform/app/NotificationCenter.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/files/Url.h"
#include "toolkit/DocumentListProgress.h"
#include "toolkit/DocumentListReader.h"
#include "toolkit/DocumentListSearch.h"
#include "toolkit/ViewController.h"

#include <QList>
#include <QListView>
#include <QPointer>
#include <QToolButton>

#include <atomic>
#include <memory>
#include <optional>

class QFileSystemWatcher;

class QKeyEvent;
class QModelIndex;
class QScroller;

namespace vl {

class DocumentListControllerDelegate;

class DocumentListModel;
struct DocumentListEntry;

// The folder list: the items of one drive folder as a list (or a grid), a name and an icon per
// row, read on a background queue and applied on the main queue, refreshed when the folder
// changes on disk. Outside editing a tap on a folder offers a new list for it to the delegate and
// a tap on any other item reports its URL; while editing, taps select. Per-item actions come from
// an action sheet of the row (long press or right click), limited to the available-actions mask.
// Touch and mouse drags scroll kinetically.
class DocumentListController : public ViewController {
    Q_OBJECT
public:
    // Per-item action codes; bit (1 << code) of availableActions() offers the action.
    enum Action { Delete = 0, ActionsMenu = 1, Details = 2, Rename = 3 };

    // The root list: the default container's documents folder, where each app library shows as
    // a folder under its localized name. Null when the drive is unavailable.
    static std::shared_ptr<DocumentListController> create();
    // The list of one folder of the drive; null when the URL lies outside the drive.
    static std::shared_ptr<DocumentListController> createForURL(const Url& folder);
    // The lists from the drive root down to `folder` (the root alone for the root itself);
    // absent when the folder is outside the drive or the drive is unavailable.
    static std::optional<QList<std::shared_ptr<DocumentListController>>> hierarchyForURL(
        const Url& folder);

    explicit DocumentListController(const Url& folder, const QString& title);
    ~DocumentListController() override;

    Url presentedURL() const { return presentedURL_; }

    // The items shown, in display order; while a large folder is first read, those read so far.
    QList<Url> containedItems() const;
    // How many items are shown: containedItems().size() without making their URLs.
    qsizetype itemCount() const;
    QList<Url> selectedItems() const;
    // Selects exactly these (URLs not shown are ignored) and reports the change.
    void setSelectedItems(const QList<Url>& urls);

    bool isEditing() const { return editing_; }
    void setEditing(bool editing, bool animated);

    unsigned availableActions() const { return availableActions_; }
    void setAvailableActions(unsigned mask) { availableActions_ = mask; }

    // The order of the rows; a new list takes the one last chosen (kept in the standard
    // preferences), and choosing one from the list's sort button keeps it for the next lists.
    DocumentListReader::SortOrder sortOrder() const { return sortOrder_; }
    void setSortOrder(DocumentListReader::SortOrder order);
    static DocumentListReader::SortOrder storedSortOrder();

    bool isGridMode() const { return gridMode_; }
    void setGridMode(bool grid);

    std::shared_ptr<DocumentListControllerDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<DocumentListControllerDelegate>& delegate) {
        delegate_ = delegate;
    }

    // How many rows the first read shows at once, and how often (ms) it adds the rows read since.
    static constexpr int FirstBatchSize = 100;
    static constexpr int BatchInterval = 150;

    // Whether the first read of the folder has been applied whole.
    bool hasLoaded() const { return loaded_; }
    // Reads the folder again (on the background queue).
    void reloadData();

    // What a tap on the row of `url` does; false when no such row is shown.
    bool tapItemAtURL(const Url& url);
    // What choosing a per-item action for `url` does; false when the action is not offered (by
    // the mask, or the delegate cannot carry it out) or no such row is shown.
    bool requestAction(int action, const Url& url);

    // The list widget, once the view loaded.
    QListView* listView() const { return listView_; }

    // The search field and its results, once the view loaded.
    DocumentListSearch* search() const { return search_; }
    // Whether search results are shown in place of the folder's rows (a tap then came from them).
    bool isShowingSearchResults() const;
    // Clears the search and shows the folder's rows again.
    void endSearch();

    // The download progress of the rows on screen, once the view loaded.
    DocumentListProgress* downloadProgress() const { return progress_; }

protected:
    void loadView() override;

private:
    // Where the list is scrolled to, by the row at its top, and the current row.
    struct ViewPlace {
        int scroll = 0;
        Url top;
        int topOffset = 0;
        Url current;
    };
    // Shows `entries` in place of the rows, or, with `merge`, adds them (a batch of the first
    // read); `last` says the read is complete.
    void apply(QList<DocumentListEntry> entries, bool last, bool merge);
    ViewPlace viewPlace() const;
    void restoreViewPlace(const ViewPlace& place);
    QToolButton* makeSortButton();
    void showSortOrder();
    // A tap on a row of the folder or of the search results.
    void tapEntry(const DocumentListEntry& entry);
    void reportItemsChanged();
    // The rows of the URLs shown, in display order, each once.
    QList<int> rowsOf(const QList<Url>& urls) const;
    void syncSelectionToView();
    void takeSelectionFromView();
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Return or Space opens (or, while editing, selects) the current row, Ctrl+A selects all
    // while editing, Escape leaves editing through the navigation item's right button.
    bool handleKey(QKeyEvent* key);
    void showActionMenu(const QModelIndex& index, const QPoint& globalPos);
    QWidget* rowView(const QModelIndex& index);
    // Follows the downloads of the rows on screen and reads the folder again when an item of it
    // (or the folder, or a folder above it) is pinned or unpinned
    // (DocumentListControllerOffline.cpp).
    void followDownloadsAndPins();
    static DispatchQueuePtr readQueue();

    Url presentedURL_;
    std::shared_ptr<DocumentListModel> model_;
    std::weak_ptr<DocumentListControllerDelegate> delegate_;
    QList<Url> selected_;  // in display order
    bool syncingSelection_ = false;
    bool editing_ = false;
    bool gridMode_ = false;
    bool loaded_ = false;
    bool readPending_ = false;
    unsigned availableActions_ = 0;
    // The latest read; the reader queue looks at it to drop a read that was superseded.
    const std::shared_ptr<std::atomic<quint64>> readGeneration_ =
        std::make_shared<std::atomic<quint64>>(0);
    QPointer<QListView> listView_;
    QPointer<QFileSystemWatcher> watcher_;
    QPointer<QWidget> anchor_;
    QPointer<DocumentListSearch> search_;
    QPointer<QToolButton> sortButton_;
    QPointer<DocumentListProgress> progress_;
    NotificationCenter::TokenPtr pinningObserver_;
    DocumentListReader::SortOrder sortOrder_ = storedSortOrder();
};

}  // namespace vl
