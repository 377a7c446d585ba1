#include "PreviewFiles.h"
#include "model/DriveFixture.h"

#include "model/PreviewCapability.h"
#include "model/VLItem.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/PreviewController.h"
#include "toolkit/PreviewControllerDataSource.h"
#include "toolkit/PreviewControllerDelegate.h"
#include "toolkit/PreviewGenericView.h"
#include "toolkit/PreviewTextView.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <memory>

using namespace vl;
using vl::test::PreviewFiles;

namespace {

class ListSource : public PreviewControllerDataSource, public PreviewControllerDelegate {
public:
    int numberOfPreviewItemsInPreviewController(PreviewController&) override {
        return int(urls.size());
    }
    Url previewControllerPreviewItemAtIndex(PreviewController&, int index) override {
        return urls.value(index);
    }
    void previewControllerDidShowPreviewItem(PreviewController&, int index) override {
        shown.append(index);
    }

    QList<Url> urls;
    QList<int> shown;
};

class PreviewControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        source = std::make_shared<ListSource>();
        controller = std::make_shared<PreviewController>();
        controller->setDataSource(source);
        controller->setDelegate(source);
    }

    Url file(const QString& name, const QByteArray& bytes) {
        EXPECT_TRUE(PreviewFiles::write(dir.filePath(name), bytes));
        return Url::fromPath(dir.filePath(name));
    }
    QToolButton* button(const char* name) {
        return controller->view()->findChild<QToolButton*>(QLatin1String(name));
    }
    template <typename T>
    T* contentAs() {
        return qobject_cast<T*>(controller->currentContentView());
    }

    QTemporaryDir dir;
    std::shared_ptr<ListSource> source;
    std::shared_ptr<PreviewController> controller;
};

TEST_F(PreviewControllerTest, PagesThroughTheDataSource) {
    source->urls = {file("a.txt", "first"), file("b.md", "# second"), file("c.bin", "x")};
    controller->view()->resize(400, 600);
    controller->view()->show();
    EXPECT_EQ(controller->previewItemCount(), 3);
    EXPECT_EQ(controller->currentPreviewItemIndex(), 0);
    EXPECT_EQ(controller->title(), QStringLiteral("a.txt"));
    EXPECT_EQ(controller->navigationItem()->title(), QStringLiteral("a.txt"));
    ASSERT_NE(contentAs<PreviewTextView>(), nullptr);
    EXPECT_EQ(contentAs<PreviewTextView>()->kind(), PreviewContentKind::PlainText);
    QToolButton* previous = button("previewPrevious");
    QToolButton* next = button("previewNext");
    EXPECT_EQ(previous->accessibleName(), QStringLiteral("Previous"));
    EXPECT_EQ(next->accessibleName(), QStringLiteral("Next"));
    EXPECT_TRUE(previous->isVisible());
    EXPECT_FALSE(previous->isEnabled());

    next->click();
    EXPECT_EQ(controller->currentPreviewItemIndex(), 1);
    EXPECT_EQ(controller->currentPreviewItem(), source->urls[1]);
    EXPECT_EQ(contentAs<PreviewTextView>()->kind(), PreviewContentKind::Markdown);
    next->click();
    EXPECT_NE(contentAs<PreviewGenericView>(), nullptr);
    EXPECT_FALSE(next->isEnabled());
    next->click();
    EXPECT_EQ(controller->currentPreviewItemIndex(), 2);
    EXPECT_EQ(controller->view()->findChild<QLabel*>("previewPageLabel")->text(),
              QStringLiteral("3 of 3"));
    previous->click();
    EXPECT_EQ(source->shown, (QList<int>{0, 1, 2, 1}));
}

TEST_F(PreviewControllerTest, ReloadKeepsTheIndexInRangeAndRefreshReadsTheFileAgain) {
    source->urls = {file("a.txt", "one"), file("b.txt", "two")};
    controller->loadViewIfNeeded();
    controller->setCurrentPreviewItemIndex(5);
    EXPECT_EQ(controller->currentPreviewItemIndex(), 1);

    source->urls = {source->urls[0]};
    controller->reloadData();
    EXPECT_EQ(controller->currentPreviewItemIndex(), 0);
    EXPECT_EQ(controller->title(), QStringLiteral("a.txt"));
    EXPECT_TRUE(controller->view()->findChild<QWidget*>("previewPageBar")->isHidden());

    auto* text = contentAs<PreviewTextView>();
    ASSERT_TRUE(PreviewFiles::waitFor([&] { return text->isReady(); }, 5000));
    EXPECT_EQ(text->plainText(), QStringLiteral("one"));
    file("a.txt", "one, edited");
    QSignalSpy changed(controller.get(), &PreviewController::currentContentViewChanged);
    controller->refreshCurrentPreviewItem();
    EXPECT_EQ(changed.size(), 1);
    ASSERT_TRUE(
        PreviewFiles::waitFor([&] { return contentAs<PreviewTextView>()->isReady(); }, 5000));
    EXPECT_EQ(contentAs<PreviewTextView>()->plainText(), QStringLiteral("one, edited"));

    source->urls.clear();
    controller->reloadData();
    EXPECT_EQ(controller->currentContentView(), nullptr);
    EXPECT_TRUE(controller->currentPreviewItem().isEmpty());
    EXPECT_NE(controller->view()->findChild<QLabel*>("previewEmpty"), nullptr);

    // A gone data source is an empty list.
    source->urls = {file("c.txt", "three")};
    controller->reloadData();
    ASSERT_NE(controller->currentContentView(), nullptr);
    source.reset();
    controller->reloadData();
    EXPECT_EQ(controller->previewItemCount(), 0);
}

TEST_F(PreviewControllerTest, AddedButtonsGoToTheRightOfTheNavigationBar) {
    const auto trash = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Trash);
    const auto organize = BarButtonItem::withSystemItem(BarButtonItem::SystemItem::Organize);
    controller->setAdditionalRightBarButtonItems({trash, organize});
    EXPECT_EQ(controller->navigationItem()->rightBarButtonItems(),
              (QList<std::shared_ptr<BarButtonItem>>{trash, organize}));
}

TEST_F(PreviewControllerTest, TheGenericPageNamesTheItemItsKindAndSize) {
    source->urls = {file("archive.zip", QByteArray(1234, 'z'))};
    controller->loadViewIfNeeded();
    auto* page = contentAs<PreviewGenericView>();
    ASSERT_NE(page, nullptr);
    EXPECT_TRUE(page->isReady());
    EXPECT_EQ(page->name(), QStringLiteral("archive.zip"));
    EXPECT_EQ(page->kind(), QStringLiteral("Zip archive"));
    EXPECT_EQ(page->size(), QStringLiteral("1.2 kB"));
    EXPECT_EQ(PreviewGenericView::sizeText(1), QStringLiteral("1 byte"));
    EXPECT_EQ(PreviewGenericView::sizeText(999), QStringLiteral("999 bytes"));
}

class PreviewCapabilityAgreementTest : public vl::test::DriveFixture {
protected:
    void TearDown() override {
        PreviewCapability::setPredicate({});
        DriveFixture::TearDown();
    }
};

// The item model's canPreview and the renderer's choice of view give the same answer.
TEST_F(PreviewCapabilityAgreementTest, TheItemModelAndTheRendererAgree) {
    PreviewCapability::setPredicate(&PreviewController::canPreviewItem);
    struct Case {
        const char* name;
        PreviewContentKind::Kind kind;
    };
    const Case cases[] = {
        {"Photo.jpg", PreviewContentKind::Image},     {"Scan.PNG", PreviewContentKind::Image},
        {"Loop.gif", PreviewContentKind::Image},      {"Sticker.webp", PreviewContentKind::Image},
        {"Notes.txt", PreviewContentKind::PlainText}, {"Plan.md", PreviewContentKind::Markdown},
        {"main.cpp", PreviewContentKind::Code},       {"Budget.csv", PreviewContentKind::Code},
        {"Report.pdf", PreviewContentKind::Pdf},      {"Tone.wav", PreviewContentKind::Audio},
        {"Song.mp3", PreviewContentKind::Audio},      {"Clip.avi", PreviewContentKind::Video},
        {"Film.mp4", PreviewContentKind::Video},      {"Bundle.zip", PreviewContentKind::Generic},
        {"Letter.odt", PreviewContentKind::Generic},  {"README", PreviewContentKind::Code},
        {"Shot.cr2", PreviewContentKind::Generic},    {"Backup.bin", PreviewContentKind::Generic},
    };
    auto source = std::make_shared<ListSource>();
    auto preview = std::make_shared<PreviewController>();
    preview->setDataSource(source);
    preview->loadViewIfNeeded();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Url url = writeFile(QString::fromLatin1(c.name), "content");
        source->urls = {url};
        preview->reloadData();
        ASSERT_NE(preview->currentContentView(), nullptr);
        EXPECT_EQ(PreviewContentKind::name(preview->currentContentKind()),
                  PreviewContentKind::name(c.kind));
        const bool generic =
            qobject_cast<PreviewGenericView*>(preview->currentContentView()) != nullptr;
        const std::shared_ptr<VLItem> item = VLItem::initWithURL(url);
        ASSERT_TRUE(item);
        EXPECT_EQ(item->canPreview(), !generic);
    }
    // A folder named like a picture is still a folder.
    const Url folder = makeDir(QStringLiteral("Album.jpg"));
    EXPECT_FALSE(VLItem::initWithURL(folder)->canPreview());
    EXPECT_EQ(PreviewContentKind::kindForUrl(folder), PreviewContentKind::Generic);
}

}  // namespace
