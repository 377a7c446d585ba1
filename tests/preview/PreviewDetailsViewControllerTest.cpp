#include "../model/DriveFixture.h"
#include "RecordingDesktopApplications.h"

#include "fileops/FileUtils.h"
#include "fileops/RenamePrompt.h"
#include "model/VLItem.h"
#include "platform/cloud/ItemProgress.h"
#include "platform/cloud/KeyValueStore.h"
#include "platform/dispatch/VirtualDispatcher.h"
#include "preview/FileInfoStackView.h"
#include "preview/PreviewDetailsViewController.h"
#include "preview/PreviewItemManager.h"
#include "preview/ThumbnailImageView.h"
#include "services/FileTags.h"
#include "toolkit/AlertController.h"
#include "toolkit/BarButtonItem.h"
#include "toolkit/DocumentInteractionController.h"
#include "toolkit/HairlineView.h"
#include "toolkit/NavigationController.h"
#include "toolkit/NavigationItem.h"
#include "toolkit/PopoverPresentationController.h"
#include "toolkit/TextField.h"
#include "toolkit/ViewController.h"
#include "toolkit/Window.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QStandardPaths>
#include <QUrl>

namespace vl::test {
namespace {

// A details screen for a drive item, pushed onto a window's navigation stack.
class PreviewDetailsTest : public DriveFixture {
protected:
    void SetUp() override {
        DriveFixture::SetUp();
        KeyValueStore::shared().setObject(
            QVariantMap{{"CurioTagDictVersion", 2},
                        {"CurioTags", QVariantList{QVariantMap{{"n", "Red"}, {"l", 6}},
                                                   QVariantMap{{"n", "Work"}, {"l", 4}},
                                                   QVariantMap{{"n", "Home"}, {"l", 2}}}}},
            FileTags::TagDictionaryKey);
        FileTags::tagColorsDidChange();
        // No application installed on this machine decides what a screen offers.
        apps = std::make_shared<RecordingDesktopApplications>();
        apps->setDefault("text/plain", "org.example.Notes", "Notes", true);
        apps->setDefault("application/pdf", "org.example.Launcher", "Launcher", false);
        apps->setDefault("image/png", "org.example.Viewer", "Photo Viewer", true);
        DesktopApplications::setShared(apps);
    }
    void TearDown() override {
        DesktopApplications::setShared(nullptr);
        window.reset();
        screen.reset();
        manager.reset();
        dispatch->runUntilIdle();
        DriveFixture::TearDown();
    }
    void show(const Url& url, QSize size, int mode = 1) {
        window.reset();
        screen.reset();
        manager.reset();
        dispatch->runUntilIdle();
        window = std::make_unique<Window>(QRect(QPoint(0, 0), size));
        auto root = std::make_shared<ViewController>();
        nav = std::make_shared<NavigationController>(root);
        window->setRootViewController(nav);
        window->show();
        manager = std::make_shared<PreviewItemManager>();
        manager->setMode(mode);
        manager->setNavigationController(nav);
        manager->setItemWithoutPreview(VLItem::initWithURL(url));
        screen = manager->createDetailsViewController();
        nav->pushViewController(screen, false);
        dispatch->runUntilIdle();
        QApplication::processEvents();
    }
    void resizeWindow(QSize size) {
        window->resize(size);
        QApplication::processEvents();
        dispatch->runUntilIdle();
        QApplication::processEvents();
    }
    QStringList rowNames() const {
        QStringList names;
        for (FileInfoCell* cell : screen->fileInfoView()->cells()) {
            names << cell->nameLabel()->text();
        }
        return names;
    }
    QString value(const QString& name) const {
        for (FileInfoCell* cell : screen->fileInfoView()->cells()) {
            if (cell->nameLabel()->text() == name) {
                return cell->valueLabel()->text();
            }
        }
        return {};
    }
    void screenshot(const QString& name) {
        const QString folder = qEnvironmentVariable("VELLORA_SCREENSHOTS");
        if (!folder.isEmpty()) {
            QDir().mkpath(folder);
            window->grab().save(folder + QLatin1Char('/') + name);
        }
    }

    std::shared_ptr<RecordingDesktopApplications> apps;
    VirtualDispatcher::Installation dispatch;
    std::unique_ptr<Window> window;
    std::shared_ptr<NavigationController> nav;
    std::shared_ptr<PreviewItemManager> manager;
    std::shared_ptr<PreviewDetailsViewController> screen;
};

TEST_F(PreviewDetailsTest, ShowsKindSizeWhereDatesAndTagsWithEqualNameWidths) {
    makeDir("Work");
    const Url url = writeFile("Work/Quarterly report.txt", QByteArray(1234, 'x'));
    ASSERT_FALSE(store_->setTags(url, {"Red", "Work", "Home"}));
    show(url, QSize(390, 844));
    screenshot("details-portrait.png");

    EXPECT_EQ(screen->filenameTextField()->text(), "Quarterly report.txt");
    EXPECT_EQ(rowNames(), QStringList({"Kind", "Size", "Where", "Created", "Modified", "Tags"}));
    EXPECT_EQ(value("Size"), VLItem::friendlyByteCount(1234));
    EXPECT_EQ(value("Where"), FileUtils::displayableLocationForURL(url).value_or("?"));
    EXPECT_FALSE(value("Kind").isEmpty());
    // Three tags: dot, name, blank, dot, name, blank, dot, name.
    const QString tags = value("Tags");
    EXPECT_EQ(tags.count("<img"), 3);
    EXPECT_TRUE(tags.endsWith("Home"));
    EXPECT_TRUE(tags.contains("Red <img") && tags.contains("Work <img"));
    QSet<int> widths;
    for (FileInfoCell* cell : screen->fileInfoView()->cells()) {
        widths << cell->nameLabel()->width();
    }
    EXPECT_EQ(widths.size(), 1);
    EXPECT_EQ(screen->hairlineViews().size(), 2);

    // The dots make the tags' line taller than text: the row is as high as its content and the
    // rows keep their spacing.
    const QList<FileInfoCell*> cells = screen->fileInfoView()->cells();
    const QLabel* tagsValue = cells.last()->valueLabel();
    EXPECT_GT(tagsValue->sizeHint().height(), QFontMetrics(FileInfoCell::font()).lineSpacing());
    EXPECT_GE(tagsValue->height(), tagsValue->sizeHint().height());
    EXPECT_GE(cells.last()->height(), tagsValue->height());
    for (qsizetype i = 1; i < cells.size(); ++i) {
        EXPECT_EQ(cells[i]->y() - cells[i - 1]->geometry().bottom() - 1, 10) << i;
    }
    EXPECT_LE(cells.last()->mapTo(window.get(), QPoint(0, cells.last()->height())).y(),
              window->height());
}

TEST_F(PreviewDetailsTest, DatesFallBackToShorterStylesInANarrowColumnAndComeBackWhenWide) {
    const Url url = writeFile("a.txt");
    show(url, QSize(390, 844));
    auto item = manager->item();
    FileInfoStackView& info = *screen->fileInfoView();
    const QString longDate = *item->friendlyContentModificationDate(VLItem::DateStyleLong);
    const QString shortDate = *item->friendlyContentModificationDate(VLItem::DateStyleShort);
    const int names = info.cells().first()->nameLabel()->width() + FileInfoCell::kSpacing;
    const QFontMetrics metrics(FileInfoCell::font());
    info.resize(names + metrics.horizontalAdvance(shortDate) + 1, info.height());
    EXPECT_EQ(value("Modified"), shortDate);
    info.resize(names + metrics.horizontalAdvance(longDate) + 20, info.height());
    EXPECT_EQ(value("Modified"), longDate);
    // No item keeps the rows, and the next layout has no dates to show.
    info.setItem(nullptr);
    EXPECT_EQ(rowNames().size(), 5);
    info.resize(info.width() + 10, info.height());
    EXPECT_EQ(value("Modified"), QString());
}

TEST_F(PreviewDetailsTest, ArrangementFollowsTheWindowsShape) {
    show(writeFile("a.txt"), QSize(390, 844));
    EXPECT_FALSE(screen->isSideBySide());
    EXPECT_TRUE(screen->filenameTextField()->alignment() & Qt::AlignHCenter);

    resizeWindow(QSize(844, 390));
    screenshot("details-landscape.png");
    EXPECT_TRUE(screen->isSideBySide());
    EXPECT_TRUE(screen->filenameTextField()->alignment() & Qt::AlignLeading);
    // Picture left, details right, in equal halves.
    const QRect picture = screen->thumbnailView()->geometry();
    const QRect details = screen->fileInfoView()->parentWidget()->geometry();
    EXPECT_LT(picture.right(), details.left());
    EXPECT_NEAR(picture.width(), details.width(), 2);

    resizeWindow(QSize(390, 844));
    EXPECT_FALSE(screen->isSideBySide());
    EXPECT_TRUE(screen->filenameTextField()->alignment() & Qt::AlignHCenter);
}

TEST_F(PreviewDetailsTest, MarginsFollowThePagesShape) {
    show(writeFile("a.txt"), QSize(300, 700));
    screen->view()->resize(300, 700);
    screen->configureMargins();
    EXPECT_EQ(screen->wrapperMargins(), QMargins(17, 45, 17, 45));
    screen->view()->resize(400, 700);
    screen->configureMargins();
    EXPECT_EQ(screen->wrapperMargins(), QMargins(17, 17, 17, 17));
}

TEST_F(PreviewDetailsTest, TappingTheNameRenamesTheItemThroughThePrompt) {
    const Url url = writeFile("Draft.txt");
    show(url, QSize(390, 844));
    QLabel* name = screen->filenameTextField();
    const QPointF centre = QRectF(name->rect()).center();
    QMouseEvent press(QEvent::MouseButtonPress, centre, name->mapToGlobal(centre), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, centre, name->mapToGlobal(centre),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(name, &press);
    QApplication::sendEvent(name, &release);
    ASSERT_TRUE(screen->renamePrompt());
    EXPECT_EQ(screen->presentedViewController(), screen->renamePrompt()->alert());
    TextField* field = screen->renamePrompt()->alert()->textFields().value(0);
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), "Draft.txt");
    field->selectAll();
    for (QChar c : QStringLiteral("Final")) {
        QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QApplication::sendEvent(field, &key);
    }
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(field, &enter);
    dispatch->runUntilIdle();
    EXPECT_TRUE(QFile::exists(drivePath("Final.txt")));
    EXPECT_FALSE(QFile::exists(drivePath("Draft.txt")));
}

TEST_F(PreviewDetailsTest, BarsCarryDeleteAndMoveEnabledOnlyWithAnItemURL) {
    show(writeFile("a.txt"), QSize(390, 844));
    EXPECT_FALSE(nav->isToolbarHidden());
    EXPECT_TRUE(screen->toolbarItems().contains(screen->barButtonDeleteItem()));
    EXPECT_TRUE(screen->barButtonMoveItem()->isEnabled());
    manager->setItemWithoutPreview(nullptr);
    screen->refreshItem();
    EXPECT_FALSE(screen->barButtonDeleteItem()->isEnabled());
    EXPECT_FALSE(screen->barButtonMoveItem()->isEnabled());

    resizeWindow(QSize(1024, 768));
    screen->configureButtons();
    EXPECT_TRUE(nav->isToolbarHidden());
    EXPECT_TRUE(
        screen->navigationItem()->rightBarButtonItems().contains(screen->barButtonMoveItem()));
    EXPECT_FALSE(screen->barButtonMoveItem()->isEnabled());
}

TEST_F(PreviewDetailsTest, ProgressChunksDecideTheLogLevelNotTheUpdate) {
    const Url url = writeFile("a.txt");
    show(url, QSize(390, 844));
    screen->registerForProgress();
    EXPECT_TRUE(screen->isSubscribedToProgress());
    auto progress = ItemProgress::create();
    progress->setKind(QStringLiteral("another kind"));
    progress->setFileURL(url);
    progress->publish();
    progress->setTotalUnitCount(100);  // a fraction of 0
    for (int done : {4, 5, 6, 10}) {
        progress->setCompletedUnitCount(done);
    }
    EXPECT_EQ(screen->lastProgressChunk(), 2);
    const auto steps = [this](int level) {
        QList<int> percents;
        for (const QString& message : logged(level)) {
            if (message.startsWith("Progress ")) {
                percents << qRound(message.mid(9).section('%', 0, 0).toDouble());
            }
        }
        return percents;
    };
    // Fractions of 0 (the first), 0.05 and 0.10 start a new step of 5 %; all five reach the screen.
    EXPECT_EQ(steps(6), QList<int>({0, 5, 10}));
    EXPECT_EQ(steps(7), QList<int>({4, 6}));
    progress->unpublish();
    EXPECT_FALSE(screen->isSubscribedToProgress());
}

TEST_F(PreviewDetailsTest, OpenInButtonOnlyForAnAppThatOpensInPlaceAndItOpensTheDocument) {
    const Url notes = writeFile("Plans.txt");
    show(notes, QSize(390, 844));
    QPushButton* button = screen->openInAppButton();
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), "Open in “Notes”");
    EXPECT_EQ(button->accessibleName(), button->text());
    // On a phone it is the navigation bar's right item, not a part of the page.
    EXPECT_FALSE(screen->shouldDisplayOpenInAppButtonInView());
    EXPECT_EQ(screen->navigationItem()->rightBarButtonItem(), screen->openInAppBarButtonItem());
    EXPECT_EQ(screen->openInAppBarButtonItem()->customView(), button);
    EXPECT_EQ(screen->hairlineViews().size(), 2);
    // Appearing again keeps the one button and its one action.
    screen->viewWillAppear(false);
    ASSERT_EQ(screen->openInAppButton(), button);
    button->click();
    ASSERT_EQ(apps->launches().size(), 1);
    EXPECT_EQ(apps->launches()[0].application, "org.example.Notes");
    EXPECT_EQ(apps->launches()[0].urls, QList<Url>{notes});
    EXPECT_TRUE(logged(6).contains("Opening document " + notes.description() + " in default app"));

    // No button for an app that can't open the document in place, nor for a picture in the
    // user's own folders, which the app previews itself.
    for (const char* name : {"Report.pdf", "Photos/cat.png"}) {
        show(writeFile(name), QSize(390, 844));
        EXPECT_EQ(screen->openInAppButton(), nullptr) << name;
        EXPECT_EQ(screen->navigationItem()->rightBarButtonItem(), nullptr);
    }

    // On a tablet it stands under a third hairline in the page.
    show(notes, QSize(1024, 768));
    ASSERT_NE(screen->openInAppButton(), nullptr);
    EXPECT_TRUE(screen->shouldDisplayOpenInAppButtonInView());
    EXPECT_TRUE(screen->view()->isAncestorOf(screen->openInAppButton()));
    EXPECT_EQ(screen->openInAppBarButtonItem(), nullptr);
    EXPECT_EQ(screen->hairlineViews().size(), 3);
    screenshot("details-tablet.png");
    screen->openInAppButton()->click();
    EXPECT_EQ(apps->launches().size(), 2);
}

TEST_F(PreviewDetailsTest, ShareShowsTheSheetFromItsBarButtonAndKeepsItsController) {
    const Url url = writeFile("Plans.txt");
    show(url, QSize(390, 844));
    const auto share = screen->barButtonActionItem();
    ASSERT_TRUE(share);
    EXPECT_EQ(screen->toolbarItems().value(0), share);
    share->trigger();
    const auto controller = manager->documentInteractionController();
    ASSERT_TRUE(controller);
    EXPECT_EQ(controller->URL(), manager->item()->resolvedURL());
    const auto menu = controller->optionsMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(nav->presentedViewController(), menu);
    QApplication::processEvents();
    screenshot("details-share.png");
    EXPECT_EQ(menu->popoverPresentationController()->barButtonItem(), share);
    EXPECT_TRUE(logged(6).contains("showDocumentActivities: " + url.description()));

    // On a tablet Share leads the navigation bar's items; without an item URL it is disabled.
    show(url, QSize(1024, 768));
    EXPECT_EQ(screen->navigationItem()->rightBarButtonItems().value(0),
              screen->barButtonActionItem());
    manager->setItemWithoutPreview(nullptr);
    screen->refreshItem();
    EXPECT_FALSE(screen->barButtonActionItem()->isEnabled());
}

TEST_F(PreviewDetailsTest, ThePictureIsTheIconUntilTheThumbnailReadOffTheMainThreadArrives) {
    const Url url = driveURL(QStringLiteral("Photo.png"));
    QImage photo(40, 30, QImage::Format_RGB32);
    photo.fill(Qt::blue);
    ASSERT_TRUE(photo.save(url.path(), "PNG"));
    // A thumbnail of its own colour in the shared cache, marked for the file as it is now.
    QImage planted(7, 5, QImage::Format_RGB32);
    planted.fill(Qt::green);
    planted.setText(QStringLiteral("Thumb::URI"),
                    QString::fromUtf8(QUrl::fromLocalFile(url.path()).toEncoded()));
    planted.setText(QStringLiteral("Thumb::MTime"),
                    QString::number(QFileInfo(url.path()).lastModified().toSecsSinceEpoch()));
    const QString cached =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
        QStringLiteral("/thumbnails/xx-large/") +
        QString::fromLatin1(QCryptographicHash::hash(QUrl::fromLocalFile(url.path()).toEncoded(),
                                                     QCryptographicHash::Md5)
                                .toHex()) +
        QStringLiteral(".png");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(cached).path()));
    ASSERT_TRUE(planted.save(cached, "PNG"));

    ThumbnailImageView view;
    view.setItem(VLItem::initWithURL(url));
    EXPECT_NE(view.image().size(), QSize(7, 5)) << "the thumbnail was read on the main thread";
    dispatch->runUntilIdle();
    ASSERT_EQ(view.image().size(), QSize(7, 5));
    EXPECT_EQ(view.image().pixelColor(3, 2), QColor(Qt::green));
}

}  // namespace
}  // namespace vl::test
