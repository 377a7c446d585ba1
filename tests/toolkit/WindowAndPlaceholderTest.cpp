#include "toolkit/DocumentPickerUnavailableController.h"
#include "toolkit/ViewControllerRegistry.h"
#include "toolkit/Window.h"

#include <QLabel>

#include <gtest/gtest.h>

using namespace vl;

namespace {

TEST(ViewControllerRegistryTest, PlaceholderIsFoundByNameAndMissingClassesGiveNothing) {
    auto placeholder = ViewControllerRegistry::createInstance(
        QStringLiteral("DocumentPickerUnavailableController"));
    ASSERT_NE(std::dynamic_pointer_cast<DocumentPickerUnavailableController>(placeholder), nullptr);
    EXPECT_NE(placeholder->view()->findChild<QLabel*>(QStringLiteral("unavailableTitle")), nullptr);
    EXPECT_EQ(ViewControllerRegistry::createInstance(QStringLiteral("NoSuchController")), nullptr);

    ViewControllerRegistry::unregisterClass(DocumentPickerUnavailableController::ClassName);
    EXPECT_EQ(
        ViewControllerRegistry::createInstance(DocumentPickerUnavailableController::ClassName),
        nullptr);
    ViewControllerRegistry::registerClass(DocumentPickerUnavailableController::ClassName, [] {
        return std::make_shared<DocumentPickerUnavailableController>();
    });
    EXPECT_TRUE(ViewControllerRegistry::hasClass(DocumentPickerUnavailableController::ClassName));
}

TEST(WindowTest, IdiomFollowsTheWindowWidthAndTheRootFillsTheWindow) {
    Window window(QRect(0, 0, 390, 700));
    EXPECT_EQ(window.userInterfaceIdiom(), UserInterfaceIdiom::Phone);
    auto root = std::make_shared<ViewController>();
    window.setRootViewController(root);
    EXPECT_EQ(root->view()->parentWidget(), &window);
    EXPECT_EQ(root->userInterfaceIdiom(), UserInterfaceIdiom::Phone);

    int changes = 0;
    QObject::connect(&window, &Window::userInterfaceIdiomChanged, [&] { ++changes; });
    window.resize(1024, 700);
    window.show();
    EXPECT_EQ(window.userInterfaceIdiom(), UserInterfaceIdiom::Tablet);
    EXPECT_EQ(root->userInterfaceIdiom(), UserInterfaceIdiom::Tablet);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(root->view()->width(), 1024);
    EXPECT_EQ(window.palette().color(QPalette::Window), QColor(Qt::white));

    window.setRootViewController(nullptr);
    EXPECT_EQ(root->view()->parentWidget(), nullptr) << "the view stays with its controller";
}

}  // namespace
