#include "toolkit/PieProgressIndicatorView.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

namespace vl::test {
namespace {

QImage render(PieProgressIndicatorView& pie) {
    QImage image(pie.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    pie.render(&image);
    return image;
}

TEST(PieProgressIndicatorViewTest, DrawsASliverAtLeastAndNeverCloses) {
    EXPECT_DOUBLE_EQ(PieProgressIndicatorView::drawnFraction(0), 0.005);
    EXPECT_DOUBLE_EQ(PieProgressIndicatorView::drawnFraction(1), 0.995);
    EXPECT_DOUBLE_EQ(PieProgressIndicatorView::drawnFraction(0.5f), 0.5);

    PieProgressIndicatorView pie;
    pie.resize(44, 44);
    pie.setProgress(0.5f);
    const QImage half = render(pie);
    // Clockwise from the top: the right half is filled, the left half is not.
    EXPECT_NE(half.pixelColor(33, 22), QColor(Qt::white));
    EXPECT_EQ(half.pixelColor(11, 22), QColor(Qt::white));
    pie.setProgress(1);
    const QImage full = render(pie);
    EXPECT_NE(full.pixelColor(11, 22), QColor(Qt::white));
}

TEST(PieProgressIndicatorViewTest, SettingTheSameProgressTwiceRedrawsOnce) {
    PieProgressIndicatorView pie;
    pie.setProgress(0.25f);
    pie.setProgress(0.25f);
    EXPECT_EQ(pie.repaintRequests(), 1);
    EXPECT_FLOAT_EQ(pie.progress(), 0.25f);
}

}  // namespace
}  // namespace vl::test
