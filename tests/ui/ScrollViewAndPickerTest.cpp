#include <functional>
#include <utility>
#include <vector>

#include <QApplication>
#include <QTest>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include "platform/ui/PickerView.h"
#include "platform/ui/ScrollView.h"

namespace ui::test {
namespace {

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
    // A touch screen swipe pages, and a cancelled one springs back.
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
    EXPECT_EQ(pager.contentOffset().y(), 0);
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
