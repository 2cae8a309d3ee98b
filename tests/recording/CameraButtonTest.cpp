#include <QElapsedTimer>
#include <QImage>
#include <QTest>
#include <gtest/gtest.h>

#include "recording/CameraButton.h"

namespace {

const QRectF idleDisc(8, 8, 50, 50);
const QRectF videoSquare(17, 17, 32, 32);
const QPoint centre(33, 33);

// The record button as the screens make it, a video button, at (40, 40) on a screen large enough
// to drag out of the tracking margin. (Nothing makes a photo button or changes the type later.)
class CameraButtonTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(300, 300);
        button = new CameraButton(&window);
        button->setType(CameraButtonType::video);
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

TEST_F(CameraButtonTest, VideoIsARedDiscInAWhiteRingThatTapsMorphToTheRoundedSquareAndBack) {
    EXPECT_FALSE(button->isAnimating());
    EXPECT_EQ(button->innerColor(), QColor(Qt::red));
    expectShape(idleDisc, 25, "idle video");
    EXPECT_TRUE(isRed(grab().pixelColor(10, 33))) << "the disc is 50 wide";

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

    EXPECT_FALSE(isRed(grab().pixelColor(12, 33))) << "where the idle disc was";

    tap();
    EXPECT_FALSE(button->isSelected());
    settle();
    expectShape(idleDisc, 25, "back to the disc");
    EXPECT_EQ(upInsideActions, 2);
}

TEST_F(CameraButtonTest, DragExitTogglesTheShapeWithoutSendingTheTouchUpInsideAction) {
    press();
    dragOut();
    EXPECT_TRUE(button->isSelected()) << "the drag exit toggles";
    release(farOutside());
    settle();
    EXPECT_TRUE(button->isSelected());
    expectShape(videoSquare, 8, "video after drag exit");
    EXPECT_EQ(upInsideActions, 0);
}

TEST_F(CameraButtonTest, WritingSelectedAlwaysAnimatesFromTheShapeShown) {
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

TEST_F(CameraButtonTest, TabShowsAFocusRing) {
    auto* other = new ui::Control(&window);
    other->setGeometry(200, 40, 40, 40);
    other->show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    other->setFocus();
    const QPoint ringEdge(33, 0);
    const QColor unfocused = grab().pixelColor(ringEdge);

    QTest::keyClick(other, Qt::Key_Tab);
    ASSERT_TRUE(button->hasFocus());
    EXPECT_NE(grab().pixelColor(ringEdge), unfocused) << "focus ring";
}

} // namespace
