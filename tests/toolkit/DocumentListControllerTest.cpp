#include "drive/service/DriveService.h"
#include "platform/app/Preferences.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/AlertAction.h"
#include "toolkit/AlertController.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentListControllerDelegate.h"
#include "toolkit/DocumentListModel.h"
#include "toolkit/DocumentListSearch.h"
#include "toolkit/NavigationItem.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vl;

namespace {

class ListRecorder : public DocumentListControllerDelegate {
public:
    int changes = 0;
    std::function<void(const std::shared_ptr<DocumentListController>&)> onChange;
    std::shared_ptr<DocumentListController> newList;
    Url selectedURL;
    QList<std::pair<int, Url>> actions;
    void documentListControllerItemsChanged(
        const std::shared_ptr<DocumentListController>& list) override {
        ++changes;
        if (onChange) {
            onChange(list);
        }
    }
    void documentListControllerDidSelectContainerWithViewController(
        const std::shared_ptr<DocumentListController>&,
        const std::shared_ptr<DocumentListController>& list) override {
        newList = list;
    }
    void documentListControllerDidSelectItemAtURL(const std::shared_ptr<DocumentListController>&,
                                                  const Url& url) override {
        selectedURL = url;
    }
    void documentListControllerPerformActionURLOriginatingViewCompletion(
        const std::shared_ptr<DocumentListController>&, int action, const Url& url,
        QWidget* originatingView, std::function<void()> completion) override {
        EXPECT_NE(originatingView, nullptr);
        EXPECT_TRUE(completion);
        actions.append({action, url});
    }
    int refused = -1;
    bool documentListControllerCanPerformAction(const std::shared_ptr<DocumentListController>&,
                                                int action) override {
        return action != refused;
    }
    void documentListControllerPerformActionURL(const std::shared_ptr<DocumentListController>&,
                                                int action, const Url& url) override {
        actions.append({action, url});
    }
};

// A drive home on a temporary directory: two local files, a folder, a cloud-only document and
// one app library.
class DocumentListControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        const QString home = dir.path() + QStringLiteral("/home");
        DriveStore store{DriveHome(home)};
        ASSERT_FALSE(store.prepare());
        AccountRecord account;
        account.account = QStringLiteral("ada@example.com");
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store.writeAccount(account));
        ContainerRecord editor;
        editor.identifier = QStringLiteral("com.example.Editor");
        editor.localizedName = QStringLiteral("Editor");
        editor.folder = QStringLiteral("com~example~Editor");
        ASSERT_FALSE(store.addContainer(editor));
        write(dir.path() + QStringLiteral("/src/Report 10.txt"));
        ASSERT_FALSE(store.importItem(dir.path() + QStringLiteral("/src/Report 10.txt"),
                                      QStringLiteral("Report 10.txt"), false));
        ASSERT_FALSE(store.importItem(dir.path() + QStringLiteral("/src/Report 10.txt"),
                                      QStringLiteral("report 9.txt"), false));
        ASSERT_FALSE(store.importItem(dir.path() + QStringLiteral("/src/Report 10.txt"),
                                      QStringLiteral("Cloud.txt"), true));
        root = store.driveRootURL();
        ASSERT_TRUE(QDir(root.path()).mkpath(QStringLiteral("Work/Letters")));
        service = DriveService::install(home);
    }
    void TearDown() override {
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
        Preferences::standard().remove(QStringLiteral("DocumentListSortOrder"));
    }
    static void write(const QString& path) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("hello");
    }
    std::shared_ptr<DocumentListController> loadedRootList() {
        auto list = DocumentListController::create();
        if (list) {
            list->setDelegate(recorder);
            dispatch->runUntilIdle();
        }
        return list;
    }
    QStringList names(const std::shared_ptr<DocumentListController>& list) {
        list->loadViewIfNeeded();
        QStringList shown;
        for (int row = 0; row < list->listView()->model()->rowCount(); ++row) {
            shown << list->listView()->model()->index(row, 0).data().toString();
        }
        return shown;
    }

    VirtualDispatcher::Installation dispatch;
    QTemporaryDir dir;
    Url root;
    std::shared_ptr<DriveService> service;
    std::shared_ptr<ListRecorder> recorder = std::make_shared<ListRecorder>();
};

TEST_F(DocumentListControllerTest, RootListShowsTheDriveWithAppLibrariesByName) {
    auto list = DocumentListController::create();
    ASSERT_NE(list, nullptr);
    list->setDelegate(recorder);
    EXPECT_TRUE(list->containedItems().isEmpty()) << "read on the background queue";
    dispatch->runUntilIdle();
    EXPECT_TRUE(list->hasLoaded());
    EXPECT_EQ(recorder->changes, 1);
    EXPECT_EQ(list->title(), QStringLiteral("Vellora Drive"));
    EXPECT_EQ(list->presentedURL(), root);
    // Folders first, then sorted as people sort: numbers by value, case ignored; placeholders by
    // their item's name.
    EXPECT_EQ(names(list),
              (QStringList{"Editor", "Work", "Cloud.txt", "report 9.txt", "Report 10.txt"}));
    EXPECT_EQ(list->containedItems().first(), root.appendingPathComponent("com~example~Editor"));
    EXPECT_EQ(list->containedItems().at(2), root.appendingPathComponent("Cloud.txt"));
    const QModelIndex first = list->listView()->model()->index(0, 0);
    EXPECT_FALSE(first.data(Qt::DecorationRole).value<QIcon>().isNull());
}

TEST_F(DocumentListControllerTest, TapsEnterFoldersOrReportDocuments) {
    auto list = loadedRootList();
    ASSERT_NE(list, nullptr);
    const Url work = root.appendingPathComponent("Work", true);
    ASSERT_TRUE(list->tapItemAtURL(work));
    ASSERT_NE(recorder->newList, nullptr);
    EXPECT_EQ(recorder->newList->presentedURL(), work);
    EXPECT_EQ(recorder->newList->title(), QStringLiteral("Work"));
    dispatch->runUntilIdle();
    EXPECT_EQ(recorder->newList->containedItems(),
              QList<Url>{work.appendingPathComponent("Letters")});

    const Url cloud = root.appendingPathComponent("Cloud.txt");
    EXPECT_TRUE(list->tapItemAtURL(cloud));
    EXPECT_EQ(recorder->selectedURL, cloud);
    EXPECT_FALSE(list->tapItemAtURL(root.appendingPathComponent("Missing.txt")));
}

TEST_F(DocumentListControllerTest, EditingSelectsAndReportsEachChange) {
    auto list = loadedRootList();
    ASSERT_NE(list, nullptr);
    const QList<Url> items = list->containedItems();
    list->setEditing(true, true);
    const int before = recorder->changes;
    list->tapItemAtURL(items.at(3));
    list->tapItemAtURL(items.at(0));
    EXPECT_EQ(list->selectedItems(), (QList<Url>{items.at(0), items.at(3)})) << "display order";
    EXPECT_EQ(recorder->changes, before + 2);
    EXPECT_TRUE(recorder->selectedURL.isEmpty()) << "no item opens while editing";
    list->tapItemAtURL(items.at(3));
    EXPECT_EQ(list->selectedItems(), QList<Url>{items.at(0)});

    list->setSelectedItems({items.at(4), root.appendingPathComponent("Missing")});
    EXPECT_EQ(list->selectedItems(), QList<Url>{items.at(4)});
    list->loadViewIfNeeded();
    EXPECT_EQ(list->listView()->selectionModel()->selectedIndexes().size(), 1);
    list->setEditing(false, true);
    EXPECT_TRUE(list->selectedItems().isEmpty());
}

TEST_F(DocumentListControllerTest, PerItemActionsFollowTheAvailableMask) {
    auto list = loadedRootList();
    ASSERT_NE(list, nullptr);
    const Url item = list->containedItems().first();
    list->setAvailableActions(11);  // delete, actions menu, rename
    EXPECT_TRUE(list->requestAction(DocumentListController::Rename, item));
    EXPECT_FALSE(list->requestAction(DocumentListController::Details, item));
    EXPECT_TRUE(list->requestAction(DocumentListController::Delete, item));
    EXPECT_EQ(recorder->actions,
              (QList<std::pair<int, Url>>{{DocumentListController::Rename, item},
                                          {DocumentListController::Delete, item}}));

    // An action the delegate cannot carry out is not offered either.
    recorder->refused = DocumentListController::Delete;
    EXPECT_FALSE(list->requestAction(DocumentListController::Delete, item));
    EXPECT_EQ(recorder->actions.size(), 2);

    // A right click offers the rest as an action sheet whose buttons a screen reader finds.
    list->view()->resize(400, 600);
    list->view()->show();
    emit list->listView()->customContextMenuRequested(
        list->listView()->visualRect(list->listView()->model()->index(0, 0)).center());
    const auto sheet = std::dynamic_pointer_cast<AlertController>(list->presentedViewController());
    ASSERT_NE(sheet, nullptr);
    QStringList titles;
    for (const auto& action : sheet->actions()) {
        titles << action->title();
    }
    EXPECT_EQ(titles, (QStringList{QStringLiteral("Actions…"), QStringLiteral("Rename Item…"),
                                   QStringLiteral("Cancel")}));
    sheet->triggerAction(sheet->actions().at(1));
    // The handler runs once the sheet has slid away.
    for (QDeadlineTimer deadline(3000); recorder->actions.size() == 2 && !deadline.hasExpired();) {
        dispatch->runUntilIdle();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    EXPECT_FALSE(list->presentedViewController());
    EXPECT_EQ(recorder->actions.last(),
              (std::pair<int, Url>{DocumentListController::Rename, item}));
}

TEST_F(DocumentListControllerTest, HierarchyRunsFromTheRootDownToTheFolder) {
    const Url letters =
        root.appendingPathComponent("Work", true).appendingPathComponent("Letters", true);
    auto chain = DocumentListController::hierarchyForURL(letters);
    ASSERT_TRUE(chain);
    ASSERT_EQ(chain->size(), 3);
    EXPECT_EQ(chain->at(0)->presentedURL(), root);
    EXPECT_EQ(chain->at(2)->presentedURL(), letters);
    EXPECT_EQ(DocumentListController::hierarchyForURL(root)->size(), 1);
    EXPECT_FALSE(DocumentListController::hierarchyForURL(Url::fromPath(dir.path())));
    EXPECT_FALSE(DocumentListController::hierarchyForURL(root.appendingPathComponent("Nope")));
}

TEST_F(DocumentListControllerTest, AShownListReadsItsFolderAgainWhenItChangesOnDisk) {
    auto list = loadedRootList();
    ASSERT_NE(list, nullptr);
    list->loadViewIfNeeded();
    const Url added = root.appendingPathComponent("Added.txt");
    const Url work = root.appendingPathComponent("Work", true);
    // Another program writes into the folder: the change comes through the event loop, the read
    // through the reader queue.
    auto shownAfterChanges = [&](auto done) {
        QDeadlineTimer deadline(10'000);
        QTimer wake;
        wake.start(10);
        while (!done() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            dispatch->runUntilIdle();
        }
        return done();
    };
    write(added.path());
    EXPECT_TRUE(shownAfterChanges([&] { return list->containedItems().contains(added); }));
    ASSERT_TRUE(QDir(work.path()).removeRecursively());
    EXPECT_TRUE(shownAfterChanges([&] { return !list->containedItems().contains(work); }));
    EXPECT_EQ(names(list),
              (QStringList{"Editor", "Added.txt", "Cloud.txt", "report 9.txt", "Report 10.txt"}));
}

TEST_F(DocumentListControllerTest, NoListWhileSignedOut) {
    ASSERT_FALSE(service->store()->removeAccount());
    EXPECT_EQ(DocumentListController::create(), nullptr);
    EXPECT_EQ(DocumentListController::createForURL(root.appendingPathComponent("Work")), nullptr);
}

}  // namespace

TEST_F(DocumentListControllerTest, KeyboardOpensSelectsAllAndLeavesEditing) {
    auto list = loadedRootList();
    ASSERT_NE(list, nullptr);
    list->loadViewIfNeeded();
    QListView* view = list->listView();
    const auto press = [view](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(view, &event);
    };
    view->setCurrentIndex(view->model()->index(1, 0));  // "Work"
    press(Qt::Key_Return);
    ASSERT_NE(recorder->newList, nullptr);
    EXPECT_EQ(recorder->newList->presentedURL(), root.appendingPathComponent("Work", true));

    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(list->selectedItems().isEmpty()) << "select all only while editing";
    list->setEditing(true, false);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(list->selectedItems(), list->containedItems());
    EXPECT_EQ(view->selectionModel()->selection().size(), 1) << "adjacent rows are one range";

    int cancelled = 0;
    list->navigationItem()->setRightBarButtonItem(BarButtonItem::withSystemItem(
        BarButtonItem::SystemItem::Cancel, [&cancelled](const auto&) { ++cancelled; }));
    press(Qt::Key_Escape);
    EXPECT_EQ(cancelled, 1);
}

TEST_F(DocumentListControllerTest, ALiveUpdateKeepsTheScrollPositionAndTheSelection) {
    for (int i = 0; i < 80; ++i) {
        write(root.path() + QStringLiteral("/Work/Note %1.txt").arg(i));
    }
    auto list = DocumentListController::createForURL(root.appendingPathComponent("Work", true));
    list->setDelegate(recorder);
    dispatch->runUntilIdle();
    list->view()->resize(320, 300);
    list->view()->show();
    QListView* view = list->listView();
    QScrollBar* bar = view->verticalScrollBar();
    ASSERT_GT(bar->maximum(), 200);
    bar->setValue(200);
    const QModelIndex topRow = view->indexAt(QPoint(4, 4));
    const Url top = list->containedItems().at(topRow.row());
    const int topY = view->visualRect(topRow).top();
    list->setEditing(true, false);
    const Url kept = list->containedItems().at(40);
    const Url removed = list->containedItems().at(41);
    list->setSelectedItems({kept, removed});

    // A row comes in above the one at the top, another goes below it.
    QFile::remove(removed.path());
    write(root.path() + QStringLiteral("/Work/Another.txt"));
    list->reloadData();
    dispatch->runUntilIdle();
    EXPECT_EQ(list->containedItems().size(), 81);
    const int topNow = int(list->containedItems().indexOf(top));
    EXPECT_EQ(topNow, topRow.row() + 1);
    EXPECT_EQ(view->visualRect(view->model()->index(topNow, 0)).top(), topY)
        << "the row at the top stays where it was";
    EXPECT_EQ(list->selectedItems(), QList<Url>{kept});
}

TEST_F(DocumentListControllerTest, SearchFiltersTheFolderAndFindsMatchesInSubfolders) {
    write(root.path() + QStringLiteral("/Work/Letters/Report draft.txt"));
    auto list = loadedRootList();
    list->loadViewIfNeeded();
    DocumentListSearch* search = list->search();
    ASSERT_NE(search, nullptr);
    EXPECT_EQ(search->searchField()->accessibleName(), QStringLiteral("Search"));

    search->searchField()->setText(QStringLiteral("report"));
    EXPECT_TRUE(list->isShowingSearchResults());
    EXPECT_EQ(search->resultURLs(), (QList<Url>{root.appendingPathComponent("report 9.txt"),
                                                root.appendingPathComponent("Report 10.txt")}))
        << "the folder's own rows at once";
    dispatch->runUntilIdle();
    const Url draft = root.appendingPathComponent("Work", true)
                          .appendingPathComponent("Letters", true)
                          .appendingPathComponent("Report draft.txt");
    ASSERT_EQ(search->resultURLs().size(), 3);
    EXPECT_EQ(search->resultURLs().at(2), draft);
    EXPECT_EQ(search->resultsView()->model()->index(2, 0).data().toString(),
              QStringLiteral("Report draft.txt\nVellora Drive \u25B8 Work \u25B8 Letters"));
    EXPECT_EQ(list->containedItems().size(), 5) << "the folder's items stay what they are";

    // A folder among the results offers its list to the delegate, like a tap on its row.
    search->searchField()->setText(QStringLiteral("lett"));
    dispatch->runUntilIdle();
    ASSERT_EQ(search->resultURLs().size(), 1);
    const QModelIndex letters = search->resultsView()->model()->index(0, 0);
    emit search->resultsView()->clicked(letters);
    EXPECT_EQ(recorder->newList, nullptr) << "not inside the click";
    dispatch->runUntilIdle();
    ASSERT_NE(recorder->newList, nullptr);
    EXPECT_EQ(recorder->newList->presentedURL(),
              root.appendingPathComponent("Work", true).appendingPathComponent("Letters", true));

    list->endSearch();
    EXPECT_FALSE(list->isShowingSearchResults());
    EXPECT_TRUE(search->searchField()->text().isEmpty());
    EXPECT_FALSE(search->resultsView()->isVisibleTo(list->view()));
}

TEST_F(DocumentListControllerTest, SortOrdersKeepFoldersFirstAndTheChoiceIsKept) {
    write(root.path() + QStringLiteral("/Big.txt"));
    QFile big(root.path() + QStringLiteral("/Big.txt"));
    ASSERT_TRUE(big.open(QIODevice::Append));
    big.write(QByteArray(4096, 'x'));
    big.close();
    const QDateTime old = QDateTime::currentDateTimeUtc().addDays(-3);
    QFile report(root.path() + QStringLiteral("/Report 10.txt"));
    ASSERT_TRUE(report.open(QIODevice::ReadWrite));
    ASSERT_TRUE(report.setFileTime(old, QFileDevice::FileModificationTime));
    report.close();

    auto list = loadedRootList();
    list->loadViewIfNeeded();
    EXPECT_FALSE(Preferences::standard().contains(QStringLiteral("DocumentListSortOrder")))
        << "making a list stores nothing";
    list->setSortOrder(DocumentListReader::SortOrder::Size);
    dispatch->runUntilIdle();
    EXPECT_EQ(names(list).mid(0, 3), (QStringList{"Editor", "Work", "Big.txt"}));
    list->setSortOrder(DocumentListReader::SortOrder::Date);
    dispatch->runUntilIdle();
    EXPECT_EQ(names(list).last(), QStringLiteral("Report 10.txt")) << "the oldest last";
    const auto* sortButton = list->view()->findChild<QToolButton*>(QStringLiteral("sortButton"));
    ASSERT_NE(sortButton, nullptr);
    EXPECT_EQ(sortButton->accessibleName(), QStringLiteral("Sort by Date"));

    // The next list takes the order last chosen.
    auto next = loadedRootList();
    EXPECT_EQ(next->sortOrder(), DocumentListReader::SortOrder::Date);
    EXPECT_EQ(names(next).last(), QStringLiteral("Report 10.txt"));
    EXPECT_EQ(next->view()->findChild<QToolButton*>(QStringLiteral("sortButton"))->accessibleName(),
              QStringLiteral("Sort by Date"));
}

TEST_F(DocumentListControllerTest, ImagesShowTheirThumbnailOnceItIsMadeOffTheMainThread) {
    QImage red(300, 200, QImage::Format_RGB32);
    red.fill(Qt::red);
    ASSERT_TRUE(red.save(root.path() + QStringLiteral("/Red.png")));
    auto list = loadedRootList();
    list->loadViewIfNeeded();
    const QAbstractItemModel* model = list->listView()->model();
    const int row = int(list->containedItems().indexOf(root.appendingPathComponent("Red.png")));
    ASSERT_GE(row, 0);
    const auto centre = [&] {
        const QIcon icon = model->index(row, 0).data(Qt::DecorationRole).value<QIcon>();
        return icon.pixmap(32, 32).toImage().pixelColor(16, 16);
    };
    EXPECT_NE(centre(), QColor(Qt::red)) << "the type's icon until the thumbnail is ready";
    int changed = 0;
    QObject::connect(model, &QAbstractItemModel::dataChanged, [&changed] { ++changed; });
    dispatch->runUntilIdle();
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(centre(), QColor(Qt::red));
}

TEST_F(DocumentListControllerTest, ACloudOnlyImageShowsItsThumbnailDimmedWithTheCloudMark) {
    QImage red(300, 300, QImage::Format_RGB32);
    red.fill(Qt::red);
    const QString source = dir.path() + QStringLiteral("/src/Red.png");
    ASSERT_TRUE(red.save(source));
    ASSERT_FALSE(service->store()->importItem(source, QStringLiteral("Red.png"), true));
    auto list = loadedRootList();
    list->loadViewIfNeeded();
    const QAbstractItemModel* model = list->listView()->model();
    const int row = int(list->containedItems().indexOf(root.appendingPathComponent("Red.png")));
    ASSERT_GE(row, 0);
    model->index(row, 0).data(Qt::DecorationRole);
    dispatch->runUntilIdle();
    const QImage shown =
        model->index(row, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(64, 64).toImage();
    const QColor middle = shown.pixelColor(20, 20);
    EXPECT_EQ(middle.hue(), 0) << "the picture itself";
    EXPECT_LT(middle.alpha(), 200) << "dimmed";
    const QColor mark = shown.pixelColor(49, 46);
    EXPECT_GT(mark.blue(), 200);
    EXPECT_LT(mark.red(), 50);
}

TEST_F(DocumentListControllerTest, ABigFolderShowsItsFirstRowsAtOnceAndTheRestInOrder) {
    constexpr int Notes = 3 * DocumentListController::FirstBatchSize;
    for (int i = 0; i < Notes; ++i) {
        write(root.path() + QStringLiteral("/Work/Note %1.txt").arg(i));
    }
    auto list = DocumentListController::createForURL(root.appendingPathComponent("Work", true));
    list->setDelegate(recorder);
    list->view()->resize(320, 300);
    list->view()->show();
    list->setEditing(true, false);
    QListView* view = list->listView();
    // While the first rows are shown, the user scrolls and picks the row at the top.
    QList<qsizetype> counts;
    Url picked;
    int pickedY = 0;
    recorder->onChange = [&](const auto& changed) {
        counts.append(changed->itemCount());
        if (counts.size() == 1) {
            view->verticalScrollBar()->setValue(150);
            const QModelIndex top = view->indexAt(QPoint(4, 4));
            picked = changed->containedItems().at(top.row());
            pickedY = view->visualRect(top).top();
            changed->setSelectedItems({picked});
        }
    };
    dispatch->runUntilIdle();

    ASSERT_GE(counts.size(), 3) << "the first rows, the pick, the rest";
    EXPECT_EQ(counts.first(), DocumentListController::FirstBatchSize);
    EXPECT_EQ(counts.last(), Notes + 1) << "the last report has every item";
    EXPECT_TRUE(list->hasLoaded());
    QList<Url> expected{root.appendingPathComponent("Work/Letters", true)};
    for (int i = 0; i < Notes; ++i) {
        expected.append(root.appendingPathComponent(QStringLiteral("Work/Note %1.txt").arg(i)));
    }
    EXPECT_EQ(list->containedItems(), expected);
    EXPECT_EQ(list->selectedItems(), QList<Url>{picked});
    const int row = int(list->containedItems().indexOf(picked));
    EXPECT_EQ(view->visualRect(view->model()->index(row, 0)).top(), pickedY)
        << "the rows added above did not move the one under the finger";
}
