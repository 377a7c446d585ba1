#include "BrowserFixture.h"

namespace vl {
namespace {

using NavControllerRulesTest = test::BrowserFixture;

TEST_F(NavControllerRulesTest, NewFolderFollowsTheContainersFolderLevels) {
    EXPECT_TRUE(NavController::canEnableNewFolderForSelectedItems(listOf(QString())));
    EXPECT_TRUE(NavController::canEnableNewFolderForSelectedItems(listOf(QStringLiteral("Work"))));
    EXPECT_FALSE(NavController::canEnableNewFolderForSelectedItems(
        listOf(QStringLiteral("com~example~Notes"))));

    // Level one: the library's top folder yes, one level down no.
    EXPECT_TRUE(NavController::canEnableNewFolderForSelectedItems(
        listOf(QStringLiteral("com~example~Editor"))));
    EXPECT_EQ(log_.count(QStringLiteral("Container com.example.Editor supports one folder. File is "
                                        "depth 0. Enabling new folder button")),
              1);
    EXPECT_FALSE(NavController::canEnableNewFolderForSelectedItems(
        listOf(QStringLiteral("com~example~Editor/Drafts"))));
    EXPECT_EQ(log_.count(QStringLiteral("Container com.example.Editor supports one folder. File is "
                                        "depth 1. Disabling new folder button")),
              1);

    addLibrary(QStringLiteral("com.example.Future"), QStringLiteral("Future"),
               QStringLiteral("two"));
    write(QStringLiteral("com~example~Future/f.txt"));
    EXPECT_FALSE(NavController::canEnableNewFolderForSelectedItems(
        listOf(QStringLiteral("com~example~Future"))));
    EXPECT_EQ(log_.count(QStringLiteral("Container com.example.Future has unknown depth option "
                                        "two. Disabling new folder button")),
              1);
}

TEST_F(NavControllerRulesTest, MoveAndDeleteFollowTheSelection) {
    const auto editor = listOf(QStringLiteral("com~example~Editor"));
    editor->setEditing(true, false);
    const Url drafts = url(QStringLiteral("com~example~Editor/Drafts"), true);
    const Url file = url(QStringLiteral("com~example~Editor/e.txt"));
    EXPECT_FALSE(NavController::canShowMoveForSelectedItems(editor)) << "nothing selected";
    EXPECT_FALSE(NavController::canShowDeleteForSelectedItems(editor));
    editor->setSelectedItems({drafts, file});
    ASSERT_EQ(editor->selectedItems().size(), 2);
    EXPECT_FALSE(NavController::canShowMoveForSelectedItems(editor))
        << "no folders move in a level-one container";
    EXPECT_TRUE(NavController::canShowDeleteForSelectedItems(editor));
    editor->setSelectedItems({file});
    EXPECT_TRUE(NavController::canShowMoveForSelectedItems(editor));

    const auto rootList = listOf(QString());
    rootList->setEditing(true, false);
    const Url notes = url(QStringLiteral("com~example~Notes"), true);
    const Url editorRoot = url(QStringLiteral("com~example~Editor"), true);
    rootList->setSelectedItems({url(QStringLiteral("a.txt")), url(QStringLiteral("Work"), true)});
    EXPECT_TRUE(NavController::canShowMoveForSelectedItems(rootList));
    rootList->setSelectedItems({url(QStringLiteral("a.txt")), notes});
    EXPECT_FALSE(NavController::canShowMoveForSelectedItems(rootList)) << "libraries never move";
    EXPECT_FALSE(NavController::canShowDeleteForSelectedItems(rootList)) << "a mix";
    rootList->setSelectedItems({notes, editorRoot});
    EXPECT_FALSE(NavController::canShowMoveForSelectedItems(rootList));
    EXPECT_TRUE(NavController::canShowDeleteForSelectedItems(rootList)) << "libraries alone";
    EXPECT_EQ(NavController::numContainersInURLArray(rootList->selectedItems()), 2u);
}

TEST_F(NavControllerRulesTest, FoldersAndSubfoldersToMoveInto) {
    EXPECT_EQ(NavController::numFoldersInURLArray({url(QStringLiteral("a.txt"))}), 0u);
    EXPECT_EQ(NavController::numFoldersInURLArray({url(QStringLiteral("a.txt")),
                                                   url(QStringLiteral("Work"), true),
                                                   url(QStringLiteral("Work/Letters"), true)}),
              1u);

    // A library holding only files offers nothing to move into; a top-level package (a directory to
    // the file system) counts.
    const Url notes = url(QStringLiteral("com~example~Notes/n1.txt"));
    EXPECT_FALSE(NavController::containerHasSubfolders(notes));
    write(QStringLiteral("com~example~Notes/Sketch.pages/index.xml"));
    EXPECT_TRUE(NavController::containerHasSubfolders(notes));
    EXPECT_TRUE(NavController::containerHasSubfolders(url(QStringLiteral("a.txt"))));
}

}  // namespace
}  // namespace vl
