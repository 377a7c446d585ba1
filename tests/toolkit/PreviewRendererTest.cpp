#include "PreviewFiles.h"

#include "platform/files/Url.h"
#include "toolkit/PreviewImageCanvas.h"
#include "toolkit/PreviewImageView.h"
#include "toolkit/PreviewMediaView.h"
#include "toolkit/PreviewPdfView.h"
#include "toolkit/PreviewTextView.h"

#include <QPdfView>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

using namespace vl;
using vl::test::PreviewFiles;

namespace {

// Each renderer in a shown window on the offscreen platform, compared with an empty page.
class PreviewRendererTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    Url file(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(PreviewFiles::write(path, bytes));
        return Url::fromPath(path);
    }

    // Shows the view and waits until it is ready or has failed.
    template <typename View>
    View* show(View* view) {
        view->setParent(&window);
        view->resize(window.size());
        window.show();
        view->show();
        EXPECT_TRUE(PreviewFiles::waitFor([&] { return view->isReady() || view->hasFailed(); }))
            << "neither shown nor failed";
        return view;
    }

    // How many pixels of the view differ from the same view with nothing in it.
    static int inkedPixels(QWidget* view) {
        const QImage shot = view->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const QRgb background = shot.pixel(0, 0);
        int inked = 0;
        for (int y = 0; y < shot.height(); y += 2) {
            for (int x = 0; x < shot.width(); x += 2) {
                inked += shot.pixel(x, y) != background;
            }
        }
        return inked;
    }

    QTemporaryDir dir;
    QWidget window;
};

TEST_F(PreviewRendererTest, PictureTextAndPdfDrawContentAndSayWhatTheyShow) {
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
    delete markdown;

    const QString pdfPath = dir.filePath(QStringLiteral("report.pdf"));
    ASSERT_TRUE(PreviewFiles::pdf(pdfPath, 3));
    auto* pdf = show(new PreviewPdfView(Url::fromPath(pdfPath)));
    ASSERT_TRUE(pdf->isReady()) << pdf->failureMessage().toStdString();
    EXPECT_EQ(pdf->pageCount(), 3);
    EXPECT_EQ(pdf->pdfView()->accessibleDescription(), QStringLiteral("PDF document, 3 pages"));
    // Pages are rendered on a later turn of the event loop.
    ASSERT_TRUE(PreviewFiles::waitFor(
        [&] { return inkedPixels(pdf->pdfView()->viewport()) > 2000; }, 10000));
}

TEST_F(PreviewRendererTest, UnreadableFilesShowAMessageInsteadOfContent) {
    window.resize(400, 400);
    auto* image = show(new PreviewImageView(file("broken.jpg", "\xff\xd8 not a picture"), {}));
    EXPECT_TRUE(image->hasFailed());
    EXPECT_FALSE(image->isReady());
    auto* pdf = show(new PreviewPdfView(file("broken.pdf", "%PDF-1.4 truncated")));
    EXPECT_TRUE(pdf->hasFailed());
    EXPECT_EQ(pdf->failureMessage(), QStringLiteral("It isn’t a valid PDF document."));
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

TEST_F(PreviewRendererTest, PdfFirstPageRenderedAheadMatchesTheViewsOwnAndGivesWayToIt) {
    window.resize(480, 640);
    const QString path = dir.filePath(QStringLiteral("long.pdf"));
    ASSERT_TRUE(PreviewFiles::pdf(path, 20));
    const auto cover = [](PreviewPdfView* view) {
        return view->pdfView()->viewport()->findChild<QWidget*>(
            QStringLiteral("previewPdfFirstPage"));
    };

    // Looked at the moment the view says it shows the document, before the view's own render.
    auto* pdf = new PreviewPdfView(Url::fromPath(path), &window);
    QRect area;
    QImage ahead;
    QObject::connect(pdf, &PreviewContentView::contentReady, pdf, [&] {
        ASSERT_NE(cover(pdf), nullptr);
        area = cover(pdf)->geometry().intersected(pdf->pdfView()->viewport()->rect());
        ahead =
            pdf->pdfView()->viewport()->grab(area).toImage().convertToFormat(QImage::Format_RGB32);
    });
    show(pdf);
    ASSERT_TRUE(pdf->isReady());
    EXPECT_EQ(pdf->pageCount(), 20);
    ASSERT_FALSE(ahead.isNull());
    ASSERT_TRUE(PreviewFiles::waitFor([&] { return cover(pdf) == nullptr; }));
    EXPECT_NE(pdf->document(), nullptr);
    // Where the cover was, the view's own page now shows the same picture: same place, same size.
    const QImage own =
        pdf->pdfView()->viewport()->grab(area).toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(own.size(), ahead.size());
    int differing = 0;
    for (int y = 0; y < own.height(); ++y) {
        for (int x = 0; x < own.width(); ++x) {
            differing += std::abs(qGray(own.pixel(x, y)) - qGray(ahead.pixel(x, y))) > 48;
        }
    }
    EXPECT_LT(differing, own.width() * own.height() / 200);
    delete pdf;

    // A zoom before the view's own render leaves the pages to the view at once.
    pdf = new PreviewPdfView(Url::fromPath(path), &window);
    bool dropped = false;
    QObject::connect(pdf, &PreviewContentView::contentReady, pdf, [&] {
        ASSERT_NE(cover(pdf), nullptr);
        pdf->setZoomFactor(2.0);
        dropped = cover(pdf) == nullptr;
    });
    show(pdf);
    EXPECT_TRUE(dropped);
}

TEST_F(PreviewRendererTest, MediaControlsFollowThePlayer) {
    window.resize(400, 300);
    auto* media = show(new PreviewMediaView(file("tone.wav", PreviewFiles::wav(2.0)), false, true));
    ASSERT_EQ(media->state(), PreviewMediaView::State::Ready)
        << media->failureMessage().toStdString();
    EXPECT_EQ(media->playButton()->accessibleName(), QStringLiteral("Play"));
    EXPECT_EQ(media->positionSlider()->accessibleName(), QStringLiteral("Position"));
    EXPECT_TRUE(media->playButton()->isEnabled());
    // Playing needs an audio device, which a test machine may lack: the state machine is
    // checked from the player's reports instead.
    using P = QMediaPlayer;
    using S = PreviewMediaView::State;
    EXPECT_EQ(PreviewMediaView::stateFor(P::PlayingState, P::BufferedMedia, P::NoError),
              S::Playing);
    EXPECT_EQ(PreviewMediaView::stateFor(P::StoppedState, P::EndOfMedia, P::NoError), S::Ended);
    EXPECT_EQ(PreviewMediaView::stateFor(P::PlayingState, P::BufferedMedia, P::ResourceError),
              S::Failed);
    EXPECT_EQ(PreviewMediaView::stateFor(P::StoppedState, P::LoadingMedia, P::NoError), S::Loading);

    auto* broken = show(new PreviewMediaView(file("broken.mp4", "not a movie"), true, true));
    EXPECT_EQ(broken->state(), PreviewMediaView::State::Failed);
    EXPECT_TRUE(broken->hasFailed());
}

}  // namespace
