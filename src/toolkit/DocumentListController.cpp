#include "toolkit/DocumentListController.h"

#include "toolkit/Background.h"

#include "logging/VLLogging.h"
#include "platform/app/Preferences.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertAction.h"
#include "toolkit/AlertController.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentListControllerDelegate.h"
#include "toolkit/DocumentListItemDelegate.h"
#include "toolkit/DocumentListModel.h"
#include "toolkit/DocumentListReader.h"
#include "toolkit/DocumentListSearch.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/PopoverPresentationController.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QGestureEvent>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMenu>
#include <QPalette>
#include <QScrollBar>
#include <QScroller>
#include <QTapAndHoldGesture>
#include <QVBoxLayout>

#include <mutex>

namespace vl {

namespace {

struct ActionTitle {
    int action;
    const char* key;
};

// The per-item actions in the order the menu offers them.
constexpr ActionTitle kActionTitles[] = {
    {DocumentListController::ActionsMenu, "Actions…"},
    {DocumentListController::Details, "Details"},
    {DocumentListController::Rename, "Rename Item…"},
    {DocumentListController::Delete, "Delete"},
};

const QString SortOrderKey = QStringLiteral("DocumentListSortOrder");

// The sort orders, in DocumentListReader::SortOrder's numbering.
constexpr const char* kSortTitles[] = {"Name", "Date", "Size", "Kind"};

}  // namespace

DispatchQueuePtr DocumentListController::readQueue() {
    // One reader queue for every list, made again when another dispatcher is installed. The
    // owner is held weakly rather than by address: a new dispatcher may be allocated where a
    // freed one was, and must not get the old one's queue, which nobody drains any more.
    static std::mutex mutex;
    static std::weak_ptr<Dispatcher> owner;
    static DispatchQueuePtr queue;
    std::lock_guard lock(mutex);
    std::shared_ptr<Dispatcher> current = Dispatch::installedDispatcher();
    if (!current) {
        current = Dispatch::realDispatcher();
    }
    if (!queue || owner.lock() != current) {
        owner = current;
        queue = Dispatch::serialQueue(QStringLiteral("com.tessaly.VelloraApp.DocumentListReader"),
                                      QualityOfService::UserInitiated);
    }
    return queue;
}

std::shared_ptr<DocumentListController> DocumentListController::create() {
    if (!CloudDocuments::isInstalled()) {
        return nullptr;
    }
    const std::optional<Url> root = CloudDocuments::shared().defaultContainerURL();
    if (!root) {
        return nullptr;
    }
    auto list =
        std::make_shared<DocumentListController>(*root, DocumentListReader::titleForFolder(*root));
    list->reloadData();
    return list;
}

std::shared_ptr<DocumentListController> DocumentListController::createForURL(const Url& folder) {
    if (!CloudDocuments::isInstalled() || !CloudDocuments::shared().driveRootURL() ||
        !CloudDocuments::shared().relativePathForURL(folder)) {
        return nullptr;
    }
    auto list = std::make_shared<DocumentListController>(
        Url::fromPath(folder.path(), true), DocumentListReader::titleForFolder(folder));
    list->reloadData();
    return list;
}

std::optional<QList<std::shared_ptr<DocumentListController>>>
DocumentListController::hierarchyForURL(const Url& folder) {
    if (!CloudDocuments::isInstalled()) {
        return std::nullopt;
    }
    const std::optional<Url> root = CloudDocuments::shared().defaultContainerURL();
    if (!root || !root->isAncestorOf(folder) || !QFileInfo(folder.path()).isDir()) {
        return std::nullopt;
    }
    QList<std::shared_ptr<DocumentListController>> lists;
    std::shared_ptr<DocumentListController> rootList = create();
    if (!rootList) {
        return std::nullopt;
    }
    lists.append(rootList);
    const QString relative = QDir(root->path()).relativeFilePath(folder.path());
    Url current = *root;
    if (relative != QLatin1String(".")) {
        for (const QString& component : relative.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
            current = current.appendingPathComponent(component, true);
            std::shared_ptr<DocumentListController> list = createForURL(current);
            if (!list) {
                return std::nullopt;
            }
            lists.append(list);
        }
    }
    return lists;
}

DocumentListController::DocumentListController(const Url& folder, const QString& title)
    : presentedURL_(folder), model_(std::make_shared<DocumentListModel>()) {
    setTitle(title);
}

DocumentListController::~DocumentListController() = default;

QList<Url> DocumentListController::containedItems() const {
    QList<Url> urls;
    urls.reserve(model_->entries().size());
    for (const DocumentListEntry& entry : model_->entries()) {
        urls.append(entry.url());
    }
    return urls;
}

qsizetype DocumentListController::itemCount() const {
    return model_->entries().size();
}

QList<Url> DocumentListController::selectedItems() const {
    return selected_;
}

QList<int> DocumentListController::rowsOf(const QList<Url>& urls) const {
    QList<int> rows;
    rows.reserve(urls.size());
    for (const Url& url : urls) {
        if (const int row = model_->rowForURL(url); row >= 0) {
            rows.append(row);
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void DocumentListController::setSelectedItems(const QList<Url>& urls) {
    QList<Url> selection;
    for (const int row : rowsOf(urls)) {
        selection.append(model_->entryAt(row).url());
    }
    if (selection == selected_) {
        return;
    }
    selected_ = selection;
    syncSelectionToView();
    reportItemsChanged();
}

void DocumentListController::setEditing(bool editing, bool /*animated*/) {
    if (editing_ == editing) {
        return;
    }
    editing_ = editing;
    if (listView_) {
        listView_->setSelectionMode(editing ? QAbstractItemView::MultiSelection
                                            : QAbstractItemView::NoSelection);
        listView_->viewport()->update();
    }
    if (!editing && !selected_.isEmpty()) {
        selected_.clear();
        syncSelectionToView();
        reportItemsChanged();
    }
}

void DocumentListController::setGridMode(bool grid) {
    gridMode_ = grid;
    if (!listView_) {
        return;
    }
    if (grid) {
        listView_->setViewMode(QListView::IconMode);
        listView_->setIconSize(QSize(64, 64));
        listView_->setGridSize(QSize(112, 124));
        listView_->setWordWrap(true);
    } else {
        listView_->setViewMode(QListView::ListMode);
        listView_->setIconSize(QSize(32, 32));
        listView_->setGridSize(QSize());
        listView_->setWordWrap(false);
    }
    listView_->setMovement(QListView::Static);
    listView_->setResizeMode(QListView::Adjust);
}

void DocumentListController::reloadData() {
    const quint64 generation = ++*readGeneration_;
    readPending_ = true;
    std::weak_ptr<DocumentListController> weak = sharedAs<DocumentListController>();
    const Url folder = presentedURL_;
    const DocumentListReader::SortOrder order = sortOrder_;
    const std::shared_ptr<std::atomic<quint64>> latest = readGeneration_;
    if (loaded_ || model_->rowCount() > 0) {
        // Rows are shown: the new ones replace them at once, so that none disappear for a while.
        readQueue()->async([weak, folder, generation, order, latest] {
            if (*latest != generation) {
                return;
            }
            QList<DocumentListEntry> entries = DocumentListReader::readFolder(folder, order);
            Dispatch::mainQueue()->async(
                [weak, generation, entries = std::move(entries)]() mutable {
                    std::shared_ptr<DocumentListController> list = weak.lock();
                    // A newer read supersedes this one.
                    if (list && *list->readGeneration_ == generation) {
                        list->apply(std::move(entries), true, false);
                    }
                });
        });
        return;
    }
    // The first read shows the first rows as soon as they are read and adds the rest in batches.
    readQueue()->async([weak, folder, generation, order, latest] {
        DocumentListReader::readFolderInBatches(
            folder, order, FirstBatchSize, BatchInterval,
            [weak, generation, latest](QList<DocumentListEntry> batch, bool last) {
                if (*latest != generation || weak.expired()) {
                    return false;
                }
                Dispatch::mainQueue()->async(
                    [weak, generation, last, batch = std::move(batch)]() mutable {
                        std::shared_ptr<DocumentListController> list = weak.lock();
                        if (list && *list->readGeneration_ == generation) {
                            list->apply(std::move(batch), last, true);
                        }
                    });
                return true;
            });
    });
}

void DocumentListController::apply(QList<DocumentListEntry> entries, bool last, bool merge) {
    readPending_ = !last;
    const QList<Url> previousSelection = selected_;
    const ViewPlace place = viewPlace();
    if (merge) {
        model_->mergeEntries(std::move(entries), sortOrder_);
    } else {
        model_->setEntries(std::move(entries));
    }
    restoreViewPlace(place);
    if (!previousSelection.isEmpty()) {
        selected_.clear();
        for (const int row : rowsOf(previousSelection)) {
            selected_.append(model_->entryAt(row).url());
        }
    }
    syncSelectionToView();
    if (last) {
        loaded_ = true;
    }
    reportItemsChanged();
}

DocumentListController::ViewPlace DocumentListController::viewPlace() const {
    ViewPlace place;
    if (!listView_) {
        return place;
    }
    place.scroll = listView_->verticalScrollBar()->value();
    if (const QModelIndex current = listView_->currentIndex(); current.isValid()) {
        place.current = model_->entryAt(current.row()).url();
    }
    // At the very top the list stays at the top, showing the first rows as they come; once it
    // was scrolled, the row at the top stays where it is.
    if (place.scroll > 0) {
        if (const QModelIndex top = listView_->indexAt(QPoint(4, 4)); top.isValid()) {
            place.top = model_->entryAt(top.row()).url();
            place.topOffset = listView_->visualRect(top).top();
        }
    }
    return place;
}

void DocumentListController::restoreViewPlace(const ViewPlace& place) {
    if (!listView_) {
        return;
    }
    // Lays the rows out now rather than at the next paint, so that the scroll range is theirs.
    listView_->doItemsLayout();
    QScrollBar* bar = listView_->verticalScrollBar();
    if (const int row = place.top.isEmpty() ? -1 : model_->rowForURL(place.top); row >= 0) {
        bar->setValue(bar->value() + listView_->visualRect(model_->index(row)).top() -
                      place.topOffset);
    } else {
        bar->setValue(place.scroll);
    }
    if (const int row = place.current.isEmpty() ? -1 : model_->rowForURL(place.current); row >= 0) {
        listView_->selectionModel()->setCurrentIndex(model_->index(row),
                                                     QItemSelectionModel::NoUpdate);
    }
}

void DocumentListController::reportItemsChanged() {
    if (std::shared_ptr<DocumentListControllerDelegate> d = delegate()) {
        d->documentListControllerItemsChanged(sharedAs<DocumentListController>());
    }
}

void DocumentListController::syncSelectionToView() {
    if (!listView_) {
        return;
    }
    syncingSelection_ = true;
    // One range per run of adjacent rows: the view asks the selection about every row it
    // paints, and all of a big folder selected is then one range rather than 100,000.
    QItemSelection selection;
    const QList<int> rows = rowsOf(selected_);
    for (qsizetype first = 0, last = 0; first < rows.size(); first = last) {
        for (last = first + 1; last < rows.size() && rows.at(last) == rows.at(last - 1) + 1;) {
            ++last;
        }
        selection.select(model_->index(rows.at(first)), model_->index(rows.at(last - 1)));
    }
    listView_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    syncingSelection_ = false;
}

void DocumentListController::takeSelectionFromView() {
    if (syncingSelection_ || !listView_) {
        return;
    }
    QList<int> rows;
    for (const QItemSelectionRange& range : listView_->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.append(row);
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QList<Url> selection;
    for (const int row : rows) {
        selection.append(model_->entryAt(row).url());
    }
    if (selection != selected_) {
        selected_ = selection;
        reportItemsChanged();
    }
}

bool DocumentListController::tapItemAtURL(const Url& url) {
    const int row = model_->rowForURL(url);
    if (row < 0) {
        return false;
    }
    tapEntry(model_->entryAt(row));
    return true;
}

bool DocumentListController::isShowingSearchResults() const {
    return search_ && search_->isShowingResults();
}

void DocumentListController::endSearch() {
    if (search_) {
        search_->endSearch();
    }
}

void DocumentListController::tapEntry(const DocumentListEntry& entry) {
    std::shared_ptr<DocumentListController> self = sharedAs<DocumentListController>();
    if (editing_) {
        QList<Url> selection = selected_;
        const Url url = entry.url();
        if (!selection.removeOne(url)) {
            selection.append(url);
        }
        setSelectedItems(selection);
        return;
    }
    std::shared_ptr<DocumentListControllerDelegate> d = delegate();
    if (!d) {
        return;
    }
    if (entry.isFolder) {
        std::shared_ptr<DocumentListController> list = createForURL(entry.url());
        if (!list) {
            VLLOG(3, "No folder list for %@", entry.url());
            return;
        }
        d->documentListControllerDidSelectContainerWithViewController(self, list);
    } else {
        d->documentListControllerDidSelectItemAtURL(self, entry.url());
    }
}

bool DocumentListController::requestAction(int action, const Url& url) {
    if (action < 0 || action > 31 || !(availableActions_ & (1u << action))) {
        return false;
    }
    const int row = model_->rowForURL(url);
    if (row < 0) {
        return false;
    }
    std::shared_ptr<DocumentListController> self = sharedAs<DocumentListController>();
    const std::shared_ptr<DocumentListControllerDelegate> d = delegate();
    if (d && !d->documentListControllerCanPerformAction(self, action)) {
        return false;
    }
    if (d) {
        d->documentListControllerPerformActionURLOriginatingViewCompletion(
            self, action, url, rowView(model_->index(row)), [] {});
    }
    return true;
}

QWidget* DocumentListController::rowView(const QModelIndex& index) {
    view();
    // A transparent stand-in over the row: what an action shows can anchor to it.
    if (!anchor_) {
        anchor_ = new QWidget(listView_->viewport());
        anchor_->setObjectName(QStringLiteral("rowAnchor"));
        anchor_->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    anchor_->setGeometry(listView_->visualRect(index));
    return anchor_;
}

void DocumentListController::showActionMenu(const QModelIndex& index, const QPoint&) {
    if (!index.isValid() || presentedViewController()) {
        return;
    }
    const DocumentListEntry& entry = model_->entryAt(index.row());
    const Url url = entry.url();
    std::shared_ptr<DocumentListController> self = sharedAs<DocumentListController>();
    const std::shared_ptr<DocumentListControllerDelegate> d = delegate();
    // An action sheet rather than a popup menu: its buttons are in the window, where a screen
    // reader finds them, and it is the same on a phone and a tablet as the app's other sheets.
    const auto sheet = AlertController::alertControllerWithTitle(
        entry.displayName(), QString(), AlertController::Style::ActionSheet);
    const std::weak_ptr<DocumentListController> weak = self;
    for (const ActionTitle& title : kActionTitles) {
        if (!(availableActions_ & (1u << title.action)) ||
            (d && !d->documentListControllerCanPerformAction(self, title.action))) {
            continue;
        }
        const int action = title.action;
        sheet->addAction(AlertAction::actionWithTitle(
            Strings::localized(title.key),
            action == Delete ? AlertAction::Style::Destructive : AlertAction::Style::Default,
            [weak, action, url](const std::shared_ptr<AlertAction>&) {
                if (std::shared_ptr<DocumentListController> list = weak.lock()) {
                    list->requestAction(action, url);
                }
            }));
    }
    if (sheet->actions().isEmpty()) {
        return;
    }
    sheet->addAction(
        AlertAction::actionWithTitle(Strings::localized("Cancel"), AlertAction::Style::Cancel));
    sheet->popoverPresentationController()->setSourceView(rowView(index));
    presentViewController(sheet, true);
}

void DocumentListController::loadView() {
    auto* view = new QWidget;
    fillBackground(view);
    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);

    listView_ = new QListView(view);
    listView_->setObjectName(QStringLiteral("documentList"));
    listView_->setModel(model_.get());
    listView_->setItemDelegate(new DocumentListItemDelegate(listView_));
    listView_->setFrameShape(QFrame::NoFrame);
    listView_->setUniformItemSizes(true);
    listView_->setSpacing(2);
    listView_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    listView_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    listView_->setSelectionMode(editing_ ? QAbstractItemView::MultiSelection
                                         : QAbstractItemView::NoSelection);
    listView_->setContextMenuPolicy(Qt::CustomContextMenu);
    // Arrows move the current row, Return opens it; see eventFilter for the rest.
    listView_->setFocusPolicy(Qt::StrongFocus);
    listView_->installEventFilter(this);
    layout->addWidget(listView_);
    search_ = new DocumentListSearch(
        presentedURL_, title(), [this] { return model_->entries(); },
        [this](const DocumentListEntry& entry) {
            // While selecting, only the folder's own rows can be picked.
            if (!editing_ || model_->rowForURL(entry.url()) >= 0) {
                tapEntry(entry);
            }
        });
    search_->setParent(this);
    search_->install(view, listView_, makeSortButton());
    setView(view);
    setGridMode(gridMode_);

    QScroller::grabGesture(listView_->viewport(), QScroller::TouchGesture);
    listView_->viewport()->grabGesture(Qt::TapAndHoldGesture);
    listView_->viewport()->installEventFilter(this);

    connect(listView_, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (!editing_ && index.isValid()) {
            tapItemAtURL(model_->entryAt(index.row()).url());
        }
    });
    connect(listView_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { takeSelectionFromView(); });
    connect(listView_, &QListView::customContextMenuRequested, this, [this](const QPoint& pos) {
        showActionMenu(listView_->indexAt(pos), listView_->viewport()->mapToGlobal(pos));
    });
    connect(model_.get(), &QAbstractItemModel::modelReset, this, [this] { syncSelectionToView(); });

    watcher_ = new QFileSystemWatcher(this);
    watcher_->addPath(presentedURL_.path());
    connect(watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { reloadData(); });

    followDownloadsAndPins();
    syncSelectionToView();
    if (!loaded_ && !readPending_) {
        reloadData();
    }
}

bool DocumentListController::eventFilter(QObject* watched, QEvent* event) {
    if (listView_ && watched == listView_ && event->type() == QEvent::KeyPress &&
        handleKey(static_cast<QKeyEvent*>(event))) {
        return true;
    }
    if (listView_ && watched == listView_->viewport() && event->type() == QEvent::Gesture) {
        auto* gestures = static_cast<QGestureEvent*>(event);
        if (auto* hold = static_cast<QTapAndHoldGesture*>(gestures->gesture(Qt::TapAndHoldGesture));
            hold && hold->state() == Qt::GestureFinished) {
            const QPoint local = listView_->viewport()->mapFromGlobal(hold->position().toPoint());
            // A hold that turned into a scroll is not a long press.
            QScroller* scroller = QScroller::scroller(listView_->viewport());
            if (scroller->state() == QScroller::Inactive) {
                showActionMenu(listView_->indexAt(local), hold->position().toPoint());
            }
            gestures->accept(hold);
            return true;
        }
    }
    return ViewController::eventFilter(watched, event);
}

DocumentListReader::SortOrder DocumentListController::storedSortOrder() {
    const int stored = Preferences::standard().value(SortOrderKey).toInt();
    return stored >= 0 && stored < int(std::size(kSortTitles))
               ? DocumentListReader::SortOrder(stored)
               : DocumentListReader::SortOrder::Name;
}

void DocumentListController::setSortOrder(DocumentListReader::SortOrder order) {
    Preferences::standard().setValue(SortOrderKey, int(order));
    Preferences::standard().synchronize();
    if (order == sortOrder_) {
        return;
    }
    sortOrder_ = order;
    showSortOrder();
    // Read again, off the main thread: the rows and the selection come back in the new order.
    reloadData();
}

QToolButton* DocumentListController::makeSortButton() {
    auto* button = new QToolButton;
    button->setObjectName(QStringLiteral("sortButton"));
    button->setAutoRaise(true);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setStyleSheet(
        QStringLiteral("QToolButton { color: #007aff; padding: 4px; } "
                       "QToolButton::menu-indicator { image: none; }"));
    auto* menu = new QMenu(button);
    for (int order = 0; order < int(std::size(kSortTitles)); ++order) {
        QAction* action = menu->addAction(Strings::localized(kSortTitles[order]));
        action->setCheckable(true);
        action->setChecked(order == int(sortOrder_));
        connect(action, &QAction::triggered, this, [this, order, menu] {
            for (int i = 0; i < menu->actions().size(); ++i) {
                menu->actions().at(i)->setChecked(i == order);
            }
            setSortOrder(DocumentListReader::SortOrder(order));
        });
    }
    button->setMenu(menu);
    sortButton_ = button;
    // Only shown: storing it would write the preferences file every time a list is made.
    showSortOrder();
    return button;
}

void DocumentListController::showSortOrder() {
    if (!sortButton_) {
        return;
    }
    const QString title = Strings::localized(kSortTitles[int(sortOrder_)]);
    sortButton_->setText(title + QStringLiteral(" ▾"));
    sortButton_->setAccessibleName(format(Strings::localized("Sort by %@"), title));
}

bool DocumentListController::handleKey(QKeyEvent* key) {
    if (key->matches(QKeySequence::SelectAll)) {
        if (editing_) {
            setSelectedItems(containedItems());
        }
        return true;
    }
    switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (const QModelIndex current = listView_->currentIndex(); current.isValid()) {
                tapItemAtURL(model_->entryAt(current.row()).url());
            }
            return true;
        case Qt::Key_Escape:
            // Leaving edit mode is the owner's business: Escape presses its Cancel button.
            if (const std::shared_ptr<BarButtonItem> cancel =
                    navigationItem()->rightBarButtonItem();
                editing_ && cancel) {
                cancel->trigger();
            }
            return true;
        default:
            return false;
    }
}

}  // namespace vl
