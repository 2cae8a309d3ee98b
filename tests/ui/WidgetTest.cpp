#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPixmap>
#include <QTest>
#include <QTouchEvent>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include "platform/ui/Button.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/Label.h"
#include "platform/ui/PickerView.h"
#include "platform/ui/ScrollView.h"
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

    events.clear();
    control->setFocus();
    QTest::keyClick(control, Qt::Key_Space);
    QTest::keyClick(control, Qt::Key_Return);
    QTest::keyClick(control, Qt::Key_A);
    EXPECT_EQ(events, Events({down, upInside, down, upInside}));

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
    const QIcon normalImage(QPixmap(16, 16)), highlightedImage(QPixmap(16, 16));
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

    events.clear();
    press(at(2.5f));
    EXPECT_NEAR(control->value(), 2.5f, 0.011f);
    release(at(2.5f));
    EXPECT_EQ(events, Events({changed, down, upInside}));

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

// A mouse wheel's notches (angle) or a touchpad's pixels at the widget's centre, 10 ms after the
// last turn by the events' clock.
void turn(QWidget* widget, QPoint angle, QPoint pixels = {},
          Qt::ScrollPhase phase = Qt::NoScrollPhase) {
    static quint64 time = 0;
    const QPointF at = QRectF(widget->rect()).center();
    QWheelEvent event(at, widget->mapToGlobal(at), pixels, angle, Qt::NoButton, Qt::NoModifier,
                      phase, false);
    event.setTimestamp(time += 10);
    QApplication::sendEvent(widget, &event);
}

constexpr int pageWidth = 300;
constexpr int pages = 4;

// A shown 300 × 400 pager of four pages, one point high, as the tutorial builds it, noting where
// each rest came.
class ScrollViewTest : public ::testing::Test, public ScrollViewDelegate {
public:
    void SetUp() override {
        pager.resize(pageWidth, 400);
        pager.setPagingEnabled(true);
        pager.setContentSize(QSizeF(pageWidth * pages, 1.0));
        pager.setDelegate(this);
        pager.show();
    }
    void scrollViewDidEndDecelerating(ScrollView* view) override {
        rests.append(view->contentOffset().x());
    }

    // Waits for the pager to come to rest after an input, and answers the page it rests on.
    double restedPage(int restsBefore) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return rests.size() > restsBefore; }));
        EXPECT_FALSE(pager.isDecelerating());
        return pager.contentOffset().x() / pageWidth;
    }

    // Moves 10 ms apart by the events' clock, whatever the machine's load.
    void drag(int from, int to, int steps, int pauseBeforeRelease) {
        QTest::mousePress(&pager, Qt::LeftButton, {}, QPoint(from, 200));
        for (int i = 1; i <= steps; ++i)
            QTest::mouseMove(&pager, QPoint(from + (to - from) * i / steps, 200), 10);
        QTest::mouseRelease(&pager, Qt::LeftButton, {}, QPoint(to, 200),
                            std::max(1, pauseBeforeRelease));
    }

    ScrollView pager;
    QList<double> rests;
};

// The arrows, Home and End page the tutorial in TutorialTest.
TEST_F(ScrollViewTest, EveryKindOfInputRestsOnAWholePage) {
    auto key = [this](Qt::Key key) { return [this, key] { QTest::keyClick(&pager, key); }; };
    const struct {
        const char* input;
        double startPage;
        std::function<void()> act;
        double page;
    } rows[] = {
        {"slow drag past half a page", 0, [&] { drag(250, 80, 10, 150); }, 1},
        {"slow drag under half a page springs back", 1, [&] { drag(200, 120, 10, 150); }, 1},
        {"quick short flick goes on", 1, [&] { drag(200, 120, 2, 0); }, 2},
        {"a flick backwards goes back", 2, [&] { drag(100, 160, 3, 0); }, 1},
        {"a long flick moves one page only", 0, [&] { drag(290, -200, 3, 0); }, 1},
        {"page down", 1, key(Qt::Key_PageDown), 2},
        {"page up", 1, key(Qt::Key_PageUp), 0},
        {"wheel notch down", 0, [&] { turn(&pager, QPoint(0, -120)); }, 1},
        {"wheel notch up", 2, [&] { turn(&pager, QPoint(0, 120)); }, 1},
        {"touchpad swipe left with phases", 0,
         [&] {
             turn(&pager, {}, {}, Qt::ScrollBegin);
             for (int i = 0; i < 6; ++i)
                 turn(&pager, {-30, 0}, {-30, 0}, Qt::ScrollUpdate);
             turn(&pager, {}, {}, Qt::ScrollEnd);
         },
         1},
        {"touchpad nudge without phases springs back", 2,
         [&] { turn(&pager, QPoint(20, 0), QPoint(20, 0)); }, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.input);
        pager.setContentOffset(QPointF(row.startPage * pageWidth, 0));
        const int before = int(rests.size());
        row.act();
        EXPECT_DOUBLE_EQ(restedPage(before), row.page);
        // One notice per scroll, and it comes once the pager rests.
        QTest::qWait(50);
        EXPECT_EQ(rests.size(), before + 1);
        EXPECT_DOUBLE_EQ(rests.last(), row.page * pageWidth);
    }
}

TEST_F(ScrollViewTest, TouchSwipesPageButKeysAtEitherEndTellNobodyAndNothingMovesVertically) {
    QPointingDevice* screen = QTest::createTouchDevice();
    QTest::touchEvent(&pager, screen).press(0, QPoint(250, 200));
    for (int x = 230; x >= 50; x -= 30) {
        QTest::qWait(8);
        QTest::touchEvent(&pager, screen).move(0, QPoint(x, 200));
    }
    QTest::touchEvent(&pager, screen).release(0, QPoint(50, 200));
    EXPECT_DOUBLE_EQ(restedPage(0), 1);
    QTest::touchEvent(&pager, screen).press(0, QPoint(250, 200));
    QTest::touchEvent(&pager, screen).move(0, QPoint(200, 200));
    QTouchEvent cancel(QEvent::TouchCancel, screen);
    QApplication::sendEvent(&pager, &cancel);
    EXPECT_DOUBLE_EQ(restedPage(1), 1);

    pager.setContentOffset(QPointF());
    QTest::keyClick(&pager, Qt::Key_Left);
    pager.setContentOffset(QPointF(3 * pageWidth, 0));
    QTest::keyClick(&pager, Qt::Key_Right);
    QTest::qWait(int(ScrollView::pageGlideDuration * 1000) + 100);
    EXPECT_EQ(rests.size(), 2);

    // A diagonal drag moves the one-point-high content sideways only.
    QTest::mousePress(&pager, Qt::LeftButton, {}, QPoint(200, 300));
    QTest::mouseMove(&pager, QPoint(150, 100));
    EXPECT_EQ(pager.contentView()->y(), 0);
    QTest::mouseRelease(&pager, Qt::LeftButton, {}, QPoint(150, 100));
}

using Selections = std::vector<std::pair<int, int>>;

// One wheel of `rows` numbered rows in a shown 200 × 180 picker, recording what the user chose.
class PickerViewTest : public ::testing::Test,
                       public PickerViewDataSource,
                       public PickerViewDelegate {
protected:
    void SetUp() override {
        picker.resize(200, 5 * PickerView::defaultRowHeight);
        picker.setDataSource(this);
        picker.setDelegate(this);
        picker.show();
    }

    int numberOfComponents(PickerView*) override { return 1; }
    int numberOfRowsInComponent(PickerView*, int) override { return rows; }
    Title attributedTitleForRow(PickerView*, int row, int) override {
        return {QString::number(row), Qt::black};
    }
    void didSelectRow(PickerView*, int row, int component) override {
        chosen.emplace_back(row, component);
    }

    bool settle() {
        return QTest::qWaitFor([this] { return !picker.isMoving(); });
    }
    int selected() const { return picker.selectedRowInComponent(0); }

    int rows = 10;
    Selections chosen;
    PickerView picker;
};

// Rows past either end are clamped in ChoseDurationViewControllerTest.
TEST_F(PickerViewTest, SelectingFromCodeTellsNobodyAndAReloadKeepsTheNearestRow) {
    picker.selectRow(6, 0, true);
    EXPECT_EQ(selected(), 6) << "known at once, while the wheel still turns";
    EXPECT_TRUE(picker.isMoving());
    ASSERT_TRUE(settle());
    EXPECT_TRUE(chosen.empty());

    rows = 4;
    picker.reloadAllComponents();
    EXPECT_EQ(selected(), 3) << "kept as near as the fewer rows allow";
    rows = 0;
    picker.reloadAllComponents();
    EXPECT_EQ(selected(), -1);
    picker.selectRow(2, 0, false);
    EXPECT_EQ(selected(), -1);
}

TEST_F(PickerViewTest, WheelNotchesAndKeysAddUpToOneChoiceWhenTheWheelRests) {
    picker.selectRow(2, 0, false);
    turn(&picker, {0, -120});
    turn(&picker, {0, -60});
    turn(&picker, {0, -60});
    turn(&picker, {0, -120});
    ASSERT_TRUE(settle());
    EXPECT_EQ(selected(), 5);
    EXPECT_EQ(chosen, Selections({{5, 0}})) << "sent once, when the wheel came to rest";

    chosen.clear();
    picker.setFocus();
    QTest::keyClick(&picker, Qt::Key_End);
    ASSERT_TRUE(settle());
    QTest::keyClick(&picker, Qt::Key_Down);
    ASSERT_TRUE(settle());
    EXPECT_EQ(chosen, Selections({{9, 0}})) << "nothing turns against the end";
    QTest::keyClick(&picker, Qt::Key_Up);
    ASSERT_TRUE(settle());
    EXPECT_EQ(chosen, Selections({{9, 0}, {8, 0}}));

    chosen.clear();
    turn(&picker, {}, {0, -3 * PickerView::defaultRowHeight - 10}, Qt::ScrollUpdate);
    EXPECT_TRUE(chosen.empty()) << "a touchpad turns freely until the fingers lift";
    turn(&picker, {}, {}, Qt::ScrollEnd);
    ASSERT_TRUE(settle());
    EXPECT_EQ(chosen, Selections({{9, 0}})) << "pushed past the end, it settles on the last row";
}

TEST_F(PickerViewTest, DragSettlesOnTheNearestRowAndAClickTurnsToTheRowClicked) {
    picker.selectRow(4, 0, false);
    const int h = PickerView::defaultRowHeight;
    const auto dragTwoRowsUp = [&] {
        QTest::mousePress(&picker, Qt::LeftButton, {}, QPoint(100, 150));
        QTest::mouseMove(&picker, QPoint(100, 120));
        QTest::mouseMove(&picker, QPoint(100, 150 - 2 * h - 8));
    };
    dragTwoRowsUp();
    EXPECT_TRUE(picker.isMoving());
    // Resting before the release leaves no speed to coast with.
    QTest::qWait(150);
    QTest::mouseRelease(&picker, Qt::LeftButton, {}, QPoint(100, 150 - 2 * h - 8));
    ASSERT_TRUE(settle());
    EXPECT_EQ(chosen, Selections({{6, 0}}));

    // Finishing the turn rests a wheel under the finger on its nearest row.
    dragTwoRowsUp();
    picker.finishTurning();
    EXPECT_FALSE(picker.isMoving());
    EXPECT_EQ(chosen, Selections({{6, 0}, {8, 0}}));
    QTest::mouseRelease(&picker, Qt::LeftButton, {}, QPoint(100, 40));
    QTest::qWait(300);
    EXPECT_EQ(chosen, Selections({{6, 0}, {8, 0}})) << "the lifted finger turns nothing more";

    chosen.clear();
    QTest::mouseClick(&picker, Qt::LeftButton, {}, QPoint(100, 90 + h));
    ASSERT_TRUE(settle());
    EXPECT_EQ(chosen, Selections({{9, 0}})) << "the row under the band";
    QTest::mouseClick(&picker, Qt::LeftButton, {}, QPoint(100, 90));
    ASSERT_TRUE(settle());
    EXPECT_EQ(chosen.size(), 1u) << "a click on the band changes nothing";
}

} // namespace
} // namespace ui::test
