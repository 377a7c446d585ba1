#include "platform/dispatch/VirtualDispatcher.h"
#include "toolkit/UndoBar.h"

#include <QPushButton>
#include <QWidget>

#include <gtest/gtest.h>

using namespace vl;

namespace {

class UndoBarTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(400, 700);
        bar = new UndoBar(&window);
        bar->setBottomInset(44);
        window.show();
    }

    VirtualDispatcher::Installation dispatch;
    QWidget window;
    UndoBar* bar = nullptr;
};

TEST_F(UndoBarTest, UndoRunsOnceAndTheBarGoesWhenItsTimeIsUp) {
    int undone = 0;
    bar->showMessage(QStringLiteral("Moved 2 items to Trips"), [&] { ++undone; });
    ASSERT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->message(), QStringLiteral("Moved 2 items to Trips"));
    EXPECT_EQ(bar->accessibleName(), QStringLiteral("Moved 2 items to Trips"));
    EXPECT_EQ(bar->undoButton()->accessibleName(), QStringLiteral("Undo"));
    // Touch-sized, above the toolbar's inset, inside the window.
    EXPECT_GE(bar->undoButton()->height(), 44);
    EXPECT_LE(bar->geometry().bottom(), window.height() - 44);
    EXPECT_GE(bar->geometry().left(), 0);

    bar->undoButton()->click();
    bar->undoButton()->click();
    EXPECT_EQ(undone, 1);
    EXPECT_FALSE(bar->isVisible());

    bar->showMessage(QStringLiteral("Renamed “a” to “b”"), [&] { ++undone; });
    dispatch->advanceBy(UndoBar::DefaultDuration - std::chrono::milliseconds(1));
    EXPECT_TRUE(bar->canUndo());
    dispatch->advanceBy(std::chrono::milliseconds(1));
    EXPECT_FALSE(bar->isVisible());
    bar->triggerUndo();
    EXPECT_EQ(undone, 1) << "no undo once the bar is gone";
}

TEST_F(UndoBarTest, ANewMessageReplacesTheOldOneAndItsTimer) {
    int first = 0;
    bar->showMessage(QStringLiteral("first"), [&] { ++first; });
    dispatch->advanceBy(std::chrono::seconds(4));
    bar->showMessage(QStringLiteral("Moved 1 item back"));
    EXPECT_FALSE(bar->undoButton()->isVisibleTo(bar)) << "a message alone has nothing to undo";
    bar->triggerUndo();
    EXPECT_EQ(first, 0);
    // The first message's timer must not cut the second one short.
    dispatch->advanceBy(std::chrono::seconds(3));
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->message(), QStringLiteral("Moved 1 item back"));
}

}  // namespace
