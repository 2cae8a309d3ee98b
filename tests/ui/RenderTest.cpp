#include <QImage>
#include <QPixmap>
#include <gtest/gtest.h>

#include "platform/ui/Button.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/Label.h"
#include "platform/ui/Slider.h"
#include "platform/ui/View.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"

namespace ui::test {
namespace {

const QColor screenColour(0x20, 0x30, 0x40);

// A controller whose view is a View filled with that colour.
ViewController* filledWith(const QColor& colour) {
    auto* controller = new ViewController;
    auto* view = new View;
    view->setBackgroundColor(colour);
    controller->setView(view);
    return controller;
}

TEST(RenderTest, ControlsAndAnOverCurrentContextDialogDrawAsExpected) {
    Window window;
    window.resize(360, 400);
    ViewController* screen = filledWith(screenColour);
    QPixmap dot(24, 24);
    dot.fill(Qt::red);
    auto* button = new Button(screen->view());
    button->setImage(QIcon(dot));
    button->setTitle("Record");
    button->setGeometry(20, 20, 160, 40);
    auto* slider = new Slider(screen->view());
    slider->setGeometry(20, 100, 228, 40);
    slider->setValue(0.5f);
    window.setRootViewController(screen);
    window.show();

    const QImage bare = window.grab().toImage();
    const QPointF thumb = slider->thumbRect().center() + QPointF(20, 100);
    EXPECT_EQ(bare.pixelColor(thumb.toPoint()), QColor(Qt::white));
    const QPoint filledTrack(40, 120);
    EXPECT_GT(bare.pixelColor(filledTrack).blue(), 200) << "minimum side of the track";
    const QRect content(20, 20, 160, 40);
    const int imageLeft =
        content.center().x() - (24 + button->fontMetrics().horizontalAdvance("Record")) / 2;
    EXPECT_EQ(bare.pixelColor(imageLeft + 12, 40), QColor(Qt::red))
        << "image centred with the title";

    // A translucent veil with a white card, as the rating dialogs look.
    ViewController* dialog = filledWith(QColor(0, 0, 0, 128));
    auto* card = new View(dialog->view());
    card->setBackgroundColor(Qt::white);
    card->setCornerRadius(11);
    card->setGeometry(60, 160, 240, 120);
    dialog->setModalPresentationStyle(ModalPresentationStyle::overCurrentContext);
    screen->present(dialog, false);
    const QImage veiled = window.grab().toImage();

    const QColor underVeil = veiled.pixelColor(10, 380);
    EXPECT_NEAR(underVeil.red(), screenColour.red() / 2, 2);
    EXPECT_NEAR(underVeil.blue(), screenColour.blue() / 2, 2) << "the screen shows through";
    EXPECT_EQ(veiled.pixelColor(180, 220), QColor(Qt::white));
    EXPECT_LT(veiled.pixelColor(thumb.toPoint()).red(), 140) << "the slider is veiled too";
}

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
    const struct {
        ImageView::ContentMode mode;
        QPoint covered;
        QPoint bare;
    } rows[] = {
        {ImageView::ContentMode::scaleToFill, {2, 2}, {-1, -1}},
        {ImageView::ContentMode::scaleAspectFit, {2, 50}, {50, 20}}, // 100 × 50, centred
        {ImageView::ContentMode::scaleAspectFill, {2, 2}, {-1, -1}}, // 200 × 100, cropped
        {ImageView::ContentMode::center, {31, 41}, {29, 50}},        // 40 × 20 at (30, 40)
    };
    for (const auto& row : rows) {
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
