#include <QElapsedTimer>
#include <QImage>
#include <QTest>
#include <gtest/gtest.h>

#include "recording/CameraButton.h"

namespace {

const QColor screenColour(0x20, 0x30, 0x40);
const QColor photoRest = QColor::fromRgbF(1, 1, 1, 0.24f);
const QRectF idleDisc(8, 8, 50, 50);
const QRectF videoSquare(17, 17, 32, 32);
const QRectF photoDisc(13, 13, 40, 40);
const QPoint centre(33, 33);

// The button at (40, 40) on a dark screen large enough to drag out of the tracking margin.
class CameraButtonTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(300, 300);
        window.setAutoFillBackground(true);
        QPalette palette = window.palette();
        palette.setColor(QPalette::Window, screenColour);
        window.setPalette(palette);
        button = new CameraButton(&window);
        button->move(40, 40);
        button->addTarget(
            &window, [this](ui::Control*) { ++upInsideActions; }, ui::Control::touchUpInside);
        window.show();
    }

    void press() { QTest::mousePress(button, Qt::LeftButton, {}, centre); }
    void release(QPoint at = centre) { QTest::mouseRelease(button, Qt::LeftButton, {}, at); }
    void tap() {
        press();
        release();
    }
    // Drag exit happens only beyond the 70 px tracking margin.
    QPoint farOutside() const { return {200, 200}; }
    void dragOut() { QTest::mouseMove(button, farOutside()); }

    void settle() {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !button->isAnimating(); }, 3000));
    }

    void expectShape(const QRectF& rect, qreal radius, const char* what) {
        EXPECT_EQ(button->innerRect(), rect) << what;
        EXPECT_DOUBLE_EQ(button->innerCornerRadius(), radius) << what;
    }

    QImage grab() { return window.grab(button->geometry()).toImage(); }

    QWidget window;
    CameraButton* button = nullptr;
    int upInsideActions = 0;
};

bool isRed(const QColor& c) {
    return c.red() > 230 && c.green() < 30 && c.blue() < 30;
}

TEST_F(CameraButtonTest, NewButtonIsAnIdlePhotoButtonShowingTheSmallerWhiteDiscOnlyWhilePressed) {
    EXPECT_EQ(button->innerColor(), photoRest);
    expectShape(idleDisc, 25, "idle photo");

    press();
    EXPECT_TRUE(button->isSelected());
    settle();
    expectShape(photoDisc, 20, "pressed");
    EXPECT_EQ(button->innerColor(), QColor(Qt::white));
    release();
    EXPECT_FALSE(button->isSelected());
    settle();
    expectShape(idleDisc, 25, "released");
    EXPECT_EQ(button->innerColor(), photoRest);
    EXPECT_EQ(upInsideActions, 1);
}

TEST_F(CameraButtonTest, VideoIsARedDiscInAWhiteRingThatTapsMorphToTheRoundedSquareAndBack) {
    button->setType(CameraButtonType::video);
    EXPECT_FALSE(button->isAnimating());
    EXPECT_EQ(button->innerColor(), QColor(Qt::red));
    expectShape(idleDisc, 25, "idle video");
    const QImage image = grab();
    EXPECT_TRUE(isRed(image.pixelColor(centre)));
    EXPECT_TRUE(isRed(image.pixelColor(10, 33))) << "the disc is 50 wide";
    EXPECT_EQ(image.pixelColor(33, 3), QColor(Qt::white)) << "ring";
    EXPECT_EQ(image.pixelColor(63, 33), QColor(Qt::white)) << "ring";
    EXPECT_EQ(image.pixelColor(33, 6), screenColour) << "gap between ring and disc";
    EXPECT_EQ(image.pixelColor(1, 1), screenColour) << "outside the ring";

    QElapsedTimer clock;
    clock.start();
    tap();
    EXPECT_TRUE(button->isSelected());
    EXPECT_EQ(upInsideActions, 1);
    EXPECT_TRUE(button->isAnimating());
    expectShape(idleDisc, 25, "the morph starts from the shape shown");

    settle();
    EXPECT_GE(clock.elapsed(), 290);
    expectShape(videoSquare, 8, "held at the end");
    EXPECT_EQ(button->innerColor(), QColor(Qt::red));
    QTest::qWait(50);
    expectShape(videoSquare, 8, "still held");

    const QImage square = grab();
    EXPECT_TRUE(isRed(square.pixelColor(20, 33))) << "inside the square's edge";
    EXPECT_TRUE(isRed(square.pixelColor(20, 20))) << "inside the rounded corner";
    EXPECT_FALSE(isRed(square.pixelColor(17, 17))) << "cut off by the corner radius";
    EXPECT_FALSE(isRed(square.pixelColor(12, 33))) << "where the idle disc was";

    tap();
    EXPECT_FALSE(button->isSelected());
    settle();
    expectShape(idleDisc, 25, "back to the disc");
    EXPECT_EQ(upInsideActions, 2);
}

TEST_F(CameraButtonTest, DragExitTogglesTheShapeWithoutSendingTheTouchUpInsideAction) {
    button->setType(CameraButtonType::video);
    press();
    dragOut();
    EXPECT_TRUE(button->isSelected()) << "the drag exit toggles";
    release(farOutside());
    settle();
    EXPECT_TRUE(button->isSelected());
    expectShape(videoSquare, 8, "video after drag exit");
    EXPECT_EQ(upInsideActions, 0);

    // A photo press toggles on down and back on the exit; the pressed fill is left as it is.
    button->setType(CameraButtonType::photo);
    button->setSelected(false);
    press();
    dragOut();
    release(farOutside());
    settle();
    EXPECT_FALSE(button->isSelected());
    expectShape(idleDisc, 25, "photo after drag exit");
    EXPECT_EQ(button->innerColor(), QColor(Qt::white));
    EXPECT_EQ(upInsideActions, 0);
}

TEST_F(CameraButtonTest, WritingSelectedAlwaysAnimatesFromTheShapeShown) {
    button->setType(CameraButtonType::video);
    button->setSelected(false);
    EXPECT_TRUE(button->isAnimating()) << "even to the disc already shown";
    settle();
    expectShape(idleDisc, 25, "unchanged");

    button->setSelected(true);
    // Caught mid-way: begun shrinking, not yet at the square.
    ASSERT_TRUE(QTest::qWaitFor([this] { return button->innerRect().width() < 49; }));
    ASSERT_TRUE(button->isAnimating());
    const QRectF midway = button->innerRect();
    EXPECT_LT(midway.width(), 50);
    EXPECT_GT(midway.width(), 32);
    const qreal midRadius = button->innerCornerRadius();
    button->setSelected(false);
    EXPECT_EQ(button->innerRect(), midway) << "no jump when reversed mid-way";
    EXPECT_DOUBLE_EQ(button->innerCornerRadius(), midRadius);
    settle();
    expectShape(idleDisc, 25, "reversed");
}

TEST_F(CameraButtonTest, TypeChangeDropsEveryAnimationIncludingTheOneHoldingTheShape) {
    button->setType(CameraButtonType::video);
    tap();
    settle();
    expectShape(videoSquare, 8, "recording");

    button->setType(CameraButtonType::video);
    EXPECT_TRUE(button->isSelected()) << "the selected state is kept";
    expectShape(idleDisc, 25, "the stored disc shows again");

    // Mid-animation: the shape and the pressed fill stop where they are stored.
    button->setType(CameraButtonType::photo);
    button->setSelected(false);
    press();
    ASSERT_TRUE(button->isAnimating());
    button->setType(CameraButtonType::video);
    EXPECT_FALSE(button->isAnimating());
    EXPECT_EQ(button->innerColor(), QColor(Qt::red));
    expectShape(idleDisc, 25, "dropped mid-way");
    release();
}

TEST_F(CameraButtonTest, TabShowsAFocusRingAndSpaceActsAsATap) {
    auto* other = new ui::Control(&window);
    other->setGeometry(200, 40, 40, 40);
    other->show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    other->setFocus();
    button->setType(CameraButtonType::video);
    const QPoint ringEdge(33, 0);
    const QColor unfocused = grab().pixelColor(ringEdge);

    QTest::keyClick(other, Qt::Key_Tab);
    ASSERT_TRUE(button->hasFocus());
    EXPECT_NE(grab().pixelColor(ringEdge), unfocused) << "focus ring";
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_TRUE(button->isSelected());
    EXPECT_EQ(upInsideActions, 1);
    settle();
    expectShape(videoSquare, 8, "after Space");
}

} // namespace
