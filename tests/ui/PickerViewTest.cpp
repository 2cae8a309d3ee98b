#include <utility>
#include <vector>

#include <QApplication>
#include <QTest>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include "platform/ui/PickerView.h"

namespace ui::test {
namespace {

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

    void wheel(QPoint angleDelta, QPoint pixelDelta = {},
               Qt::ScrollPhase phase = Qt::NoScrollPhase) {
        const QPointF at(100, 90);
        QWheelEvent event(at, picker.mapToGlobal(at), pixelDelta, angleDelta, Qt::NoButton,
                          Qt::NoModifier, phase, false);
        QApplication::sendEvent(&picker, &event);
    }
    bool settle() {
        return QTest::qWaitFor([this] { return !picker.isMoving(); });
    }
    int selected() const { return picker.selectedRowInComponent(0); }

    int rows = 10;
    Selections chosen;
    PickerView picker;
};

TEST_F(PickerViewTest, SelectingFromCodeClampsToTheWheelAndTellsNobody) {
    picker.selectRow(3, 0, false);
    EXPECT_EQ(selected(), 3);
    picker.selectRow(25, 0, false);
    EXPECT_EQ(selected(), 9) << "past the end: the last row";
    picker.selectRow(-4, 0, false);
    EXPECT_EQ(selected(), 0) << "before the start: the first row";

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
    wheel({0, -120});
    wheel({0, -60});
    wheel({0, -60});
    wheel({0, -120});
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
    wheel({}, {0, -3 * PickerView::defaultRowHeight - 10}, Qt::ScrollUpdate);
    EXPECT_TRUE(chosen.empty()) << "a touchpad turns freely until the fingers lift";
    wheel({}, {0, 0}, Qt::ScrollEnd);
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
