#include <QImage>
#include <QPixmap>
#include <gtest/gtest.h>

#include "platform/ui/ImageView.h"
#include "platform/ui/Label.h"

namespace ui::test {
namespace {

TEST(LabelTest, NumberOfLinesCapsTheHeightAndLetsTheLabelShrink) {
    Label label(QString("A caption long enough to need several lines at this width ").repeated(3));
    const int line = label.fontMetrics().lineSpacing();
    EXPECT_LT(label.minimumSizeHint().width(), 40) << "a single line is cut, not kept whole";

    label.setNumberOfLines(2);
    EXPECT_EQ(label.heightForWidth(120), 2 * line);
    label.setNumberOfLines(0);
    EXPECT_GT(label.heightForWidth(120), 3 * line);
}

TEST(ImageViewTest, ContentModesPlaceTheImageAsThePlatformDoes) {
    // A 40 × 20 red image in a 100 × 100 view.
    QPixmap red(40, 20);
    red.fill(Qt::red);
    struct Row {
        ImageView::ContentMode mode;
        QPoint covered;
        QPoint bare;
    };
    const Row rows[] = {
        {ImageView::ContentMode::scaleToFill, {2, 2}, {-1, -1}},
        {ImageView::ContentMode::scaleAspectFit, {2, 50}, {50, 20}}, // 100 × 50, centred
        {ImageView::ContentMode::scaleAspectFill, {2, 2}, {-1, -1}}, // 200 × 100, cropped
        {ImageView::ContentMode::center, {31, 41}, {29, 50}},        // 40 × 20 at (30, 40)
    };
    for (const Row& row : rows) {
        ImageView view;
        view.resize(100, 100);
        view.setImage(red);
        view.setContentMode(row.mode);
        const QImage image = view.grab().toImage();
        SCOPED_TRACE(int(row.mode));
        EXPECT_EQ(image.pixelColor(row.covered), QColor(Qt::red));
        if (row.bare.x() >= 0) {
            EXPECT_NE(image.pixelColor(row.bare), QColor(Qt::red));
        }
    }
}

} // namespace
} // namespace ui::test
