#include <optional>

#include <QElapsedTimer>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

#include "platform/ui/ViewAnimation.h"

namespace ui::test {
namespace {

using A = ViewAnimation;

class ViewAnimationTest : public ::testing::Test {
protected:
    void SetUp() override {
        parent.resize(100, 100);
        widget = new QWidget(&parent);
        other = new QWidget(&parent);
        parent.show();
    }

    std::function<void(bool)> recording() {
        return [this](bool finished) {
            ++completions;
            this->finished = finished;
        };
    }

    QWidget parent;
    QWidget* widget = nullptr;
    QWidget* other = nullptr;
    int completions = 0;
    std::optional<bool> finished;
};

TEST_F(ViewAnimationTest, InputPassesAtAlphaZeroAndIsBlockedWhileAnimatingUnlessAllowed) {
    A::setAlpha(widget, 0.0);
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.0);
    EXPECT_TRUE(widget->testAttribute(Qt::WA_TransparentForMouseEvents));
    A::setAlpha(widget, 0.4);
    EXPECT_FALSE(widget->testAttribute(Qt::WA_TransparentForMouseEvents));
    A::setAlpha(widget, 1.0);
    EXPECT_EQ(widget->graphicsEffect(), nullptr);

    // A widget that chose to let input through keeps its choice.
    other->setAttribute(Qt::WA_TransparentForMouseEvents);
    A::setAlpha(other, 0.0);
    A::setAlpha(other, 1.0);
    EXPECT_TRUE(other->testAttribute(Qt::WA_TransparentForMouseEvents));

    // Input is blocked while animating unless allowed.
    other->setAttribute(Qt::WA_TransparentForMouseEvents, false);
    A::animate(1.0, [&] { A::setAlpha(widget, 0.5); });
    A::animate(1.0, 0.0, A::allowUserInteraction, [&] { A::setAlpha(other, 0.5); });
    EXPECT_TRUE(widget->testAttribute(Qt::WA_TransparentForMouseEvents));
    EXPECT_FALSE(other->testAttribute(Qt::WA_TransparentForMouseEvents));
    A::removeAllAnimations(widget);
    EXPECT_FALSE(widget->testAttribute(Qt::WA_TransparentForMouseEvents));
    A::removeAllAnimations(other);
}

TEST_F(ViewAnimationTest, RepeatingAutoreverseRunsUntilRemovedThenCompletesUnfinished) {
    A::animate(
        0.05, 0.0, A::repeat | A::autoreverse, [&] { A::setAlpha(widget, 0.0); }, recording());
    ASSERT_TRUE(QTest::qWaitFor([&] { return A::alpha(widget) < 0.2; }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return A::alpha(widget) > 0.8; })) << "comes back up";
    ASSERT_TRUE(QTest::qWaitFor([&] { return A::alpha(widget) < 0.2; })) << "and goes down again";
    EXPECT_EQ(completions, 0);
    EXPECT_TRUE(A::isAnimating(widget));

    const qreal shown = A::alpha(widget);
    A::removeAllAnimations(widget);
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(finished, false);
    EXPECT_FALSE(A::isAnimating(widget));
    QTest::qWait(50);
    EXPECT_DOUBLE_EQ(A::alpha(widget), shown) << "left where it was";
    EXPECT_EQ(completions, 1);
}

TEST_F(ViewAnimationTest, DelayIsHonouredAndTheBlockCompletesOnceAllItsAnimationsEnd) {
    QElapsedTimer clock;
    clock.start();
    A::animate(
        0.1, 0.15, A::curveLinear,
        [&] {
            A::setAlpha(widget, 0.0);
            A::setAlpha(other, 0.5);
        },
        recording());
    QTest::qWait(100);
    EXPECT_DOUBLE_EQ(A::alpha(widget), 1.0) << "nothing moves during the delay";
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions > 0; }));
    EXPECT_GE(clock.elapsed(), 240);
    EXPECT_EQ(finished, true);
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.0);
    EXPECT_DOUBLE_EQ(A::alpha(other), 0.5);
    EXPECT_TRUE(widget->testAttribute(Qt::WA_TransparentForMouseEvents));
    QTest::qWait(50);
    EXPECT_EQ(completions, 1);
}

TEST_F(ViewAnimationTest, ANewerAnimationOrAnExplicitAlphaStopsTheRunningOneAndNoneRunsForZero) {
    A::animate(
        1.0, [&] { A::setAlpha(widget, 0.0); }, recording());
    A::animate(
        1.0, [&] { A::setAlpha(widget, 0.5); }, recording());
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(finished, false);
    A::setAlpha(widget, 0.8);
    EXPECT_EQ(completions, 2);
    EXPECT_EQ(finished, false);
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.8);
    EXPECT_FALSE(A::isAnimating(widget));

    // No duration: applied at once, completed on the next turn.
    A::animate(
        0.0, [&] { A::setAlpha(widget, 0.3); }, recording());
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.3);
    EXPECT_EQ(completions, 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions > 2; }));
    EXPECT_EQ(finished, true);
}

} // namespace
} // namespace ui::test
