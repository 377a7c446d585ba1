#include "toolkit/PreviewFiles.h"

#include "services/LogCapture.h"
#include "toolkit/PreviewContentView.h"
#include "toolkit/PreviewRendererFactory.h"
#include "toolkit/PreviewRenderers.h"

#include <QAbstractButton>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

using namespace vl;
using vl::test::PreviewFiles;

namespace {

// The module is loaded into this test executable as into the app: whatever it needs from our
// libraries must be there and exported, or loading fails.
TEST(PreviewRenderersTest, TheModuleLoadsWhereTheAppLooksAndItsViewsWork) {
    PreviewRenderers& renderers = PreviewRenderers::shared();
    ASSERT_TRUE(QFileInfo::exists(renderers.modulePath())) << renderers.modulePath().toStdString();
    PreviewRendererFactory* factory = renderers.factory();
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(renderers.factory(), factory);

    QTemporaryDir dir;
    const QString pdfPath = dir.filePath(QStringLiteral("report.pdf"));
    ASSERT_TRUE(PreviewFiles::pdf(pdfPath, 2));
    QWidget window;
    window.resize(400, 500);
    window.show();
    PreviewContentView* pdf = factory->makePdfView(Url::fromPath(pdfPath), &window);
    EXPECT_STREQ(pdf->metaObject()->className(), "vl::PreviewPdfView");
    pdf->resize(window.size());
    pdf->show();
    ASSERT_TRUE(PreviewFiles::waitFor([&] { return pdf->isReady() || pdf->hasFailed(); }));
    EXPECT_TRUE(pdf->isReady()) << pdf->failureMessage().toStdString();

    const QString wavPath = dir.filePath(QStringLiteral("tone.wav"));
    ASSERT_TRUE(PreviewFiles::write(wavPath, PreviewFiles::wav(1.0)));
    PreviewContentView* audio =
        factory->makeMediaView(Url::fromPath(wavPath), false, true, &window);
    EXPECT_STREQ(audio->metaObject()->className(), "vl::PreviewMediaView");
    bool hasPlay = false;
    for (const QAbstractButton* button : audio->findChildren<QAbstractButton*>()) {
        hasPlay = hasPlay || button->accessibleName() == QStringLiteral("Play");
    }
    EXPECT_TRUE(hasPlay);
}

TEST(PreviewRenderersTest, AMissingModuleIsToldOnceAndGivesNoViews) {
    QTemporaryDir dir;
    vl::test::LogCapture log;
    PreviewRenderers missing(dir.filePath(QStringLiteral("libnothing.so")));
    EXPECT_EQ(missing.factory(), nullptr);
    EXPECT_EQ(missing.factory(), nullptr);
    int told = 0;
    for (const QString& message : log.messages()) {
        told += message.startsWith(
            QStringLiteral("Couldn't load the PDF, audio and video previews from ") +
            dir.filePath(QStringLiteral("libnothing.so")));
    }
    EXPECT_EQ(told, 1);
}

}  // namespace
