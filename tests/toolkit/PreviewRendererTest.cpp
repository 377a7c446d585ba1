#include "toolkit/PreviewViewTest.h"

#include "platform/files/Url.h"
#include "toolkit/PreviewImageCanvas.h"
#include "toolkit/PreviewImageView.h"
#include "toolkit/PreviewTextView.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <memory>

using namespace vl;
using vl::test::PreviewFiles;

namespace {

using PreviewRendererTest = vl::test::PreviewViewTest;

TEST_F(PreviewRendererTest, PictureAndTextDrawContentAndSayWhatTheyShow) {
    window.resize(480, 640);
    auto* image = show(new PreviewImageView(
        file("photo.jpg", PreviewFiles::jpeg(PreviewFiles::halves({600, 400}))), {}));
    ASSERT_TRUE(image->isReady()) << image->failureMessage().toStdString();
    EXPECT_GT(inkedPixels(image), 1000);
    // The picture is letterboxed on a viewer's near-black, not on the app's white.
    EXPECT_LT(qGray(image->grab().toImage().pixel(2, 2)), 40);
    EXPECT_EQ(image->canvas()->accessibleDescription(),
              QStringLiteral("Picture, 600 × 400 pixels"));
    delete image;

    auto* text = show(new PreviewTextView(file("notes.txt", "Milk\nBread\nCoffee\n"),
                                          PreviewContentKind::PlainText));
    ASSERT_TRUE(text->isReady());
    EXPECT_GT(inkedPixels(text), 50);
    // A screen reader reads the text of the browser.
    EXPECT_EQ(text->textBrowser()->toPlainText(), QStringLiteral("Milk\nBread\nCoffee\n"));
    delete text;

    auto* markdown = show(new PreviewTextView(file("plan.md", "# Trip\n\n* **Rome**\n"),
                                              PreviewContentKind::Markdown));
    EXPECT_EQ(markdown->plainText().trimmed(), QStringLiteral("Trip\nRome"));
}

TEST_F(PreviewRendererTest, UnreadableFilesShowAMessageInsteadOfContent) {
    window.resize(400, 400);
    auto* image = show(new PreviewImageView(file("broken.jpg", "\xff\xd8 not a picture"), {}));
    EXPECT_TRUE(image->hasFailed());
    EXPECT_FALSE(image->isReady());
    auto* binary = show(new PreviewTextView(file("data.txt", QByteArray("ab\0cd", 5)),
                                            PreviewContentKind::PlainText));
    EXPECT_TRUE(binary->hasFailed());
    // UTF-16 with a byte-order mark is text, NUL bytes and all.
    auto* wide = show(new PreviewTextView(file("wide.txt", QByteArray("\xff\xfeh\0i\0", 6)),
                                          PreviewContentKind::PlainText));
    EXPECT_EQ(wide->plainText(), QStringLiteral("hi"));
}

TEST_F(PreviewRendererTest, ExifOrientationTurnsThePictureUpright) {
    window.resize(400, 400);
    // Stored 300 × 100, red left and blue right; tag 6 turns it clockwise: red on top.
    const QByteArray jpeg = PreviewFiles::jpeg(PreviewFiles::halves({300, 100}), 6);
    const PreviewImageView::Decoded decoded =
        PreviewImageView::decode(file("turned.jpg", jpeg).path(), {});
    ASSERT_TRUE(decoded.error.isEmpty()) << decoded.error.toStdString();
    EXPECT_EQ(decoded.fullSize, QSize(100, 300));
    ASSERT_EQ(decoded.image.size(), QSize(100, 300));
    EXPECT_GT(qRed(decoded.image.pixel(50, 20)), 200);
    EXPECT_GT(qBlue(decoded.image.pixel(50, 280)), 200);
    // Bounded to the screen, a turned picture keeps its upright shape.
    const auto bounded = PreviewImageView::decode(dir.filePath("turned.jpg"), QSize(60, 60));
    EXPECT_EQ(bounded.fullSize, QSize(100, 300));
    EXPECT_EQ(bounded.image.size(), QSize(20, 60));
}

TEST_F(PreviewRendererTest, ZoomFetchesTheFullPictureAndADoubleTapFitsItAgain) {
    window.resize(400, 300);
    // The first decode is bounded to 200 pixels; the picture is 1600 wide.
    auto* view = show(new PreviewImageView(
        file("big.jpg", PreviewFiles::jpeg(PreviewFiles::halves({1600, 1200}))), {200, 200}));
    PreviewImageCanvas* canvas = view->canvas();
    ASSERT_TRUE(view->isReady());
    EXPECT_FALSE(view->hasFullResolution());
    EXPECT_LE(canvas->image().width(), 200);
    EXPECT_TRUE(canvas->isFitted());
    EXPECT_DOUBLE_EQ(canvas->scale(), 0.25);

    QWheelEvent zoomIn(QPointF(200, 150), canvas->viewport()->mapToGlobal(QPointF(200, 150)),
                       QPoint(), QPoint(0, 360), Qt::NoButton, Qt::ControlModifier,
                       Qt::NoScrollPhase, false);
    QApplication::sendEvent(canvas->viewport(), &zoomIn);
    EXPECT_NEAR(canvas->scale(), 0.25 * 1.25 * 1.25 * 1.25, 1e-9);
    EXPECT_FALSE(canvas->isFitted());
    ASSERT_TRUE(PreviewFiles::waitFor([&] { return view->hasFullResolution(); }, 10000));
    EXPECT_EQ(canvas->image().size(), QSize(1600, 1200));
    // The sharper copy keeps the zoom.
    EXPECT_NEAR(canvas->scale(), 0.25 * 1.25 * 1.25 * 1.25, 1e-9);

    QTest::mouseDClick(canvas->viewport(), Qt::LeftButton, {}, QPoint(100, 100));
    EXPECT_TRUE(canvas->isFitted());
    EXPECT_DOUBLE_EQ(canvas->scale(), 0.25);
    QTest::mouseDClick(canvas->viewport(), Qt::LeftButton, {}, QPoint(100, 100));
    EXPECT_DOUBLE_EQ(canvas->scale(), 1.0);
}

}  // namespace
