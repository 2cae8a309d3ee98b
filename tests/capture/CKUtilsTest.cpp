#include "capture/CKUtils.h"

#include <QPainter>
#include <gtest/gtest.h>

namespace {

using D = foundation::Device::Orientation;
using I = ui::Image::Orientation;

// Red bands where the crop cuts (left/right or top/bottom), green in between.
QImage bandedPicture(QSize size, QRect kept) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QPainter(&picture).fillRect(kept, Qt::green);
    return picture;
}

struct CropCase {
    QSize picture;
    qint64 width, height;
    QRectF crop;
    QSize bitmap;
};

class CKUtilsCrop : public testing::TestWithParam<CropCase> {};

TEST_P(CKUtilsCrop, centredCropScaledToTheExchangedTarget) {
    const CropCase& c = GetParam();
    EXPECT_EQ(CKUtils::cropRect(c.picture, c.width, c.height), c.crop);

    const ui::Image picture(bandedPicture(c.picture, c.crop.toAlignedRect()));
    const std::optional<ui::Image> result =
        CKUtils::cropAndScale(picture, c.width, c.height, D::portrait, false);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->cgImage().size(), c.bitmap);
    // Tagged right: shown as asked.
    EXPECT_EQ(result->size(), QSizeF(c.width, c.height));
    EXPECT_EQ(result->displayedImage().size(), QSize(c.width, c.height));
    // Nothing of the cut bands is left, not even at the edges.
    const QImage& pixels = result->cgImage();
    for (QPoint at : {QPoint(0, 0), QPoint(pixels.width() - 1, pixels.height() - 1),
                      QPoint(pixels.width() / 2, 0), QPoint(0, pixels.height() / 2)})
        EXPECT_LT(qRed(pixels.pixel(at)), 40) << at.x() << "," << at.y();
}

INSTANTIATE_TEST_SUITE_P(
    Examples, CKUtilsCrop,
    testing::Values(
        // Target 1920/1080 is wider than 4:3: the full width, 2268 tall at y = 378.
        CropCase{{4032, 3024}, 1080, 1920, {0, 378, 4032, 2268}, {1920, 1080}},
        // A portrait picture: the full width, 1701 tall at y = 1165.5.
        CropCase{{3024, 4032}, 1080, 1920, {0, 1165.5, 3024, 1701}, {1920, 1080}},
        // Asked for landscape: the bitmap is portrait, cut from the middle of the width.
        CropCase{{4032, 3024}, 1920, 1080, {1165.5, 0, 1701, 3024}, {1080, 1920}},
        // Same ratio: the whole picture.
        CropCase{{1920, 1080}, 1080, 1920, {0, 0, 1920, 1080}, {1920, 1080}}));

TEST(CKUtils, orientationTable) {
    const struct {
        D device;
        I plain, mirrored;
    } rows[] = {
        {D::unknown, I::right, I::right},          {D::portrait, I::right, I::right},
        {D::portraitUpsideDown, I::left, I::left}, {D::landscapeLeft, I::up, I::down},
        {D::landscapeRight, I::down, I::up},       {D::faceUp, I::right, I::right},
        {D::faceDown, I::right, I::right},
    };
    const ui::Image picture(QImage(64, 48, QImage::Format_RGB32));
    for (const auto& row : rows) {
        EXPECT_EQ(CKUtils::imageOrientation(row.device, false), row.plain) << int(row.device);
        EXPECT_EQ(CKUtils::imageOrientation(row.device, true), row.mirrored) << int(row.device);
        const auto result = CKUtils::cropAndScale(picture, 30, 40, row.device, true);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->imageOrientation(), row.mirrored);
    }
}

TEST(UiImage, displayedPictureFollowsTheTag) {
    // A red corner at the stored top left.
    QImage pixels(4, 2, QImage::Format_RGB32);
    pixels.fill(Qt::black);
    pixels.setPixel(0, 0, qRgb(255, 0, 0));
    const struct {
        I orientation;
        int exif;
        QSize shown;
        QPoint red;
    } rows[] = {
        {I::up, 1, {4, 2}, {0, 0}},         {I::down, 3, {4, 2}, {3, 1}},
        {I::right, 6, {2, 4}, {1, 0}},      {I::left, 8, {2, 4}, {0, 3}},
        {I::upMirrored, 2, {4, 2}, {3, 0}}, {I::downMirrored, 4, {4, 2}, {0, 1}},
    };
    for (const auto& row : rows) {
        const ui::Image image(pixels, row.orientation);
        EXPECT_EQ(ui::Image::exifOrientation(row.orientation), row.exif);
        const QImage shown = image.displayedImage();
        EXPECT_EQ(shown.size(), row.shown) << int(row.orientation);
        EXPECT_EQ(QSizeF(shown.size()), image.size());
        EXPECT_EQ(qRed(shown.pixel(row.red)), 255) << int(row.orientation);
    }
}

} // namespace
