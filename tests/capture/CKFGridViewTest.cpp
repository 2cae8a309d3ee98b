#include "capture/CKFGridView.h"

#include <QImage>
#include <gtest/gtest.h>

namespace {

// The grid alone, on a transparent image, as it lands over the picture: every line pixel in the
// grid's colour (the crossings no brighter), everything else clear.
TEST(CKFGridView, thirdsOfAThreeHundredBySixHundredView) {
    CKFGridView grid(QRect(0, 0, 300, 600));
    QImage image(grid.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    grid.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    image = image.convertToFormat(QImage::Format_ARGB32);
    const QRgb line = image.pixel(100, 0);
    EXPECT_EQ(QColor::fromRgba(line), grid.color());
    int mismatches = 0;
    for (int y = 0; y < 600; ++y)
        for (int x = 0; x < 300; ++x) {
            const bool onLine = x == 100 || x == 200 || y == 200 || y == 400;
            mismatches += image.pixel(x, y) != (onLine ? line : 0u);
        }
    EXPECT_EQ(mismatches, 0);
}

} // namespace
