#include "onboarding/ALButton.h"

#include "platform/ui/ViewAnimation.h"

#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace {

// A 200 × 50 button at (100, 100) in a shown window, its action counted.
class ALButtonTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(600, 400);
        button = new ALButton(&window);
        button->setGeometry(100, 100, 200, 50);
        button->addTarget(
            nullptr, [this](ui::Control*) { ++actions; }, ui::Control::touchUpInside);
        window.show();
    }

    QWidget window;
    ALButton* button = nullptr;
    int actions = 0;
};

TEST_F(ALButtonTest, FadesWhileHeldAndComesBackWhenTheTouchLeavesOrEnds) {
    const QPoint inside(100, 25);
    // Beyond the tracking margin the platform gives a touch before it counts as outside.
    const QPoint outside(100, 25 + ui::Control::defaultTrackingMargin + 60);
    struct Step {
        const char* what;
        std::function<void()> act;
        qreal alpha;
    };
    const std::vector<Step> steps{
        {"down", [&] { QTest::mousePress(button, Qt::LeftButton, {}, inside); }, 0.4},
        {"drag out", [&] { QTest::mouseMove(button, outside); }, 1.0},
        {"drag in", [&] { QTest::mouseMove(button, inside); }, 0.4},
        {"up inside", [&] { QTest::mouseRelease(button, Qt::LeftButton, {}, inside); }, 1.0},
        {"down again", [&] { QTest::mousePress(button, Qt::LeftButton, {}, inside); }, 0.4},
        {"up outside", [&] { QTest::mouseRelease(button, Qt::LeftButton, {}, outside); }, 1.0},
        {"down for a cancel", [&] { QTest::mousePress(button, Qt::LeftButton, {}, inside); }, 0.4},
        // An alert taking the pointer cancels the touch, as disabling the button does.
        {"cancelled", [&] { button->setEnabled(false); }, 1.0},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.what);
        step.act();
        EXPECT_DOUBLE_EQ(ui::ViewAnimation::alpha(button), step.alpha);
        // Immediate, never animated.
        EXPECT_FALSE(ui::ViewAnimation::isAnimating(button));
    }
    EXPECT_EQ(actions, 1) << "only the release inside is a tap";
}

TEST_F(ALButtonTest, HighlightingNeverDarkensTheImage) {
    QPixmap red(24, 24);
    red.fill(Qt::red);
    button->setImage(QIcon(red));
    button->setBackgroundColor(Qt::white);
    const QImage normal = button->grab().toImage();
    button->setHighlighted(true);
    EXPECT_EQ(button->grab().toImage(), normal);
}

} // namespace
