#include "CoordinationFixture.h"

#include <cstdio>

namespace vl::test {

using WritingOption = FileCoordinator::WritingOption;

class FilePresenterTest : public CoordinationFixture {
protected:
    std::shared_ptr<RecordingPresenter> presenterOf(const QString& relative) {
        auto presenter = std::make_shared<RecordingPresenter>(driveURL(relative));
        FileCoordinator::addFilePresenter(presenter);
        presenters_.push_back(presenter);
        return presenter;
    }
    // Lets the watcher deliver what other processes did before the call, and the presenters
    // hear it.
    void settle() {
        backend_->waitUntilExternalChangesDelivered();
        for (const auto& presenter : presenters_) {
            presenter->events();
        }
    }
    void TearDown() override {
        for (const auto& presenter : presenters_) {
            FileCoordinator::removeFilePresenter(presenter.get());
        }
        CoordinationFixture::TearDown();
    }

    std::vector<std::shared_ptr<RecordingPresenter>> presenters_;
};

TEST_F(FilePresenterTest, CoordinatedMoveTellsOtherPresentersOnceAndNotTheCoordinatorsOwn) {
    importBytes(QStringLiteral("Plan.odt"), "plan", false);
    settle();
    const auto own = presenterOf(QStringLiteral("Plan.odt"));
    const auto other = presenterOf(QStringLiteral("Plan.odt"));
    const auto folder = presenterOf(QString());

    const Url from = driveURL(QStringLiteral("Plan.odt"));
    const Url to = driveURL(QStringLiteral("Plan 2.odt"));
    FileCoordinator coordinator(own);
    std::optional<Error> error;
    coordinator.coordinateWritingItemAtURL(
        from, WritingOption::ForMoving, to, WritingOption::ForReplacing, &error,
        [&](const Url& source, const Url& destination) {
            coordinator.itemAtURLWillMoveToURL(source, destination);
            ASSERT_FALSE(store_->movePromisedItem(source, destination));
        });
    ASSERT_FALSE(error);
    settle();  // the watcher must not report the move a second time

    EXPECT_EQ(other->events(), QStringList{QStringLiteral("move ") + to.path()});
    EXPECT_EQ(*other->presentedItemURL(), to);
    EXPECT_EQ(folder->events(), QStringList{QStringLiteral("move sub Plan.odt Plan 2.odt")});
    EXPECT_TRUE(own->events().isEmpty());
    EXPECT_TRUE(other->allOnOwnQueueOffMainThread());
    EXPECT_TRUE(folder->allOnOwnQueueOffMainThread());
}

TEST_F(FilePresenterTest, AMoveThatFailsTellsTheSourcesPresentersToLookAgain) {
    importBytes(QStringLiteral("Plan.odt"), "plan", false);
    importBytes(QStringLiteral("Taken.odt"), "taken", false);
    settle();
    const auto source = presenterOf(QStringLiteral("Plan.odt"));

    FileCoordinator coordinator;
    std::optional<Error> error;
    coordinator.coordinateWritingItemAtURL(
        driveURL(QStringLiteral("Plan.odt")), WritingOption::ForMoving,
        driveURL(QStringLiteral("Taken.odt")), WritingOption::ForReplacing, &error,
        [&](const Url& from, const Url& to) {
            coordinator.itemAtURLWillMoveToURL(from, to);
            EXPECT_TRUE(store_->movePromisedItem(from, to));
        });
    settle();
    EXPECT_EQ(source->events(), QStringList{QStringLiteral("change")});
    EXPECT_EQ(readFile(drivePath(QStringLiteral("Taken.odt"))), QByteArray("taken"));
}

TEST_F(FilePresenterTest, OwnWritesInABurstAreToldOnceAndAnotherProcesssWriteStillArrives) {
    importBytes(QStringLiteral("Burst.txt"), "0", false);
    settle();
    const auto other = presenterOf(QStringLiteral("Burst.txt"));
    const Url url = driveURL(QStringLiteral("Burst.txt"));
    constexpr int Writes = 40;
    for (int i = 1; i <= Writes; ++i) {
        FileCoordinator coordinator;
        coordinator.coordinateWritingItemAtURL(url, WritingOption::ForReplacing, nullptr,
                                               [&](const Url& newURL) {
                                                   QFile file(newURL.path());
                                                   ASSERT_TRUE(file.open(QIODevice::WriteOnly));
                                                   file.write(QByteArray::number(i));
                                               });
    }
    settle();  // the watcher saw every one of them and must not tell them again
    EXPECT_EQ(other->events().size(), Writes);

    // Straight after the burst, a write by someone else is not taken for one of ours.
    {
        QFile file(url.path());
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("elsewhere");
    }
    settle();
    EXPECT_EQ(other->events().size(), Writes + 1);
}

TEST_F(FilePresenterTest, RemoteRenamesReachPresentersAsMoves) {
    ASSERT_TRUE(QDir().mkpath(drivePath(QStringLiteral("Trips"))));
    importBytes(QStringLiteral("Trips/Rome.jpg"), "rome", false);
    importBytes(QStringLiteral("Trips/Oslo.jpg"), "oslo", true);
    settle();
    // A folder made after the watcher started is watched too.
    ASSERT_TRUE(QDir().mkpath(drivePath(QStringLiteral("Trips/2024"))));
    settle();
    ASSERT_TRUE(writeFile(drivePath(QStringLiteral("Trips/2024/Bergen.png")), "bergen"));
    settle();

    const auto local = presenterOf(QStringLiteral("Trips/Rome.jpg"));
    const auto cloudOnly = presenterOf(QStringLiteral("Trips/Oslo.jpg"));
    const auto nested = presenterOf(QStringLiteral("Trips/2024/Bergen.png"));
    const auto inMovedFolder = presenterOf(QStringLiteral("Trips/2024"));

    // Another process renames: the file, a placeholder, a file in a new folder, then the folder.
    auto rename = [&](const QString& from, const QString& to) {
        ASSERT_EQ(std::rename(QFile::encodeName(drivePath(from)).constData(),
                              QFile::encodeName(drivePath(to)).constData()),
                  0);
    };
    rename(QStringLiteral("Trips/Rome.jpg"), QStringLiteral("Trips/Roma.jpg"));
    rename(QStringLiteral("Trips/.Oslo.jpg.vlcloud"), QStringLiteral("Trips/.Bergen.jpg.vlcloud"));
    rename(QStringLiteral("Trips/2024/Bergen.png"), QStringLiteral("Trips/2024/Bryggen.png"));
    settle();
    rename(QStringLiteral("Trips/2024"), QStringLiteral("Trips/Norway"));
    settle();
    rename(QStringLiteral("Trips/Norway/Bryggen.png"), QStringLiteral("Trips/Norway/Fjord.png"));
    settle();

    EXPECT_EQ(local->events(),
              QStringList{QStringLiteral("move ") + drivePath(QStringLiteral("Trips/Roma.jpg"))});
    EXPECT_EQ(cloudOnly->events(),
              QStringList{QStringLiteral("move ") + drivePath(QStringLiteral("Trips/Bergen.jpg"))});
    EXPECT_EQ(nested->events(),
              (QStringList{QStringLiteral("move ") + drivePath("Trips/2024/Bryggen.png"),
                           QStringLiteral("move ") + drivePath("Trips/Norway/Bryggen.png"),
                           QStringLiteral("move ") + drivePath("Trips/Norway/Fjord.png")}));
    EXPECT_EQ(inMovedFolder->events(),
              (QStringList{QStringLiteral("move sub Bergen.png Bryggen.png"),
                           QStringLiteral("move ") + drivePath("Trips/Norway"),
                           QStringLiteral("move sub Bryggen.png Fjord.png")}));
    EXPECT_TRUE(local->allOnOwnQueueOffMainThread());
    EXPECT_TRUE(nested->allOnOwnQueueOffMainThread());
}

TEST_F(FilePresenterTest, RemoteDeletionReachesItemAndFolderPresenters) {
    ASSERT_TRUE(QDir().mkpath(drivePath(QStringLiteral("Docs"))));
    importBytes(QStringLiteral("Docs/Memo.txt"), "memo", false);
    importBytes(QStringLiteral("Docs/Scan.pdf"), "scan", true);
    settle();
    const auto memo = presenterOf(QStringLiteral("Docs/Memo.txt"));
    const auto scan = presenterOf(QStringLiteral("Docs/Scan.pdf"));
    const auto docs = presenterOf(QStringLiteral("Docs"));

    ASSERT_TRUE(QFile::remove(drivePath(QStringLiteral("Docs/Memo.txt"))));
    ASSERT_TRUE(QFile::remove(drivePath(QStringLiteral("Docs/.Scan.pdf.vlcloud"))));
    settle();

    EXPECT_EQ(memo->events(), QStringList{QStringLiteral("delete")});
    EXPECT_EQ(scan->events(), QStringList{QStringLiteral("delete")});
    EXPECT_EQ(docs->events(), (QStringList{QStringLiteral("delete sub Memo.txt"),
                                           QStringLiteral("delete sub Scan.pdf")}));
}

TEST_F(FilePresenterTest, EvictionAndRemoteEditsAreChangesNotDeletions) {
    importBytes(QStringLiteral("Song.mp3"), "la la", false);
    settle();
    const auto song = presenterOf(QStringLiteral("Song.mp3"));
    const Url url = driveURL(QStringLiteral("Song.mp3"));

    ASSERT_TRUE(writeFile(url.path(), "la la la"));
    settle();
    ASSERT_FALSE(store_->evict(url));
    settle();
    // The download made by the coordinator of another presenter is told as a change.
    FileCoordinator coordinator;
    coordinator.coordinateReadingItemAtURL(url, {}, nullptr, [](const Url&) {});
    settle();

    EXPECT_EQ(song->events(), (QStringList{QStringLiteral("change"), QStringLiteral("change"),
                                           QStringLiteral("change")}));
}

TEST_F(FilePresenterTest, MissedEventsSendEveryPresenterBelowToLookAgain) {
    ASSERT_TRUE(QDir().mkpath(drivePath(QStringLiteral("Trips/2024"))));
    importBytes(QStringLiteral("Trips/2024/Rome.jpg"), "rome", false);
    importBytes(QStringLiteral("Notes.txt"), "notes", false);
    settle();
    const auto trips = presenterOf(QStringLiteral("Trips"));
    const auto rome = presenterOf(QStringLiteral("Trips/2024/Rome.jpg"));
    const auto notes = presenterOf(QStringLiteral("Notes.txt"));

    backend_->presenters().deliver(DriveChange::missed(driveURL(QStringLiteral("Trips"))));

    EXPECT_EQ(trips->events(), QStringList{QStringLiteral("change")});
    EXPECT_EQ(rome->events(), QStringList{QStringLiteral("change")});
    EXPECT_TRUE(notes->events().isEmpty());
}

}  // namespace vl::test
