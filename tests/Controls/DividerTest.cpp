#include "Divider.h"

#include <gtest/gtest.h>

#include <QPainter>

TEST(DividerTest, IsEquallyThickWhereverItStands) {
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        for (int y = 0; y < 4; ++y) {
            QImage image(int(40 * ratio), int(12 * ratio), QImage::Format_ARGB32_Premultiplied);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::transparent);
            Divider divider;
            divider.resize(40, 1);
            divider.render(&image, QPoint(0, 2 + y), QRegion(), QWidget::RenderFlags());
            int rows = 0;
            for (int row = 0; row < image.height(); ++row) {
                rows += image.pixelColor(image.width() / 2, row).alpha() > 0 ? 1 : 0;
            }
            EXPECT_EQ(rows, int(ratio)) << ratio << " " << y;
            const int top = qRound((2 + y) * ratio);
            for (const int x : {0, image.width() - 1}) {
                EXPECT_NEAR(image.pixelColor(x, top).alpha(), 0.14 * 255, 1) << ratio << " " << y;
            }
        }
    }
}
