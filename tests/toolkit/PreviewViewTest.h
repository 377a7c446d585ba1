#pragma once

#include "toolkit/PreviewFiles.h"

#include "platform/files/Url.h"

#include <QImage>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

namespace vl::test {

// Each renderer in a shown window on the offscreen platform, compared with an empty page.
class PreviewViewTest : public ::testing::Test {
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

}  // namespace vl::test
