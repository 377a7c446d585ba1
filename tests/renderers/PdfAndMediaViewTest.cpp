#include "toolkit/PreviewViewTest.h"

#include "renderers/PreviewMediaView.h"
#include "renderers/PreviewPdfView.h"

#include <QPdfView>
#include <QSlider>
#include <QToolButton>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace vl;
using vl::test::PreviewFiles;

namespace {

using PdfAndMediaViewTest = vl::test::PreviewViewTest;

TEST_F(PdfAndMediaViewTest, PdfDrawsItsPagesOrSaysWhyItCannot) {
    window.resize(480, 640);
    const QString pdfPath = dir.filePath(QStringLiteral("report.pdf"));
    ASSERT_TRUE(PreviewFiles::pdf(pdfPath, 3));
    auto* pdf = show(new PreviewPdfView(Url::fromPath(pdfPath)));
    ASSERT_TRUE(pdf->isReady()) << pdf->failureMessage().toStdString();
    EXPECT_EQ(pdf->pageCount(), 3);
    EXPECT_EQ(pdf->pdfView()->accessibleDescription(), QStringLiteral("PDF document, 3 pages"));
    // Pages are rendered on a later turn of the event loop.
    ASSERT_TRUE(PreviewFiles::waitFor(
        [&] { return inkedPixels(pdf->pdfView()->viewport()) > 2000; }, 10000));
    auto* broken = show(new PreviewPdfView(file("broken.pdf", "%PDF-1.4 truncated")));
    EXPECT_TRUE(broken->hasFailed());
    EXPECT_EQ(broken->failureMessage(), QStringLiteral("It isn’t a valid PDF document."));
}

TEST_F(PdfAndMediaViewTest, PdfFirstPageRenderedAheadMatchesTheViewsOwnAndGivesWayToIt) {
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

TEST_F(PdfAndMediaViewTest, MediaControlsFollowThePlayer) {
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
