#include <memory>
#include <vector>

#include <QElapsedTimer>
#include <QImage>
#include <QPixmap>
#include <QTest>
#include <QTouchEvent>
#include <gtest/gtest.h>

#include "platform/ui/Button.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/Label.h"
#include "platform/ui/Slider.h"
#include "platform/ui/ViewAnimation.h"

namespace ui::test {
namespace {

using Events = std::vector<unsigned>;
constexpr unsigned down = Control::touchDown, downRepeat = Control::touchDownRepeat,
                   dragInside = Control::touchDragInside, dragOutside = Control::touchDragOutside,
                   dragEnter = Control::touchDragEnter, dragExit = Control::touchDragExit,
                   upInside = Control::touchUpInside, upOutside = Control::touchUpOutside,
                   cancel = Control::touchCancel, changed = Control::valueChanged;

// A 60 × 40 control at (100, 80) in a shown window; positions are in the control's coordinates.
template <typename ControlType> class ControlFixture : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(400, 300);
        control = new ControlType(&window);
        control->setGeometry(100, 80, 60, 40);
        QObject::connect(control, &Control::controlEvent,
                         [this](unsigned event) { events.push_back(event); });
        window.show();
    }

    void press(QPoint at) { QTest::mousePress(control, Qt::LeftButton, {}, at); }
    void move(QPoint to) { QTest::mouseMove(control, to); }
    void release(QPoint at) { QTest::mouseRelease(control, Qt::LeftButton, {}, at); }

    QWidget window;
    ControlType* control = nullptr;
    Events events;
};

using ControlTest = ControlFixture<Control>;

TEST_F(ControlTest, TapsAndKeysSendDownThenUpInsideAndDragsCrossTheTrackingBoundsOnceEachWay) {
    press({30, 20});
    EXPECT_TRUE(control->isHighlighted());
    EXPECT_TRUE(control->isTracking());
    EXPECT_EQ(control->state(), Control::highlighted);
    release({30, 20});
    EXPECT_FALSE(control->isHighlighted());
    EXPECT_FALSE(control->isTracking());

    // What a double click delivers: press, release, double click, release.
    QTest::mouseDClick(control, Qt::LeftButton, {}, {30, 20});
    release({30, 20});
    EXPECT_EQ(events, Events({down, upInside, down, downRepeat, upInside}));

    // Space and Return on a focused control tap it; other keys do nothing.
    events.clear();
    control->setFocus();
    QTest::keyClick(control, Qt::Key_Space);
    QTest::keyClick(control, Qt::Key_Return);
    QTest::keyClick(control, Qt::Key_A);
    EXPECT_EQ(events, Events({down, upInside, down, upInside}));

    // Dragging out and back crosses the tracking bounds once each way.
    events.clear();
    press({30, 20});
    move({50, 30});  // inside the rect
    move({125, 20}); // in the 70 px margin: still inside
    EXPECT_TRUE(control->isHighlighted());
    move({140, 20}); // beyond the margin
    EXPECT_FALSE(control->isHighlighted());
    EXPECT_FALSE(control->isTouchInside());
    move({200, 20});
    move({30, -60}); // back within the margin
    EXPECT_TRUE(control->isHighlighted());
    release({30, 20});
    EXPECT_EQ(events, Events({down, dragInside, dragInside, dragExit, dragOutside, dragOutside,
                              dragEnter, dragInside, upInside}));

    // Without a margin, one pixel out is outside.
    events.clear();
    control->setTrackingMargin(0);
    press({30, 20});
    move({61, 20});
    release({61, 20});
    EXPECT_EQ(events, Events({down, dragExit, dragOutside, upOutside}));
}

TEST_F(ControlTest, LosingTheTouchMidTrackCancelsItEvenByItsOwnActionAndADisabledOneSendsNothing) {
    press({30, 20});
    control->hide();
    release({30, 20});
    EXPECT_EQ(events, Events({down, cancel}));
    EXPECT_FALSE(control->isHighlighted());

    control->show();
    events.clear();
    press({30, 20});
    control->setEnabled(false);
    EXPECT_EQ(control->state(), Control::disabled);
    move({40, 20});
    release({30, 20});
    press({30, 20});
    release({30, 20});
    QTest::keyClick(control, Qt::Key_Space);
    EXPECT_EQ(events, Events({down, cancel}));

    // A close button whose action dismisses the screen it is on.
    control->setEnabled(true);
    events.clear();
    control->addTarget(
        nullptr, [](Control* sender) { sender->hide(); }, dragExit);
    press({30, 20});
    move({300, 20});
    release({300, 20});
    EXPECT_EQ(events, Events({down, dragExit, cancel}));
}

TEST_F(ControlTest, TouchScreenInputTracksLikeTheMouse) {
    std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const QPoint origin = control->mapTo(&window, QPoint(0, 0));
    QTest::touchEvent(&window, screen.get()).press(0, origin + QPoint(30, 20));
    QTest::touchEvent(&window, screen.get()).move(0, origin + QPoint(300, 20));
    QTest::touchEvent(&window, screen.get()).release(0, origin + QPoint(300, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return events.size() >= 4; }, 500));
    EXPECT_EQ(events, Events({down, dragExit, dragOutside, upOutside}));

    events.clear();
    QTest::touchEvent(&window, screen.get()).press(1, origin + QPoint(30, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !events.empty(); }, 500));
    QTouchEvent cancelled(QEvent::TouchCancel, screen.get());
    QCoreApplication::sendEvent(control, &cancelled);
    EXPECT_EQ(events, Events({down, cancel})) << "far from the last release: no repeat";

    // A quick second tap at the same place counts as a repeat.
    events.clear();
    QTest::touchEvent(&window, screen.get()).press(2, origin + QPoint(30, 20));
    QTest::touchEvent(&window, screen.get()).release(2, origin + QPoint(30, 20));
    QTest::touchEvent(&window, screen.get()).press(3, origin + QPoint(31, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return events.size() >= 4; }, 500));
    EXPECT_EQ(events, Events({down, upInside, down, downRepeat}));
    QTest::touchEvent(&window, screen.get()).release(3, origin + QPoint(31, 20));
}

TEST_F(ControlTest, TargetsReceiveTheirEventsUntilRemovedOrDestroyed) {
    std::vector<QString> calls;
    auto note = [&calls](QString name) {
        return [&calls, name](Control*) { calls.push_back(name); };
    };
    auto receiver = std::make_unique<QObject>();
    QObject other;
    control->addTarget(receiver.get(), note("receiver"), upInside | cancel);
    control->addTarget(
        &other, [&](Control* sender) { calls.push_back(sender == control ? "other" : "?"); },
        upInside);
    control->addTarget(nullptr, note("unguarded"), down);
    EXPECT_EQ(control->allControlEvents(), unsigned(down | upInside | cancel));

    control->sendActions(down | upInside);
    EXPECT_EQ(calls, std::vector<QString>({"unguarded", "receiver", "other"}));

    calls.clear();
    control->removeTargets(&other);
    receiver.reset();
    control->sendActions(upInside | cancel);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(control->allControlEvents(), unsigned(down));
}

using ButtonTest = ControlFixture<Button>;

TEST_F(ButtonTest, StatesWithoutTheirOwnValueFallBackToNormal) {
    QPixmap red(16, 16), blue(16, 16);
    red.fill(Qt::red);
    blue.fill(Qt::blue);
    const QIcon normalImage(red), highlightedImage(blue);
    control->setTitle("Record");
    control->setTitle("Stop", Control::selected);
    control->setImage(normalImage);
    control->setImage(highlightedImage, Control::highlighted);
    control->setTitleColor(Qt::yellow, Control::disabled);

    EXPECT_EQ(control->titleForState(Control::highlighted), "Record");
    EXPECT_EQ(control->titleForState(Control::highlighted | Control::selected), "Record");
    EXPECT_EQ(control->titleForState(Control::selected), "Stop");
    EXPECT_EQ(control->titleColorForState(Control::disabled), QColor(Qt::yellow));
    EXPECT_EQ(control->imageForState(Control::selected).cacheKey(), normalImage.cacheKey());

    control->setSelected(true);
    EXPECT_EQ(control->currentTitle(), "Stop");
    press({30, 20});
    EXPECT_EQ(control->currentImage().cacheKey(), normalImage.cacheKey())
        << "highlighted + selected has no image of its own";
    EXPECT_EQ(control->currentTitle(), "Record");
    release({30, 20});
}

class SliderTest : public ControlFixture<Slider> {
protected:
    void SetUp() override {
        ControlFixture::SetUp();
        // Thumb 28 wide: the track runs from x = 14 to x = 214.
        control->setGeometry(0, 0, 228, 40);
        control->setMinimumValue(1.0f);
        control->setMaximumValue(3.0f);
    }

    QPoint at(float value) const { return QPoint(qRound(14 + (value - 1.0f) / 2.0f * 200), 20); }
};

TEST_F(SliderTest, ValueStaysWithinTheRange) {
    control->setValue(5.0f);
    EXPECT_FLOAT_EQ(control->value(), 3.0f);
    control->setValue(-1.0f);
    EXPECT_FLOAT_EQ(control->value(), 1.0f);
    control->setMinimumValue(2.0f);
    EXPECT_FLOAT_EQ(control->value(), 2.0f);
    control->setMaximumValue(0.5f);
    EXPECT_FLOAT_EQ(control->minimumValue(), 0.5f);
    EXPECT_FLOAT_EQ(control->value(), 0.5f);
    EXPECT_TRUE(events.empty()) << "setting the value in code sends nothing";
}

TEST_F(SliderTest, DraggingTheThumbOrPressingTheTrackSendsValueChangedAtOnceOrOnRelease) {
    control->setValue(1.5f);
    // Grabbed 4 px right of the thumb's centre: the thumb keeps that offset.
    press(at(1.5f) + QPoint(4, 0));
    move(at(2.0f) + QPoint(4, 0));
    EXPECT_NEAR(control->value(), 2.0f, 0.011f);
    move(at(3.5f));
    EXPECT_FLOAT_EQ(control->value(), 3.0f);
    release(at(3.5f));
    EXPECT_EQ(events, Events({down, changed, dragInside, changed, dragInside, upInside}));
    EXPECT_NEAR(control->thumbRect().center().x(), 214, 0.5);

    // Pressing the track moves the thumb there.
    events.clear();
    press(at(2.5f));
    EXPECT_NEAR(control->value(), 2.5f, 0.011f);
    release(at(2.5f));
    EXPECT_EQ(events, Events({changed, down, upInside}));

    // A discontinuous slider reports once, on release.
    events.clear();
    control->setContinuous(false);
    press(at(1.0f));
    move(at(1.5f));
    move(at(2.0f));
    release(at(2.0f));
    EXPECT_EQ(events, Events({down, dragInside, dragInside, changed, upInside}));
}

using A = ViewAnimation;

class ViewAnimationTest : public ::testing::Test {
protected:
    void SetUp() override {
        parent.resize(100, 100);
        widget = new QWidget(&parent);
        other = new QWidget(&parent);
        parent.show();
    }

    // Notes each completion's finished flag.
    std::function<void(bool)> recording() {
        return [this](bool finished) { completions.push_back(finished); };
    }

    QWidget parent;
    QWidget* widget = nullptr;
    QWidget* other = nullptr;
    std::vector<bool> completions;
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
    EXPECT_TRUE(completions.empty());
    EXPECT_TRUE(A::isAnimating(widget));

    const qreal shown = A::alpha(widget);
    A::removeAllAnimations(widget);
    EXPECT_EQ(completions, std::vector<bool>{false});
    EXPECT_FALSE(A::isAnimating(widget));
    QTest::qWait(50);
    EXPECT_DOUBLE_EQ(A::alpha(widget), shown) << "left where it was";
    EXPECT_EQ(completions.size(), 1u);
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
    ASSERT_TRUE(QTest::qWaitFor([&] { return !completions.empty(); }));
    EXPECT_GE(clock.elapsed(), 240);
    EXPECT_EQ(completions, std::vector<bool>{true});
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.0);
    EXPECT_DOUBLE_EQ(A::alpha(other), 0.5);
    EXPECT_TRUE(widget->testAttribute(Qt::WA_TransparentForMouseEvents));
    QTest::qWait(50);
    EXPECT_EQ(completions.size(), 1u);
}

TEST_F(ViewAnimationTest, ANewerAnimationOrAnExplicitAlphaStopsTheRunningOneAndNoneRunsForZero) {
    A::animate(
        1.0, [&] { A::setAlpha(widget, 0.0); }, recording());
    A::animate(
        1.0, [&] { A::setAlpha(widget, 0.5); }, recording());
    EXPECT_EQ(completions, std::vector<bool>{false});
    A::setAlpha(widget, 0.8);
    EXPECT_EQ(completions, std::vector<bool>({false, false}));
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.8);
    EXPECT_FALSE(A::isAnimating(widget));

    // No duration: applied at once, completed on the next turn.
    A::animate(
        0.0, [&] { A::setAlpha(widget, 0.3); }, recording());
    EXPECT_DOUBLE_EQ(A::alpha(widget), 0.3);
    EXPECT_EQ(completions.size(), 2u);
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions.size() > 2; }));
    EXPECT_EQ(completions.back(), true);
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
    ImageView view;
    view.resize(100, 100);
    view.setImage(red);
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.mode));
        view.setContentMode(row.mode);
        const QImage image = view.grab().toImage();
        EXPECT_EQ(image.pixelColor(row.covered), QColor(Qt::red));
        if (row.bare.x() >= 0) {
            EXPECT_NE(image.pixelColor(row.bare), QColor(Qt::red));
        }
    }
}

} // namespace
} // namespace ui::test
