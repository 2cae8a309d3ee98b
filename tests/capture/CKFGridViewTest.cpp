#include "capture/CKFGridView.h"

#include <QImage>
#include <gtest/gtest.h>

namespace {

// The grid alone, on a transparent image, as it lands over the picture.
QImage draw(CKFGridView& grid) {
    QImage image(grid.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    grid.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image.convertToFormat(QImage::Format_ARGB32);
}

bool onLine(int x, int y) {
    return x == 100 || x == 200 || y == 200 || y == 400;
}

TEST(CKFGridView, thirdsOfAThreeHundredBySixHundredViewInItsColour) {
    CKFGridView grid(QRect(0, 0, 300, 600));
    for (const QColor& colour : {QColor(255, 255, 255, 128), QColor(Qt::red)}) {
        if (colour != grid.color())
            grid.setColor(colour);
        const QImage image = draw(grid);
        const QRgb line = image.pixel(100, 0);
        EXPECT_EQ(QColor::fromRgba(line), colour);
        // Every line pixel in that colour (the crossings no brighter), everything else clear.
        int mismatches = 0;
        for (int y = 0; y < 600; ++y)
            for (int x = 0; x < 300; ++x)
                mismatches += image.pixel(x, y) != (onLine(x, y) ? line : 0u);
        EXPECT_EQ(mismatches, 0) << colour.name(QColor::HexArgb).toStdString();
    }
}

TEST(CKFGridView, aZeroSizedViewDrawsNothing) {
    CKFGridView grid(QRect(0, 0, 0, 0));
    QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    grid.render(&image);
    EXPECT_EQ(image.pixel(0, 0), 0u);
}

} // namespace
