#include "toolkit/DocumentTargetSelectionController.h"

#include "model/DriveFixture.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/DocumentTargetSelectionControllerDelegate.h"

#include <QListWidget>
#include <QPushButton>

namespace vl::test {
namespace {

class ChosenFolders : public DocumentTargetSelectionControllerDelegate {
public:
    void documentTargetSelectionControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentTargetSelectionController>&, const Url& url) override {
        chosen << url;
    }
    QList<Url> chosen;
};

class DocumentTargetSelectionControllerTest : public DriveFixture {
protected:
    void addLibrary(const QString& name, std::optional<QString> levels) {
        ContainerRecord record;
        record.identifier = QStringLiteral("com.example.") + name;
        record.localizedName = name + QStringLiteral(" Library");
        record.folder = name;
        record.hasDocuments = true;
        record.folderLevels = std::move(levels);
        ASSERT_FALSE(store_->addContainer(record));
        QDir().mkpath(drivePath(name));
    }
    static QStringList names(const QList<DocumentTargetSelectionController::Folder>& folders) {
        QStringList list;
        for (const auto& folder : folders) {
            list << folder.name + (folder.canOpen ? QString() : QStringLiteral(" (moving)"));
        }
        return list;
    }
    bool canMove(const QList<Url>& items, const QString& folder) {
        return DocumentTargetSelectionController::canMoveItemsIntoFolder(items,
                                                                         driveURL(folder, true));
    }

    VirtualDispatcher::Installation dispatch;
};

TEST_F(DocumentTargetSelectionControllerTest, NeverOffersAnItemOrAFolderInsideOne) {
    const Url trips = makeDir(QStringLiteral("Trips"));
    makeDir(QStringLiteral("Trips/Rome/Photos"));
    const Url notes = writeFile(QStringLiteral("Notes.txt"));
    makeDir(QStringLiteral("Work"));
    writeFile(QStringLiteral("Book.manuscript/content.xml"));  // a folder, but not a package here

    const QList<Url> items{trips, notes};
    EXPECT_FALSE(canMove(items, QStringLiteral("Trips")));
    EXPECT_FALSE(canMove(items, QStringLiteral("Trips/Rome")));
    EXPECT_FALSE(canMove(items, QStringLiteral("Trips/Rome/Photos")));
    EXPECT_FALSE(canMove(items, QString())) << "where they are already";
    EXPECT_FALSE(DocumentTargetSelectionController::canMoveItemsIntoFolder(items, notes));
    EXPECT_TRUE(canMove(items, QStringLiteral("Work")));
    EXPECT_TRUE(canMove({driveURL(QStringLiteral("Trips/Rome"), true)}, QString()));

    auto chooser = std::make_shared<DocumentTargetSelectionController>(items);
    auto delegate = std::make_shared<ChosenFolders>();
    chooser->setDelegate(delegate);
    chooser->view();
    EXPECT_EQ(names(chooser->shownFolders()),
              (QStringList{QStringLiteral("Book.manuscript"), QStringLiteral("Trips (moving)"),
                           QStringLiteral("Work")}));
    auto* moveButton = chooser->view()->findChild<QPushButton*>(QStringLiteral("Move"));
    ASSERT_NE(moveButton, nullptr);
    EXPECT_FALSE(moveButton->isEnabled()) << "the items' own folder";
    EXPECT_FALSE(chooser->openFolder(trips));
    EXPECT_FALSE(chooser->openFolder(driveURL(QStringLiteral("Trips/Rome"), true)));
    auto* list = chooser->view()->findChild<QListWidget*>();
    ASSERT_NE(list, nullptr);
    EXPECT_FALSE(list->item(1)->flags().testFlag(Qt::ItemIsEnabled));

    EXPECT_TRUE(chooser->openFolder(driveURL(QStringLiteral("Work"), true)));
    EXPECT_TRUE(moveButton->isEnabled());
    moveButton->click();
    EXPECT_EQ(delegate->chosen, QList<Url>{driveURL(QStringLiteral("Work"), true)});
    EXPECT_TRUE(chooser->goUp());
    EXPECT_FALSE(chooser->goUp()) << "the drive's root is the top";
    EXPECT_FALSE(chooser->chooseCurrentFolder());
    EXPECT_EQ(delegate->chosen.size(), 1);
}

TEST_F(DocumentTargetSelectionControllerTest, NeverOffersADepthTheContainerForbids) {
    addLibrary(QStringLiteral("Flat"), CloudContainer::FolderLevelsNone);
    addLibrary(QStringLiteral("Shallow"), CloudContainer::FolderLevelsOne);
    addLibrary(QStringLiteral("Odd"), QStringLiteral("some"));
    makeDir(QStringLiteral("Shallow/Level1"));
    const Url file = writeFile(QStringLiteral("Letter.txt"));
    const Url empty = makeDir(QStringLiteral("Empty"));
    const Url nested = makeDir(QStringLiteral("Nested/Inner"));
    const Url outer = driveURL(QStringLiteral("Nested"), true);

    EXPECT_EQ(DocumentTargetSelectionController::folderDepthOfItem(file), 0);
    EXPECT_EQ(DocumentTargetSelectionController::folderDepthOfItem(empty), 1);
    EXPECT_EQ(DocumentTargetSelectionController::folderDepthOfItem(outer), 2);

    EXPECT_TRUE(canMove({file}, QStringLiteral("Flat")));
    EXPECT_FALSE(canMove({file, empty}, QStringLiteral("Flat")));
    EXPECT_TRUE(canMove({empty}, QStringLiteral("Shallow")));
    EXPECT_FALSE(canMove({outer}, QStringLiteral("Shallow"))) << "its inner folder is level 2";
    EXPECT_TRUE(canMove({file}, QStringLiteral("Shallow/Level1")));
    EXPECT_FALSE(canMove({empty}, QStringLiteral("Shallow/Level1")));
    EXPECT_TRUE(canMove({file}, QStringLiteral("Odd")));
    EXPECT_FALSE(canMove({empty}, QStringLiteral("Odd"))) << "an unknown level allows no folders";
    EXPECT_TRUE(canMove({outer}, QStringLiteral("Empty")));

    auto chooser = std::make_shared<DocumentTargetSelectionController>(QList<Url>{nested});
    const QStringList shown = names(chooser->shownFolders());
    EXPECT_EQ(shown.mid(0, 3),
              (QStringList{QStringLiteral("Flat Library"), QStringLiteral("Odd Library"),
                           QStringLiteral("Shallow Library")}))
        << "app libraries by their names, first";
    EXPECT_TRUE(chooser->shownFolders().first().isAppLibrary);
}

}  // namespace
}  // namespace vl::test
